// SPDX-License-Identifier: MIT
#include "kernels/ko_requantize.h"

#include <algorithm>
#include <cmath>

extern "C" {

int32_t align_factor(float scale, uint16_t* shift) {
  *shift = 0;
  if (!(scale > 0.0f) || std::isinf(scale)) {
    return 0;
  }
  int exponent;
  float multiplier = std::frexp(scale, &exponent);  // 0.5 <= multiplier < 1
  if (multiplier == 0.5f && exponent > 0) {  // from 1 on, powers of two have the multiplier 1
    multiplier = 1.0f;
    --exponent;
  }
  *shift = static_cast<uint16_t>(-exponent);  // modulo 2^16: halvings count backwards
  return static_cast<int32_t>(
      std::min(static_cast<uint32_t>(multiplier * 2147483648.0f), uint32_t{INT32_MAX}));
}

void align_factor_ch(float in_scale, float out_scale, const float* wt_scale, uint16_t channels,
                     int32_t* multiplier, int16_t* shift) {
  for (uint16_t i = 0; i < channels; ++i) {
    uint16_t stored = 0;
    multiplier[i] = align_factor((wt_scale[i] * in_scale) / out_scale, &stored);
    shift[i] = static_cast<int16_t>(stored);
  }
}

}  // extern "C"
