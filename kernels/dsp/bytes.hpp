// SPDX-License-Identifier: MIT
// Functions of four bytes at a time.

#include "kernels/scalar/keep.hpp"
#include "kernels/scalar/look_up.hpp"

// max(x, low)
template <class T>
void raise_bytes(const T* in, uint32_t count, T low, T* out) {
  const uint32_t lows = dsp::four_times(low);
  map_words(in, out, count, [=](uint32_t word) { return dsp::greater_lanes<T>(word, lows); });
}

// min(max(x, low), high)
template <class T>
void clip_bytes(const T* in, uint32_t count, T low, T high, T* out) {
  const uint32_t lows = dsp::four_times(low);
  const uint32_t highs = dsp::four_times(high);
  map_words(in, out, count, [=](uint32_t word) {
    return dsp::lesser_lanes<T>(dsp::greater_lanes<T>(word, lows), highs);
  });
}
