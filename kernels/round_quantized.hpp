// SPDX-License-Identifier: MIT
// Rounding of real values to quantized elements.
#ifndef NNLIB_KERNELS_ROUND_QUANTIZED_HPP
#define NNLIB_KERNELS_ROUND_QUANTIZED_HPP

#include <bit>
#include <cmath>
#include <cstdint>
#include <type_traits>

#include "kernels/saturate.hpp"

namespace nnlib {

// For the fraction to be cut off: halves away from zero. The sum is rounded to a float as well.
inline float plus_half_away(float value) {
#if defined(__arm__) && defined(__ARM_FP) && __ARM_ARCH >= 7
  // 0.5 below the sign of value; a compiler takes one instruction more.
  uint32_t half = std::bit_cast<uint32_t>(value);
  __asm__("bfi %0, %1, #0, #31" : "+r"(half) : "r"(std::bit_cast<uint32_t>(0.5f)));
  return value + std::bit_cast<float>(half);
#else
  return value + std::copysign(0.5f, value);
#endif
}

// uint8: plus 0.5, cut off; int8: halves away from zero. Saturated.
template <class T>
T round_quantized(float value) {
  return saturate<T>(std::is_signed_v<T> ? plus_half_away(value) : value + 0.5f);
}

}  // namespace nnlib

#endif
