// SPDX-License-Identifier: MIT
// The interleaved order of the reordered matrix kernels.
#ifndef NNLIB_KERNELS_REORDER_HPP
#define NNLIB_KERNELS_REORDER_HPP

#include <cstdint>

namespace nnlib {

// Copies count elements, changed by op, with each complete group of four in the order 0, 2, 1, 3:
// a core with 16-bit lanes unpacks four bytes of a word into the even and the odd ones, and a
// column in this order meets weights unpacked so. The order is its own inverse.
template <class Source, class Destination, class Op>
void copy_reordered(const Source* source, Destination* destination, uint32_t count, Op op) {
  uint32_t i = 0;
  for (; count - i >= 4; i += 4) {
    destination[i] = op(source[i]);
    destination[i + 1] = op(source[i + 2]);
    destination[i + 2] = op(source[i + 1]);
    destination[i + 3] = op(source[i + 3]);
  }
  for (; i < count; ++i) {
    destination[i] = op(source[i]);
  }
}

// The natural position of the element at a position of a reordered column.
constexpr uint32_t reordered(uint32_t position, uint32_t count) {
  const bool moves = position < (count & ~3u) && ((position + 1) & 2) != 0;
  return moves ? position ^ 3 : position;
}

}  // namespace nnlib

#endif
