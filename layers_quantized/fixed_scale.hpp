// SPDX-License-Identifier: MIT
// How fixed-point sums of products get from the scale of their factors to that of the output.
#ifndef NNLIB_LAYERS_QUANTIZED_FIXED_SCALE_HPP
#define NNLIB_LAYERS_QUANTIZED_FIXED_SCALE_HPP

#include "kernels/arm_shift.h"
#include "kernels/saturate.hpp"
#include "layers/layer_tensors.hpp"

namespace nnlib {

struct FixedScale {
  uint16_t bias_shift;  // left, of the bias
  uint16_t out_shift;   // right, of the sum
  int8_t post_shift;    // left and saturating, of the outputs: when out_shift would be negative
};

// bias may be null.
inline FixedScale fixed_scale(const ai_tensor& input, const ai_tensor& weights,
                              const ai_tensor* bias, const ai_tensor& output) {
  const int32_t sum_bits =
      ai_fmt_get_fbits(ai_tensor_format(&input)) + ai_fmt_get_fbits(ai_tensor_format(&weights));
  const int32_t bias_bits = bias != nullptr ? ai_fmt_get_fbits(ai_tensor_format(bias)) : sum_bits;
  const int32_t out_shift = sum_bits - ai_fmt_get_fbits(ai_tensor_format(&output));
  return {static_cast<uint16_t>(sum_bits - bias_bits),
          static_cast<uint16_t>(out_shift > 0 ? out_shift : 0),
          saturate<int8_t>(out_shift < 0 ? -out_shift : 0)};
}

// count outputs of bits (8 or 16) each, in place.
inline void fixed_post_shift(void* outputs, uint32_t bits, const FixedScale& scale,
                             uint32_t count) {
  if (scale.post_shift == 0) {
    return;
  }
  if (bits == 8) {
    q7_t* elements = static_cast<q7_t*>(outputs);
    arm_shift_q7(elements, scale.post_shift, elements, count);
  } else {
    q15_t* elements = static_cast<q15_t*>(outputs);
    arm_shift_q15(elements, scale.post_shift, elements, count);
  }
}

}  // namespace nnlib

#endif
