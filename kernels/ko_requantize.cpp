// SPDX-License-Identifier: MIT
#include "kernels/ko_requantize.h"

#include <bit>
#include <cmath>
#include <limits>

extern "C" {

int32_t align_factor(float scale, uint16_t* shift) {
  *shift = 0;
  if (!(scale > 0.0f) || std::isinf(scale)) {
    return 0;
  }
  int exponent = -126;  // scale = significand * 2^exponent, 0.5 <= significand < 1
  if (scale < std::numeric_limits<float>::min()) {
    scale *= 0x1p24f;
    exponent -= 24;
  }
  const uint32_t bits = std::bit_cast<uint32_t>(scale);
  exponent += static_cast<int>(bits >> 23);
  auto multiplier = static_cast<int32_t>((bits << 7 & 0x3FFFFFFF) | 0x40000000);
  if (multiplier == 0x40000000 && exponent > 0) {  // from 1 on, powers of two have the multiplier 1
    multiplier = INT32_MAX;
    --exponent;
  }
  *shift = static_cast<uint16_t>(-exponent);  // modulo 2^16: halvings count backwards
  return multiplier;
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
