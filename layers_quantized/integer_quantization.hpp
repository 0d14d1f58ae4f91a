// SPDX-License-Identifier: MIT
// What the integer layers with weights have in common: the form of their kernels and the
// requantization of their outputs.
#ifndef NNLIB_LAYERS_QUANTIZED_INTEGER_QUANTIZATION_HPP
#define NNLIB_LAYERS_QUANTIZED_INTEGER_QUANTIZATION_HPP

#include <cstddef>

#include "kernels/ko_requantize.h"
#include "kernels/ko_types.hpp"
#include "layers/layer_tensors.hpp"

namespace nnlib {

// The forms of the integer kernels, in the order of KO_FORMS.
enum class IntegerForm : uint32_t {
  kUint8,
  kUint8Channels,
  kInt8symwt,
  kInt8symwtChannels,
  kInt8Int8symwt,
  kInt8Int8symwtChannels,
  kNone,  // int8 activations with uint8 weights: there is no such kernel
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
  const bool signed_input = ai_fmt_is_signed(ai_tensor_format(&input));
  const bool signed_weights = ai_fmt_is_signed(ai_tensor_format(&weights));
  if (signed_input && !signed_weights) {
    return IntegerForm::kNone;
  }
  const uint32_t types = signed_input ? 4 : signed_weights ? 2 : 0;
  return static_cast<IntegerForm>(types + (ai_tensor_intq_size(&weights) > 1 ? 1 : 0));
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

// The pairs of a layer, one or one for each channel. Those of channels lie in scratch: all
// multipliers, then all shifts.
class RequantizationPairs {
 public:
  static constexpr uint32_t scratch_size(uint32_t channels) {
    return channels * uint32_t{sizeof(int32_t) + sizeof(int16_t)};
  }

  explicit RequantizationPairs(float factor) {
    uint16_t shift = 0;
    multiplier_ = align_factor(factor, &shift);
    shift_ = static_cast<int16_t>(shift);
  }
  RequantizationPairs(float in_scale, float out_scale, const float* scales, uint32_t channels,
                      uint8_t* scratch)
      : multipliers_(reinterpret_cast<int32_t*>(scratch)),
        shifts_(reinterpret_cast<int16_t*>(scratch + channels * sizeof(int32_t))) {
    align_factor_ch(in_scale, out_scale, scales, static_cast<uint16_t>(channels), multipliers_,
                    shifts_);
  }

  const int32_t* multiplier() const {
    return multipliers_ != nullptr ? multipliers_ : &multiplier_;
  }
  const int16_t* shift() const { return shifts_ != nullptr ? shifts_ : &shift_; }

 private:
  int32_t* multipliers_ = nullptr;
  int16_t* shifts_ = nullptr;
  int32_t multiplier_ = 0;
  int16_t shift_ = 0;
};

// The pairs of a layer of `channels` outputs; pairs_scratch() gives the memory for pairs of
// channels and is not called for a single pair.
template <class PairsScratch>
RequantizationPairs requantization_pairs(IntegerForm form, const ai_tensor& input,
                                         const ai_tensor& weights, const ai_tensor& output,
                                         uint32_t channels, PairsScratch pairs_scratch) {
  const float in_scale = ai_tensor_scale(&input, 0);
  const float out_scale = ai_tensor_scale(&output, 0);
  if (!has_channels(form)) {
    return RequantizationPairs((in_scale * ai_tensor_scale(&weights, 0)) / out_scale);
  }
  return RequantizationPairs(in_scale, out_scale, ai_tensor_intq(&weights)->scale, channels,
                             pairs_scratch());
}

// The weights' zero points as the kernels take them. A record without them means zero points of 0
// only where one serves all channels; uint8 weights of several scales must have them, or it faults.
inline const void* weight_zeropoints(IntegerForm form, const ai_tensor& weights) {
  static constexpr uint8_t kNone = 0;
  const ai_intq_info* info = ai_tensor_intq(&weights);
  if (info != nullptr && info->zeropoint != nullptr) {
    return info->zeropoint;
  }
  if (form == IntegerForm::kUint8Channels) {
    core_fault();
  }
  return &kNone;
}

// What a kernel of the form gets. Zero points count as elements of its activations' type.
inline KoQuantization kernel_quantization(IntegerForm form, const RequantizationPairs& pairs,
                                          const ai_tensor& input, const ai_tensor& weights,
                                          const ai_tensor& output) {
  const auto zeropoint = [&input](const ai_tensor& tensor) -> int32_t {
    const int32_t value = ai_tensor_zeropoint(&tensor, 0);
    return ai_fmt_is_signed(ai_tensor_format(&input)) ? int32_t{static_cast<int8_t>(value)}
                                                      : int32_t{static_cast<uint8_t>(value)};
  };
  return {pairs.multiplier(), pairs.shift(),
          zeropoint(input),   static_cast<const uint8_t*>(weight_zeropoints(form, weights)),
          zeropoint(output),  has_channels(form) ? ~uint32_t{0} : 0};
}

}  // namespace nnlib

#endif
