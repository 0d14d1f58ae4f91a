// SPDX-License-Identifier: MIT
// Narrowing to an integer type's range.
#ifndef NNLIB_KERNELS_SATURATE_HPP
#define NNLIB_KERNELS_SATURATE_HPP

#include <algorithm>
#include <cstdint>
#include <limits>

namespace nnlib {

template <class T>
constexpr T saturate(int32_t value) {
  constexpr int32_t low = std::numeric_limits<T>::min();
  constexpr int32_t high = std::numeric_limits<T>::max();
  return static_cast<T>(std::min(std::max(value, low), high));
}

// The fraction cut off; NaN gives 0. For types of at most 16 bits, whose limits a float holds.
template <class T>
constexpr T saturate(float value) {
  static_assert(sizeof(T) <= 2);
  constexpr float low = std::numeric_limits<T>::min();
  constexpr float high = std::numeric_limits<T>::max();
  // Written so that it becomes two instructions of vector units; NaN passes as low.
  const float above = value > low ? value : low;
  const float within = above < high ? above : high;
  return static_cast<T>(value == value ? static_cast<int32_t>(within) : 0);
}

}  // namespace nnlib

#endif
