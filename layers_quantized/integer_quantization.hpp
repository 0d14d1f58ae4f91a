// SPDX-License-Identifier: MIT
// What the integer layers with weights have in common: the form of their kernels and the
// requantization of their outputs.
#ifndef NNLIB_LAYERS_QUANTIZED_INTEGER_QUANTIZATION_HPP
#define NNLIB_LAYERS_QUANTIZED_INTEGER_QUANTIZATION_HPP

#include <cstddef>

#include "kernels/ko_types.hpp"
#include "layers/layer_tensors.hpp"
#include "layers_quantized/quantized_types.hpp"

namespace nnlib {

// The forms of the integer kernels, in the order of KO_FORMS.
enum class IntegerForm : uint32_t {
  kUint8,
  kUint8Channels,
  kInt8symwt,
  kInt8symwtChannels,
  kInt8Int8symwt,
  kInt8Int8symwtChannels,
  kNone,  // int8 activations with uint8 weights, or types left out of the build
};

inline bool has_channels(IntegerForm form) {
  return (static_cast<uint32_t>(form) & 1) != 0;
}

// The place of a form's types word in KO_TYPES_WORDS.
inline uint32_t types_word(IntegerForm form) {
  return static_cast<uint32_t>(form) / 2;
}

// By the signs of input and weights, and whether the weights have one scale or one for each output
// channel.
inline IntegerForm integer_form(const ai_tensor& input, const ai_tensor& weights) {
#define NNLIB_LINKED(types) kTypesLinked<KO_TYPES(types)>,
  static constexpr bool kLinked[] = {KO_TYPES_WORDS(NNLIB_LINKED)};
#undef NNLIB_LINKED
  const bool signed_input = ai_fmt_is_signed(ai_tensor_format(&input));
  const bool signed_weights = ai_fmt_is_signed(ai_tensor_format(&weights));
  const uint32_t types = signed_input ? 2 : signed_weights ? 1 : 0;
  if ((signed_input && !signed_weights) || !kLinked[types]) {
    return IntegerForm::kNone;
  }
  return static_cast<IntegerForm>(2 * types + (ai_tensor_intq_size(&weights) > 1 ? 1 : 0));
}

// Scratch is used as 32- and 16-bit values.
constexpr uint32_t aligned_to_word(uint32_t bytes) {
  return (bytes + 3) & ~3u;
}

inline uint8_t* aligned_scratch(const ai_tensor& scratch) {
  uint8_t* data = tensor_data<uint8_t>(scratch);
  if (reinterpret_cast<uintptr_t>(data) % 4 != 0) {
    core_fault();
  }
  return data;
}

// The quantization of a layer's kernels. Its pairs are one, or one for each channel; those of
// channels lie in scratch: all multipliers, then all shifts.
class LayerQuantization : public KoQuantization {
 public:
  static constexpr uint32_t scratch_size(uint32_t channels) {
    return channels * uint32_t{sizeof(int32_t) + sizeof(int16_t)};
  }

  // A layer of `channels` outputs; pairs_scratch is not used for a single pair.
  LayerQuantization(const ai_layer& layer, IntegerForm form, uint32_t channels,
                    uint8_t* pairs_scratch);
  LayerQuantization(const LayerQuantization&) = delete;
  LayerQuantization& operator=(const LayerQuantization&) = delete;

 private:
  int32_t only_multiplier_;
  int16_t only_shift_;
};

}  // namespace nnlib

#endif
