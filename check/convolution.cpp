// SPDX-License-Identifier: MIT
// Convolutions of all three kinds, plain, transposed and fused with pooling.
#include "check/details.hpp"
#include "check/public_functions.hpp"
#include "check/scratch.hpp"
#include "check/slots.hpp"
#include "check/windows.hpp"

namespace nnlib {
namespace {

bool is_kind(const LayerCheck& check, char kind) {
  return check.rule()->inputs[0] == kind;
}

// A convolution's way through the map in x and in y. Integers and fixed point know no dilation.
struct ConvolutionWays {
  WindowWay x, y;
  bool moves;  // strides and dilations are usable
};

ConvolutionWays check_ways(LayerCheck& check) {
  const auto& conv = check.record<ai_layer_conv2d>();
  const Pads pads = check_pads(check, conv.filter_pad, "filter_pad");
  const auto low = [](uint32_t word) { return uint64_t{word & 0xFFFFu}; };
  const bool dilates = is_kind(check, 'f');
  ConvolutionWays ways = {{check.sizes['W'], check.sizes['x'], low(conv.filter_stride[0]),
                           dilates ? low(conv.dilation[0]) : 1, pads.left, pads.right},
                          {check.sizes['H'], check.sizes['y'], low(conv.filter_stride[1]),
                           dilates ? low(conv.dilation[1]) : 1, pads.top, pads.bottom},
                          pads.present && check.sound(AI_CHAIN_INPUT) != nullptr &&
                              check.sound(AI_CHAIN_OUTPUT) != nullptr &&
                              check.sound(AI_CHAIN_WEIGHTS) != nullptr};
  ways.moves &= check_u16(check, ways.x.stride, "the filter's stride in x");
  ways.moves &= check_u16(check, ways.y.stride, "the filter's stride in y");
  ways.moves &= check_u16(check, ways.x.dilation, "the dilation in x");
  ways.moves &= check_u16(check, ways.y.dilation, "the dilation in y");
  for (uint32_t i = 0; !dilates && i < 2; ++i) {
    if (conv.dilation[i] > 1) {
      Finding(check.report()) << "the dilation in "
                              << "xy"[i] << " is " << conv.dilation[i]
                              << ", the function knows only 1";
    }
  }
  return ways;
}

void check_groups(LayerCheck& check) {
  const uint32_t groups = check.sizes['G'];
  const uint32_t in = check.sizes['C'];
  const uint32_t out = check.sizes['D'];
  if (groups == 0) {
    Finding(check.report()) << "groups is 0, at least 1 is needed";
  } else if (!is_kind(check, 'f') && groups != 1 && groups != in) {
    Finding(check.report()) << "groups is " << groups << ", the function takes 1 or as many as the "
                            << in << " input channels, else it hangs";
  } else if (is_kind(check, 'i') && groups != 1 && out != in) {
    Finding(check.report()) << "groups is " << groups << " with " << in << " input and " << out
                            << " output channels; unless they are as many, the function hangs";
  } else if (in % groups != 0 || out % groups != 0) {
    Finding(check.report()) << "groups is " << groups << ", which does not divide " << in
                            << " input and " << out << " output channels";
  }
}

// Q15 convolutions are square in everything.
void check_square(LayerCheck& check, const ConvolutionWays& ways) {
  const ai_tensor* input = check.sound(AI_CHAIN_INPUT);
  if (input == nullptr || ai_fmt_get_bits(input->data->format) != 16) {
    return;
  }
  if (check.sizes['G'] > 1) {
    Finding(check.report()) << "groups is " << check.sizes['G']
                            << ", with 16 bits the function takes 1, else it hangs";
  }
  const uint64_t pairs[][2] = {{ways.x.in, ways.y.in},
                               {ways.x.taps, ways.y.taps},
                               {ways.x.stride, ways.y.stride},
                               {ways.x.before, ways.y.before},
                               {ways.x.outputs(), ways.y.outputs()}};
  static constexpr const char* kNames[] = {"map", "kernel", "stride", "padding", "output"};
  for (uint32_t i = 0; i < 5; ++i) {
    if (pairs[i][0] != pairs[i][1]) {
      Finding(check.report()) << "the " << kNames[i] << " is " << pairs[i][0] << " x "
                              << pairs[i][1]
                              << ", with 16 bits the function takes squares, else it hangs";
    }
  }
}

// The bias must not have more fractional bits than the sum.
void check_bias_bits(LayerCheck& check) {
  const ai_tensor* input = check.sound(AI_CHAIN_INPUT);
  const ai_tensor* weights = check.sound(AI_CHAIN_WEIGHTS, 0);
  const ai_tensor* bias = check.sound(AI_CHAIN_WEIGHTS, 1);
  if (input == nullptr || weights == nullptr || bias == nullptr) {
    return;
  }
  const int32_t sum =
      ai_fmt_get_fbits(input->data->format) + ai_fmt_get_fbits(weights->data->format);
  const int32_t bits = ai_fmt_get_fbits(bias->data->format);
  if (bits > sum) {
    Finding(check.report()) << "weights 1 have " << bits
                            << " fractional bits, more than the products' " << sum;
  }
}

void check_kind_of_convolution(LayerCheck& check, const ConvolutionWays& ways) {
  check_groups(check);
  if (is_kind(check, 'q')) {
    check_square(check, ways);
    check_bias_bits(check);
  }
  if (!is_kind(check, 'f')) {
    check_u16_sizes(check);
  }
  const auto& conv = check.record<ai_layer_conv2d>();
  check_nl_function(check, conv.nl_func, conv.nl_params);
}

bool has_index_weights(const LayerCheck& check) {
  const ai_tensor* weights = check.sound(AI_CHAIN_WEIGHTS);
  return weights != nullptr && ai_fmt_get_type_id(weights->data->format) != AI_FORMAT_TYPE_FLOAT;
}

// Scratch that receives weights given as indices, of which as many are read as it has elements.
void check_expanded_weights(LayerCheck& check, uint32_t index) {
  if (!has_index_weights(check)) {
    return;
  }
  const uint64_t elements = elements_of(*check.sound(AI_CHAIN_WEIGHTS));
  check_scratch(check, index, product(elements, 4), 4);
  const ai_tensor* scratch = check.sound(AI_CHAIN_SCRATCH, index);
  if (scratch != nullptr && scratch->data->size > elements) {
    Finding(check.report()) << TensorName{AI_CHAIN_SCRATCH, index} << " has an array of "
                            << uint32_t{scratch->data->size}
                            << " elements, as many indices are read; weights 0 has " << elements;
  }
}

// The rows of one pooling window.
void check_window_rows(LayerCheck& check) {
  const uint32_t element = ai_fmt_get_bits(ai_tensor_format(check.sound(AI_CHAIN_OUTPUT))) / 8;
  const uint64_t row = product(check.sizes['v'], check.sizes['D']);
  const uint32_t rows = check.record<ai_layer_conv2d_nl_pool>().pool_size[1];
  check_scratch(check, 0, product(product(row, rows), element), element);
}

}  // namespace

void convolution_sizes(LayerCheck& check) {
  check.sizes.set('G', check.record<ai_layer_conv2d>().groups);
}

void check_convolution(LayerCheck& check) {
  const ConvolutionWays ways = check_ways(check);
  if (ways.moves) {
    check_positions(check, ways.x, check.sizes['w'], {AI_CHAIN_OUTPUT, 0}, "width");
    check_positions(check, ways.y, check.sizes['h'], {AI_CHAIN_OUTPUT, 0}, "height");
  }
  check_kind_of_convolution(check, ways);
}

// A stride above 1 leaves the output's size open by up to stride - 1.
void check_transposed(LayerCheck& check) {
  const ConvolutionWays ways = check_ways(check);
  const auto direction = [&check](const WindowWay& way, uint64_t actual, const char* name) {
    const uint64_t full = (way.in == 0 ? 0 : way.in - 1) * way.stride + way.extent();
    const uint64_t pads = way.before + way.after;
    const uint64_t least = full > pads ? full - pads : 0;
    if (actual < least || actual > least + way.stride - 1) {
      Finding(check.report()) << "output 0 has a " << name << " of " << actual << "; " << way.in
                              << " positions in steps of " << way.stride << " with a window of "
                              << way.extent() << " less " << way.before << " + " << way.after
                              << " of padding give " << least;
    }
  };
  if (ways.moves) {
    direction(ways.x, check.sizes['w'], "width");
    direction(ways.y, check.sizes['h'], "height");
  }
  check_kind_of_convolution(check, ways);
}

// Scratch 0 is the window of convolved rows, v wide; output 0 is the pooled map.
void check_fused_convolution(LayerCheck& check) {
  const ConvolutionWays ways = check_ways(check);
  if (ways.moves) {
    check_positions(check, ways.x, check.sizes['v'], {AI_CHAIN_SCRATCH, 0}, "width");
  }
  check_kind_of_convolution(check, ways);
  const auto& fused = check.record<ai_layer_conv2d_nl_pool>();
  check_pool_function(check, fused.pool_func);
  if (is_kind(check, 'f')) {
    check_u16_sizes(check);
  }
  const Pads pads = check_pads(check, fused.pool_pad, "pool_pad");
  const WindowWay x = {ways.x.outputs(), fused.pool_size[0], fused.pool_stride[0], 1,
                       pads.left,        pads.right};
  const WindowWay y = {ways.y.outputs(), fused.pool_size[1], fused.pool_stride[1], 1,
                       pads.top,         pads.bottom};
  check_pooling_ways(check, x, y, ways.moves && pads.present);
}

void check_conv2d_memory(LayerCheck& check) {
  check_expanded_weights(check, 0);
}

void check_fused_memory(LayerCheck& check) {
  const LayerCopy<ai_layer_conv2d_nl_pool> copy(check);
  check_scratch(check, 0, product(ai_conv2d_nl_pool_scratch_size(copy.record()), 4), 4);
  check_expanded_weights(check, 1);
}

void check_conv2d_integer_memory(LayerCheck& check) {
  const LayerCopy<ai_layer_conv2d> copy(check);
  check_scratch(check, 0, ai_conv2d_integer_scratch_size(copy.record()), 4);
  if (check.record<ai_layer_conv2d>().nl_func != nullptr) {
    check_scratch(check, 1, elements_of(*check.sound(AI_CHAIN_OUTPUT)), 1);
  }
}

void check_conv2d_fixed_memory(LayerCheck& check) {
  const LayerCopy<ai_layer_conv2d> copy(check);
  check_scratch(check, 0, ai_conv2d_fixed_scratch_size(copy.record()), 2);
}

void check_fused_integer_memory(LayerCheck& check) {
  const LayerCopy<ai_layer_conv2d_nl_pool> copy(check);
  check_window_rows(check);
  check_scratch(check, 1, ai_conv2d_nl_pool_integer_scratch_size(copy.record()), 4);
}

void check_fused_fixed_memory(LayerCheck& check) {
  const LayerCopy<ai_layer_conv2d_nl_pool> copy(check);
  check_window_rows(check);
  check_scratch(check, 1, ai_conv2d_nl_pool_fixed_scratch_size(copy.record()), 2);
}

}  // namespace nnlib
