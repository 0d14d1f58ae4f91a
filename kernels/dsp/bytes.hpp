// SPDX-License-Identifier: MIT
// Functions of four bytes at a time.

#include "kernels/scalar/keep.hpp"
#if NNLIB_FOR_SPEED
#include "kernels/scalar/look_up.hpp"
#else
// Each element x becomes table[x], counted from the least x on: with its highest bit turned where x
// is signed.
inline void look_up_words(const uint8_t* in, const uint8_t* table, uint32_t count, uint8_t* out,
                          uint32_t least) {
  map_whole_words(in, out, count, [=](uint32_t word) {
    word ^= least;
    return uint32_t{table[word & 255]} | uint32_t{table[word >> 8 & 255]} << 8 |
           uint32_t{table[word >> 16 & 255]} << 16 | uint32_t{table[word >> 24]} << 24;
  });
  for (; count != 0; --count) {
    *out++ = table[*in++ ^ (least & 255)];
  }
}

template <class T>
void look_up_bytes(const T* in, const T* table, uint32_t count, T* out) {
  look_up_words(reinterpret_cast<const uint8_t*>(in), reinterpret_cast<const uint8_t*>(table),
                count, reinterpret_cast<uint8_t*>(out),
                dsp::four_times(std::numeric_limits<T>::min()));
}
#endif

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
