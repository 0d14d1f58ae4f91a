// SPDX-License-Identifier: MIT
// A block of bytes repeated in place.
#ifndef NNLIB_LAYERS_REPEAT_BLOCK_HPP
#define NNLIB_LAYERS_REPEAT_BLOCK_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace nnlib {

// The first bytes of block are there already: writes them count - 1 more times behind. Returns the
// end of the last copy.
inline uint8_t* repeat_block(uint8_t* block, size_t bytes, size_t count) {
  const size_t total = bytes * count;
  size_t copy = 0;
  for (size_t done = bytes; done < total; done += copy) {
    copy = std::min(done, total - done);  // whole blocks: everything so far
    std::memcpy(block + done, block, copy);
  }
  return block + total;
}

}  // namespace nnlib

#endif
