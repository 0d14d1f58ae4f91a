// SPDX-License-Identifier: MIT
// Nonlinearities, conversions, broadcasting, normalization.
#include "check/details.hpp"
#include "check/slots.hpp"
#include "layers/layers_eltwise_generic_float.h"
#include "layers/layers_norm_generic_float.h"

namespace nnlib {
namespace {

const ai_array* nl_params(const LayerCheck& check) {
  return check.record<ai_layer_nl>().nl_params;
}

// Both tensors, when they are sound.
struct Ends {
  const ai_tensor* input;
  const ai_tensor* output;
  explicit Ends(const LayerCheck& check)
      : input(check.sound(AI_CHAIN_INPUT)), output(check.sound(AI_CHAIN_OUTPUT)) {}
  bool sound() const { return input != nullptr && output != nullptr; }
  bool quantized() const {
    return sound() && ai_tensor_intq(input) != nullptr && ai_tensor_intq(output) != nullptr;
  }
  ai_array_format from() const { return input->data->format; }
  ai_array_format to() const { return output->data->format; }
};

// The function works on the numbers as they are: both ends must read them alike.
void check_same_quantization(LayerCheck& check) {
  const Ends ends(check);
  if (!ends.quantized()) {
    return;
  }
  const float in = ai_tensor_scale(ends.input, 0);
  const float out = ai_tensor_scale(ends.output, 0);
  const int32_t in_zero = ai_tensor_zeropoint(ends.input, 0);
  const int32_t out_zero = ai_tensor_zeropoint(ends.output, 0);
  if (!(in == out) || in_zero != out_zero) {
    Finding(check.report()) << "output 0 has scale " << out << " and zero point " << out_zero
                            << ", the function keeps input 0's " << in << " and " << in_zero;
  }
}

// An operand spreads over the loops: each size is theirs or 1.
void check_spread(LayerCheck& check, TensorName name, const Dims& loops) {
  const ai_tensor* tensor = check.sound(name.list, name.index);
  if (tensor == nullptr) {
    return;
  }
  const Dims dims = dims_of(*tensor);
  for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) {
    if (dims.sizes[i] != loops.sizes[i] && dims.sizes[i] != 1) {
      Finding(check.report()) << name << " has the dimensions " << dims
                              << ", which do not spread over " << loops;
      return;
    }
  }
  if (dims.sizes[0] != loops.sizes[0] && dims.sizes[1] != loops.sizes[1]) {
    Finding(check.report()) << name << " has the dimensions " << dims << " where the loops have "
                            << loops << ": it cannot spread over batch and channels at once";
  }
}

// Inputs 0 and 1 against each other, the output against both together.
void check_broadcast(LayerCheck& check) {
  const ai_tensor* tensors[] = {check.sound(AI_CHAIN_INPUT, 0), check.sound(AI_CHAIN_INPUT, 1),
                                check.sound(AI_CHAIN_OUTPUT)};
  if (tensors[0] == nullptr || tensors[1] == nullptr || tensors[2] == nullptr) {
    return;
  }
  Dims loops = dims_of(*tensors[0]);
  const Dims second = dims_of(*tensors[1]);
  const Dims output = dims_of(*tensors[2]);
  bool same = true;
  for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) {
    loops.sizes[i] = loops.sizes[i] > second.sizes[i] ? loops.sizes[i] : second.sizes[i];
    same = same && loops.sizes[i] == output.sizes[i];
  }
  check_spread(check, {AI_CHAIN_INPUT, 0}, loops);
  check_spread(check, {AI_CHAIN_INPUT, 1}, loops);
  if (!same) {
    Finding(check.report()) << "output 0 has the dimensions " << output
                            << ", the inputs together give " << loops;
  }
}

void check_operation(LayerCheck& check, ai_binary_fn operation) {
  if (operation == nullptr) {
    Finding(check.report()) << "operation is null, the layer calls it for each element";
  }
}

}  // namespace

// --- nonlinearities -----------------------------------------------------------------------------

template <uint32_t Parameters>
void check_nl_params(LayerCheck& check) {
  check_parameters(check, nl_params(check), Parameters);
}
template void check_nl_params<1>(LayerCheck&);
template void check_nl_params<2>(LayerCheck&);
template void check_nl_params<256>(LayerCheck&);

// None, one value or three.
void check_relu(LayerCheck& check) {
  const ai_array* params = nl_params(check);
  if (params != nullptr && params->size != 1) {
    check_parameters(check, params, 3);
  } else if (params != nullptr) {
    check_parameters(check, params, 1);
  }
}

// Blocks of slopes follow each other through the input.
void check_prelu(LayerCheck& check) {
  const ai_tensor* input = check.sound(AI_CHAIN_INPUT);
  const ai_tensor* slopes = check.sound(AI_CHAIN_WEIGHTS);
  if (input == nullptr || slopes == nullptr) {
    return;
  }
  const uint64_t count = elements_of(*slopes);
  if (count == 0 || elements_of(*input) % count != 0) {
    Finding(check.report()) << "weights 0 has " << count << " slopes, which do not divide the "
                            << elements_of(*input) << " elements of input 0";
  } else if (slopes->data->size != count) {
    Finding(check.report()) << "weights 0 has an array of " << uint32_t{slopes->data->size}
                            << " slopes, its dimensions have " << count;
  }
}

