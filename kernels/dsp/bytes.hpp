// SPDX-License-Identifier: MIT
// Functions of four bytes at a time.

#include "kernels/scalar/look_up.hpp"

// function: of a word; the bytes behind the last whole word pass through a word as well.
template <class T, class Function>
NNLIB_ALWAYS_INLINE void map_words(const T* in, uint32_t count, T* out, const Function& function) {
  for (; count >= 4; count -= 4, in += 4, out += 4) {
    dsp::store_word(out, function(dsp::load_word(in)));
  }
  if (count != 0) {
    uint32_t word = 0;
    std::memcpy(&word, in, count);
    word = function(word);
    std::memcpy(out, &word, count);
  }
}

// max(x, low)
template <class T>
void raise_bytes(const T* in, uint32_t count, T low, T* out) {
  const uint32_t lows = dsp::four_times(low);
  map_words(in, count, out, [=](uint32_t word) { return dsp::greater_lanes<T>(word, lows); });
}

// min(max(x, low), high)
template <class T>
void clip_bytes(const T* in, uint32_t count, T low, T high, T* out) {
  const uint32_t lows = dsp::four_times(low);
  const uint32_t highs = dsp::four_times(high);
  map_words(in, count, out, [=](uint32_t word) {
    return dsp::lesser_lanes<T>(dsp::greater_lanes<T>(word, lows), highs);
  });
}
