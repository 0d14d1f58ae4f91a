// SPDX-License-Identifier: MIT
// Up to four nested loops that move two operands by constant steps. Neighbouring loops that a
// single one can replace are merged, so that the innermost is as long as it can be; the visits and
// their order stay the same.
#ifndef NNLIB_LAYERS_LOOP_NEST_HPP
#define NNLIB_LAYERS_LOOP_NEST_HPP

#include <cstddef>
#include <cstdint>

#include "core/ai_tensor.h"

namespace nnlib {

class LoopNest {
 public:
  struct Loop {
    ptrdiff_t size;
    ptrdiff_t step_a;
    ptrdiff_t step_b;
  };

  // The next loop outwards.
  void add(ptrdiff_t size, ptrdiff_t step_a, ptrdiff_t step_b) {
    if (size == 1) {
      return;
    }
    if (rank_ != 0) {
      Loop& inner = loops_[rank_ - 1];
      if (step_a == inner.size * inner.step_a && step_b == inner.size * inner.step_b) {
        inner.size *= size;
        return;
      }
    }
    loops_[rank_++] = {size, step_a, step_b};
  }

  // Calls run(offset of a, offset of b, innermost loop) for every pass through the innermost loop,
  // if that has a visit.
  template <class Run>
  void for_each_run(Run run) const {
    if (loops_[0].size == 0) {
      return;
    }
    for (ptrdiff_t i3 = 0; i3 < loops_[3].size; ++i3) {
      for (ptrdiff_t i2 = 0; i2 < loops_[2].size; ++i2) {
        for (ptrdiff_t i1 = 0; i1 < loops_[1].size; ++i1) {
          run(i3 * loops_[3].step_a + i2 * loops_[2].step_a + i1 * loops_[1].step_a,
              i3 * loops_[3].step_b + i2 * loops_[2].step_b + i1 * loops_[1].step_b, loops_[0]);
        }
      }
    }
  }

 private:
  uint32_t rank_ = 0;
  Loop loops_[AI_SHAPE_DIMS] = {{1, 0, 0}, {1, 0, 0}, {1, 0, 0}, {1, 0, 0}};
};

}  // namespace nnlib

#endif
