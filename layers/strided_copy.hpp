// SPDX-License-Identifier: MIT
// Element copies between two strided buffers, as bytes, so for every element type and alignment.
#ifndef NNLIB_LAYERS_STRIDED_COPY_HPP
#define NNLIB_LAYERS_STRIDED_COPY_HPP

#include <cstring>

#include "layers/loop_nest.hpp"

namespace nnlib {

template <size_t Bytes>
void copy_elements(uint8_t* to, const uint8_t* from, const LoopNest::Loop& loop) {
  for (ptrdiff_t i = 0; i < loop.size; ++i) {
    std::memcpy(to + i * loop.step_a, from + i * loop.step_b, Bytes);
  }
}

// The loops' operands are to (a) and from (b), their steps in bytes.
inline void strided_copy(uint8_t* to, const uint8_t* from, const LoopNest& loops,
                         ptrdiff_t element) {
  loops.for_each_run([=](ptrdiff_t to_offset, ptrdiff_t from_offset, const LoopNest::Loop& loop) {
    uint8_t* const run_to = to + to_offset;
    const uint8_t* const run_from = from + from_offset;
    if (loop.step_a == element && loop.step_b == element) {
      std::memcpy(run_to, run_from, static_cast<size_t>(loop.size * element));
    } else if (element == 1) {
      copy_elements<1>(run_to, run_from, loop);
    } else if (element == 2) {
      copy_elements<2>(run_to, run_from, loop);
    } else if (element == 4) {
      copy_elements<4>(run_to, run_from, loop);
    } else {
      for (ptrdiff_t i = 0; i < loop.size; ++i) {
        std::memcpy(run_to + i * loop.step_a, run_from + i * loop.step_b,
                    static_cast<size_t>(element));
      }
    }
  });
}

}  // namespace nnlib

#endif
