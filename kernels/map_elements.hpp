// SPDX-License-Identifier: MIT
// Elements through a function, in rounds of some where there are no vectors.
#ifndef NNLIB_KERNELS_MAP_ELEMENTS_HPP
#define NNLIB_KERNELS_MAP_ELEMENTS_HPP

#include <cstdint>
#include <cstring>

#include "kernels/vector.hpp"

namespace nnlib {

// Elements of a round of the loop; where there are vectors, the compiler's own choice is better.
inline constexpr uint32_t kRound = NNLIB_VECTOR_LANES == 1 && NNLIB_FOR_SPEED ? 8 : 1;

// One after the other: out[i] = function(in[i]). The output may be the input. (For size, a loop
// that ends with its condition takes one branch a round.)
template <class In, class Out, class Function>
void map_elements(const In* in, Out* out, uint32_t count, Function function) {
  for (; kRound > 1 && count >= kRound; count -= kRound, in += kRound, out += kRound) {
    NNLIB_UNROLL
    for (uint32_t i = 0; i < kRound; ++i) {
      out[i] = function(in[i]);
    }
  }
  if (count != 0) {
    const In* stop = in + count;
    do {
      *out++ = function(*in++);
    } while (in != stop);
  }
}

// The same for bytes, four at a time, by a function of a word; leaves those behind the last whole
// word.
template <class T, class Function>
NNLIB_ALWAYS_INLINE void map_whole_words(const T*& in, T*& out, uint32_t& count,
                                         Function function) {
  if (count >= sizeof(uint32_t)) {
    const T* stop = in + count / sizeof(uint32_t) * sizeof(uint32_t);
    do {
      uint32_t word;
      std::memcpy(&word, in, sizeof(word));
      word = function(word);
      std::memcpy(out, &word, sizeof(word));
      in += sizeof(word);
      out += sizeof(word);
    } while (in != stop);
  }
  count %= sizeof(uint32_t);
}

// Those pass through a word as well.
template <class T, class Function>
NNLIB_ALWAYS_INLINE void map_words(const T* in, T* out, uint32_t count, Function function) {
  map_whole_words(in, out, count, function);
  if (count != 0) {
    uint32_t word = 0;
    std::memcpy(&word, in, count);
    word = function(word);
    std::memcpy(out, &word, count);
  }
}

}  // namespace nnlib

#endif
