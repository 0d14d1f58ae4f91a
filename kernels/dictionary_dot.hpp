// SPDX-License-Identifier: MIT
// Dot products of rows of dictionary indices with one vector.
#ifndef NNLIB_KERNELS_DICTIONARY_DOT_HPP
#define NNLIB_KERNELS_DICTIONARY_DOT_HPP

#include <cstddef>
#include <cstdint>

namespace nnlib {

// Index k of a row of indices of 8 bits, or of 4 bits with the first in the high half of a byte.
template <unsigned Bits>
inline uint8_t dictionary_index(const uint8_t* row, size_t k) {
  static_assert(Bits == 4 || Bits == 8);
  if constexpr (Bits == 8) {
    return row[k];
  } else {
    const unsigned byte = row[k / 2];
    return static_cast<uint8_t>(k % 2 == 0 ? byte >> 4 : byte & 15u);
  }
}

// sums[i] = dictionary[index k of row i] * x[k] summed over k < n, from 0 in order. Rows at a time
// keep the processor busy while each sum waits for its last addition.
template <unsigned Bits, size_t Rows>
void dictionary_dots(float (&sums)[Rows], const uint8_t* indices, size_t row_bytes,
                     const float* dictionary, const float* x, size_t n) {
  constexpr size_t kUnroll = 8;
  float acc[Rows] = {};
  size_t k = 0;
  const auto step = [&](size_t at) {
    for (size_t i = 0; i < Rows; ++i) {
      acc[i] += dictionary[dictionary_index<Bits>(indices + i * row_bytes, at)] * x[at];
    }
  };
  for (; k + kUnroll <= n; k += kUnroll) {
    for (size_t j = 0; j < kUnroll; ++j) {
      step(k + j);
    }
  }
  for (; k < n; ++k) {
    step(k);
  }
  for (size_t i = 0; i < Rows; ++i) {
    sums[i] = acc[i];
  }
}

}  // namespace nnlib

#endif
