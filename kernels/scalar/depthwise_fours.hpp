// SPDX-License-Identifier: MIT
// Blocks of four channels without instructions of their own.

#include "kernels/scalar/keep.hpp"

using Offset = int32_t;

constexpr Offset offset_of(int32_t zeropoint) {
  return zeropoint;
}

template <class T>
void keep_in_memory(T&) {}

template <bool, class Activation>
NNLIB_ALWAYS_INLINE void add_taps(const Activation* a, const Activation* b, Offset zeropoint,
                                  const int16_t*& weights, int32_t (&sums)[4]) {
  keep(a);
  keep(b);
  NNLIB_UNROLL
  for (uint32_t i = 0; i < 4; ++i) {
    sums[i] = wrapping_add(sums[i], weights[2 * i] * (a[i] - zeropoint));
    sums[i] = wrapping_add(sums[i], weights[2 * i + 1] * (b[i] - zeropoint));
    keep(sums[i]);
  }
  weights += 8;
}

template <class Activation>
NNLIB_ALWAYS_INLINE void add_tap(const Activation* a, Offset zeropoint, const int16_t*& weights,
                                 int32_t (&sums)[4]) {
  keep(a);
  NNLIB_UNROLL
  for (uint32_t i = 0; i < 4; ++i) {
    sums[i] = wrapping_add(sums[i], weights[i] * (a[i] - zeropoint));
    keep(sums[i]);
  }
  weights += 4;
}

constexpr bool in_words(const int16_t*) {
  return true;
}

inline bool quick_shifts(const int16_t*, uint32_t) {
  return true;
}

template <class Output>
NNLIB_ALWAYS_INLINE void finish_four(const int32_t* multipliers, const int16_t* shifts,
                                     int32_t zeropoint, bool, const int32_t (&sums)[4],
                                     Output* out) {
  NNLIB_UNROLL_FOR_SPEED
  for (uint32_t i = 0; i < 4; ++i) {
    out[i] = saturate<Output>(requantize(sums[i], multipliers[i], shifts[i], zeropoint));
  }
}

#include "kernels/depthwise_fours.hpp"
