// SPDX-License-Identifier: MIT
// The types that functions with an instance for each have, less those that the build leaves out.
#include "check/layer_check.hpp"
#include "layers_quantized/quantized_types.hpp"

namespace nnlib {
namespace {

constexpr const char* kHangs = ": the function hangs";
constexpr const char* kLeftOut = ": left out by NNLIB_QUANTIZED_TYPES, the function hangs";

bool elements_linked(ai_array_format format) {
  return ai_fmt_is_signed(format) ? kElementsLinked<int8_t> : kElementsLinked<uint8_t>;
}

bool products_linked(ai_array_format in, ai_array_format weights) {
  if (!ai_fmt_is_signed(weights)) {
    return kTypesLinked<KoTypes<uint8_t, uint8_t>>;
  }
  return ai_fmt_is_signed(in) ? kTypesLinked<KoTypes<int8_t, int8_t>>
                              : kTypesLinked<KoTypes<uint8_t, int8_t>>;
}

void check_products(LayerCheck& check, ai_array_format in, ai_array_format weights) {
  const bool exist = !ai_fmt_is_signed(in) || ai_fmt_is_signed(weights);
  if (!exist || !products_linked(in, weights)) {
    Finding(check.report()) << "input 0 is " << FormatName{in} << ", weights 0 are "
                            << FormatName{weights} << (exist ? kLeftOut : kHangs);
  }
}

}  // namespace

void check_linked(LayerCheck& check, TensorName name, char kind) {
  const ai_array_format format = check.tensor(name.list, name.index)->data->format;
  if (kind == 'q' ? !kFixedLinked : !elements_linked(format)) {
    Finding(check.report()) << name << " is " << FormatName{format} << kLeftOut;
  }
}

void check_integer_types(LayerCheck& check) {
  const char kind = check.rule()->outputs[0];
  const ai_tensor* input = check.sound(AI_CHAIN_INPUT);
  if (input == nullptr || (kind != 't' && kind != 'k')) {
    return;
  }
  if (check.rule()->weights[0] != 'w') {
    check_linked(check, {AI_CHAIN_INPUT, 0}, kind);
  } else if (const ai_tensor* weights = check.sound(AI_CHAIN_WEIGHTS)) {
    check_products(check, input->data->format, weights->data->format);
  }
}

}  // namespace nnlib
