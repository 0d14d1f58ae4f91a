// SPDX-License-Identifier: MIT
#include "kernels/ko_requantize.h"

#include <bit>
#include <cmath>
#include <limits>

#include "kernels/vector.hpp"

namespace {

constexpr uint32_t kLeastNormal = UINT32_C(0x00800000);
constexpr uint32_t kInfinity = UINT32_C(0x7F800000);

// A number is multiplier * 2^(exponent - 31).
struct Factor {
  int32_t multiplier;
  int32_t exponent;
};

// Of a positive normal number by its bits. From 1 on, powers of two have the multiplier 1.
inline Factor factor_of(uint32_t bits) {
  const int32_t exponent = static_cast<int32_t>(bits >> 23) - 126;
  const auto multiplier = static_cast<int32_t>((bits << 7 & 0x3FFFFFFF) | 0x40000000);
  const bool is_one = multiplier == 0x40000000 && exponent > 0;
  return {is_one ? INT32_MAX : multiplier, exponent - is_one};
}

}  // namespace

extern "C" {

int32_t align_factor(float scale, uint16_t* shift) {
  *shift = 0;
  if (!(scale > 0.0f) || std::isinf(scale)) {
    return 0;
  }
  int32_t raised = 0;
  if (scale < std::numeric_limits<float>::min()) {
    scale *= 0x1p24f;
    raised = 24;
  }
  const Factor factor = factor_of(std::bit_cast<uint32_t>(scale));
  *shift =
      static_cast<uint16_t>(raised - factor.exponent);  // modulo 2^16: halvings count backwards
  return factor.multiplier;
}

void align_factor_ch(float in_scale, float out_scale, const float* wt_scale, uint16_t channels,
                     int32_t* multiplier, int16_t* shift) {
  if constexpr (NNLIB_VECTOR_LANES > 1) {
    uint32_t special = 0;
    for (uint32_t i = 0; i < channels; ++i) {
      const uint32_t bits = std::bit_cast<uint32_t>((wt_scale[i] * in_scale) / out_scale);
      const Factor factor = factor_of(bits);
      multiplier[i] = factor.multiplier;
      shift[i] = static_cast<int16_t>(-factor.exponent);
      special |= bits - kLeastNormal >= kInfinity - kLeastNormal;
    }
    if (special == 0) {
      return;
    }
  }
  for (uint32_t i = 0; i < channels; ++i) {
    uint16_t stored = 0;
    multiplier[i] = align_factor((wt_scale[i] * in_scale) / out_scale, &stored);
    shift[i] = static_cast<int16_t>(stored);
  }
}

}  // extern "C"