void check_relu_integer(LayerCheck& check) {
  check_parameters(check, nl_params(check), 1);
  check_same_quantization(check);
}

void check_clip_integer(LayerCheck& check) {
  check_parameters(check, nl_params(check), 2);
  check_same_quantization(check);
}

void check_same_bits(LayerCheck& check) {
  const Ends ends(check);
  if (ends.sound() && ai_fmt_get_fbits(ends.from()) != ai_fmt_get_fbits(ends.to())) {
    Finding(check.report()) << "output 0 has " << ai_fmt_get_fbits(ends.to())
                            << " fractional bits, the function keeps input 0's "
                            << ai_fmt_get_fbits(ends.from());
  }
}

void check_relu_max_fixed(LayerCheck& check) {
  check_parameters(check, nl_params(check), 1);
  check_same_bits(check);
}

// Results between -1 and 1 have all bits but the sign behind the point.
void check_full_fraction(LayerCheck& check) {
  const Ends ends(check);
  if (!ends.sound() || ai_fmt_is_float(ends.to())) {
    return;
  }
  const int32_t needed = static_cast<int32_t>(ai_fmt_get_bits(ends.to())) - 1;
  const int32_t bits = ai_fmt_get_fbits(ends.to());
  if (bits != needed) {
    Finding(check.report()) << "output 0 has " << bits << " fractional bits, the function gives "
                            << needed;
  }
}

// --- broadcasting -------------------------------------------------------------------------------

void check_eltwise(LayerCheck& check) {
  check_operation(check, check.record<ai_layer_eltwise>().operation);
  check_broadcast(check);
}

void check_add_integer(LayerCheck& check) {
  check_broadcast(check);
}

void check_reduce(LayerCheck& check) {
  check_operation(check, check.record<ai_layer_reduce>().operation);
  const Ends ends(check);
  if (ends.sound()) {
    check_spread(check, {AI_CHAIN_OUTPUT, 0}, dims_of(*ends.input));
    if (ends.output->data->size != elements_of(*ends.output)) {
      Finding(check.report()) << "output 0 has an array of " << uint32_t{ends.output->data->size}
                              << " elements, all of which are written; its dimensions have "
                              << elements_of(*ends.output);
    }
  }
}

// --- conversions --------------------------------------------------------------------------------

// Float at one end; at the other fixed point, or integers with their record.
void check_convert(LayerCheck& check) {
  const Ends ends(check);
  if (!ends.sound()) {
    return;
  }
  const bool from_float = ai_fmt_get_type_id(ends.from()) == AI_FORMAT_TYPE_FLOAT;
  const uint32_t quantized = from_float ? AI_CHAIN_OUTPUT : AI_CHAIN_INPUT;
  check_kind(check, {from_float ? AI_CHAIN_INPUT : AI_CHAIN_OUTPUT, 0}, 'f');
  const char kind = check.tensor(quantized)->klass != nullptr ? 'i' : 'q';
  check_kind(check, {quantized, 0}, kind);
  check_linked(check, {quantized, 0}, kind);
}

void check_convert_fixed(LayerCheck& check) {
  const Ends ends(check);
  if (!ends.sound()) {
    return;
  }
  const bool alike = ai_fmt_get_bits(ends.from()) == ai_fmt_get_bits(ends.to()) &&
                     ai_fmt_get_ibits(ends.from()) == ai_fmt_get_ibits(ends.to());
  if (alike && ends.input->data->data != ends.output->data->data) {
    Finding(check.report()) << "input 0 and output 0 both have " << ai_fmt_get_bits(ends.from())
                            << " bits, " << ai_fmt_get_fbits(ends.from())
                            << " of them fractional: the function writes nothing, they must be one"
                               " buffer";
  }
}

void check_convert_integer(LayerCheck& check) {
  const Ends ends(check);
  if (!ends.sound()) {
    return;
  }
  if (ai_fmt_is_signed(ends.from()) == ai_fmt_is_signed(ends.to())) {
    Finding(check.report()) << "input 0 and output 0 both have the format "
                            << FormatName{ends.from()} << ", the function changes the sign";
    return;
  }
  if (!ends.quantized()) {
    return;
  }
  const int32_t moved =
      ai_tensor_zeropoint(ends.input, 0) + (ai_fmt_is_signed(ends.from()) ? 128 : -128);
  if (ai_tensor_zeropoint(ends.output, 0) != moved) {
    Finding(check.report()) << "output 0 has the zero point " << ai_tensor_zeropoint(ends.output, 0)
                            << ", input 0's moved by 128 is " << moved;
  }
}

// --- normalization ------------------------------------------------------------------------------

void check_norm(LayerCheck& check) {
  const auto& norm = check.record<ai_layer_norm>();
  if (norm.axis >= AI_SHAPE_DIMS) {
    Finding(check.report()) << "the axis is " << norm.axis << ", 0 to 3 are possible";
  }
  if (norm.exponent == 0.0f) {
    Finding(check.report()) << "the exponent is 0, its reciprocal is taken";
  }
}

}  // namespace nnlib
