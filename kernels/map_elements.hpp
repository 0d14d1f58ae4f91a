// SPDX-License-Identifier: MIT
// Elements through a function, in rounds of some where there are no vectors.
#ifndef NNLIB_KERNELS_MAP_ELEMENTS_HPP
#define NNLIB_KERNELS_MAP_ELEMENTS_HPP

#include <cstdint>

#include "kernels/vector.hpp"

namespace nnlib {

// Elements of a round of the loop; where there are vectors, the compiler's own choice is better.
inline constexpr uint32_t kRound = NNLIB_VECTOR_LANES == 1 && NNLIB_FOR_SPEED ? 8 : 1;

// One after the other: out[i] = function(in[i]). The output may be the input.
template <class In, class Out, class Function>
void map_elements(const In* in, Out* out, uint32_t count, Function function) {
  for (; kRound > 1 && count >= kRound; count -= kRound, in += kRound, out += kRound) {
    NNLIB_UNROLL
    for (uint32_t i = 0; i < kRound; ++i) {
      out[i] = function(in[i]);
    }
  }
  for (const In* stop = in + count; in != stop; ++in, ++out) {
    *out = function(*in);
  }
}

}  // namespace nnlib

#endif
