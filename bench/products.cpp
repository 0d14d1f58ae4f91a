// SPDX-License-Identifier: MIT
// Convolutions and dense layers of the runtime in every number format.
#include <cmath>

#include "bench/layer.hpp"
#include "kernels/ko_convolve_HWC_reference.h"
#include "layers/layers_dense_generic_float.h"
#include "layers_quantized/layers_conv2d_quarn_fixed.h"
#include "layers_quantized/layers_conv2d_quarn_integer.h"
#include "layers_quantized/layers_dense_quarn_fixed.h"
#include "layers_quantized/layers_quarn_integer.h"

namespace bench {
namespace {

struct Numbers {
  const char* name;
  ai_array_format in, weights, bias, out;
  bool quantized;
  bool no_groups;  // the layer knows no depthwise convolution
  ai_layer_forward conv, dense;
  ai_size (*conv_scratch)(const ai_layer_conv2d*);
  ai_size (*dense_scratch)(const ai_layer*);
};

#define INTEGER(name, in, weights)                                                        \
  {                                                                                       \
    name, AI_ARRAY_FORMAT_##in, AI_ARRAY_FORMAT_##weights, AI_ARRAY_FORMAT_S32,           \
        AI_ARRAY_FORMAT_##in, true, false, forward_conv2d_integer, forward_dense_integer, \
        ai_conv2d_integer_scratch_size, ai_dense_integer_scratch_size                     \
  }
// The outputs of fixed point have integer bits enough for sums of some hundred products.
#define FIXED(name, bits)                                                                      \
  {                                                                                            \
    name, AI_ARRAY_FORMAT_MAKE_Q(bits, bits - 1), AI_ARRAY_FORMAT_MAKE_Q(bits, bits - 1),      \
        AI_ARRAY_FORMAT_MAKE_Q(bits, bits - 1), AI_ARRAY_FORMAT_MAKE_Q(bits, bits - 5), false, \
        bits == 16, forward_conv2d_fixed, forward_dense_fixed, ai_conv2d_fixed_scratch_size,   \
        ai_dense_fixed_scratch_size                                                            \
  }
constexpr Numbers kNumbers[] = {
    {"float32", AI_ARRAY_FORMAT_FLOAT, AI_ARRAY_FORMAT_FLOAT, AI_ARRAY_FORMAT_FLOAT,
     AI_ARRAY_FORMAT_FLOAT, false, false, forward_conv2d, forward_dense, nullptr, nullptr},
    INTEGER("int8_int8symwt", S8, S8),
    INTEGER("int8symwt", U8, S8),
    INTEGER("uint8", U8, U8),
    FIXED("Q7", 8),
    FIXED("Q15", 16),
};

constexpr float kScale = 1.0f / 64;

// Adds the tensors; weights have a scale for each output channel. The output's scale is such that
// few of the sums of `products` products saturate.
template <class Record>
void add_tensors(Layer<Record>& layer, const Numbers& numbers, nnlib::dims in, nnlib::dims weights,
                 nnlib::dims out, uint32_t products) {
  const float scale = numbers.quantized ? kScale : 0.0f;
  const auto spread = static_cast<float>(std::sqrt(products)) * 100;
  layer.add(AI_CHAIN_INPUT, numbers.in, in, scale);
  layer.add(AI_CHAIN_OUTPUT, numbers.out, out, scale * kScale * spread);
  layer.add(AI_CHAIN_WEIGHTS, numbers.weights, weights, scale, out.c);
  layer.add(AI_CHAIN_WEIGHTS, numbers.bias, nnlib::dims{1, out.c, 1, 1});
}

template <class Record>
void add_scratch(Layer<Record>& layer, ai_size bytes) {
  layer.add(AI_CHAIN_SCRATCH, AI_ARRAY_FORMAT_S8, nnlib::dims{1, bytes, 1, 1});
}

void add_conv(const Numbers& numbers, const ConvShape& s) {
  auto layer = std::make_shared<Layer<ai_layer_conv2d>>(numbers.conv);
  add_tensors(*layer, numbers, {1, s.channels, s.size, s.size},
              {s.channels, s.taps, s.taps, s.depthwise() ? 1 : s.filters},
              {1, s.out_channels(), s.out_size(), s.out_size()},
              s.taps * s.taps * (s.depthwise() ? 1 : s.channels));
  ai_layer_conv2d& record = layer->record;
  record.groups = s.depthwise() ? s.channels : 1;
  record.filter_stride[0] = record.filter_stride[1] = s.stride;
  record.dilation[0] = record.dilation[1] = 1;
  record.filter_pad = layer->square_pads(s.pad);
  if (numbers.conv_scratch != nullptr) {
    add_scratch(*layer, numbers.conv_scratch(&record));
  }
  add_layer(s.name, numbers.name, layer, s.operations());
}

void add_dense(const Numbers& numbers, const DenseShape& s) {
  auto layer = std::make_shared<Layer<ai_layer>>(numbers.dense);
  add_tensors(*layer, numbers, {1, s.inputs, 1, 1}, {s.inputs, s.outputs, 1, 1},
              {1, s.outputs, 1, 1}, s.inputs);
  if (numbers.dense_scratch != nullptr) {
    add_scratch(*layer, numbers.dense_scratch(&layer->record));
  }
  add_layer(s.name, numbers.name, layer, s.operations());
}

// What the optimised integer kernels reproduce.
void add_reference(const ConvShape& s) {
  struct Data {
    Buffer<int8_t> in, weights, out;
    std::vector<int32_t> bias, multiplier;
    std::vector<int16_t> shift;
  };
  const size_t filters = s.out_channels();
  auto d = std::make_shared<Data>(
      Data{Buffer<int8_t>(s.in_count()), Buffer<int8_t>(s.weight_count()),
           Buffer<int8_t>(s.out_count()), std::vector<int32_t>(filters, 1000),
           std::vector<int32_t>(filters, 1500000000), std::vector<int16_t>(filters, 8)});
  const auto size = static_cast<uint16_t>(s.size), out_size = static_cast<uint16_t>(s.out_size()),
             channels = static_cast<uint16_t>(s.channels), taps = static_cast<uint16_t>(s.taps),
             pad = static_cast<uint16_t>(s.pad), stride = static_cast<uint16_t>(s.stride);
  add_benchmark(s.name, "reference", s.operations(), [=] {
    ko_int8_int8symwt_convolve_HWC_reference_CH(
        d->in.data(), size, size, channels, d->weights.data(), static_cast<uint16_t>(filters), taps,
        taps, pad, pad, stride, stride, d->bias.data(), d->multiplier.data(), d->shift.data(), -3,
        5, d->out.data(), out_size, out_size);
  });
}

}  // namespace

void add_products() {
  for (const ConvShape& shape : kConvShapes) {
    for (const Numbers& numbers : kNumbers) {
      if (!(shape.depthwise() && numbers.no_groups)) {
        add_conv(numbers, shape);
      }
    }
    if (!shape.depthwise()) {
      add_reference(shape);
    }
  }
  for (const DenseShape& shape : kDenseShapes) {
    for (const Numbers& numbers : kNumbers) {
      add_dense(numbers, shape);
    }
  }
}

}  // namespace bench
