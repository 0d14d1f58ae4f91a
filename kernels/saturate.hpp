// SPDX-License-Identifier: MIT
// Narrowing to an integer type's range.
#ifndef NNLIB_KERNELS_SATURATE_HPP
#define NNLIB_KERNELS_SATURATE_HPP

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace nnlib {

template <class T>
constexpr T saturate(int32_t value) {
#if defined(__ARM_FEATURE_SAT)
  if (!std::is_constant_evaluated()) {
    int32_t within = 0;
    if constexpr (std::is_signed_v<T>) {
      __asm__("ssat %0, %1, %2" : "=r"(within) : "I"(8 * sizeof(T)), "r"(value));
    } else {
      __asm__("usat %0, %1, %2" : "=r"(within) : "I"(8 * sizeof(T)), "r"(value));
    }
    return static_cast<T>(within);
  }
#endif
  constexpr int32_t low = std::numeric_limits<T>::min();
  constexpr int32_t high = std::numeric_limits<T>::max();
  return static_cast<T>(std::min(std::max(value, low), high));
}

// The fraction cut off; NaN gives 0. For types of at most 16 bits, whose limits a float holds.
template <class T>
T saturate(float value) {
  static_assert(sizeof(T) <= 2);
#if defined(__arm__) && defined(__ARM_FP) && (__ARM_FP & 4) != 0
  // The conversion itself cuts off, saturates to 32 bits and gives 0 for NaN.
  float bits;
  __asm__("vcvt.s32.f32 %0, %1" : "=t"(bits) : "t"(value));
  return saturate<T>(std::bit_cast<int32_t>(bits));
#else
  constexpr float low = std::numeric_limits<T>::min();
  constexpr float high = std::numeric_limits<T>::max();
  // Written so that it becomes two instructions of vector units; NaN passes as low.
  const float above = value > low ? value : low;
  const float within = above < high ? above : high;
  return static_cast<T>(value == value ? static_cast<int32_t>(within) : 0);
#endif
}

}  // namespace nnlib

#endif
