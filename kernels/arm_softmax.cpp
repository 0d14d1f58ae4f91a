// SPDX-License-Identifier: MIT
#include "kernels/arm_softmax.h"

#include <algorithm>

#include "kernels/saturate.hpp"

namespace {

// Window: how far below the largest an element starts to count as zero. one is 2^Shift times the
// quotient that stands for 1.
template <int Window, class T, class Quotient>
void softmax(const T* in, uint16_t count, Quotient one, int shift, T* out) {
  if (count == 0) {
    return;
  }
  const int base = *std::max_element(in, in + count) - Window;
  Quotient sum = 0;
  for (uint32_t i = 0; i < count; ++i) {
    sum += in[i] > base ? Quotient{1} << (in[i] - base) : 0;
  }
  const Quotient quotient = one / sum;
  for (uint32_t i = 0; i < count; ++i) {
    const int exponent = in[i] - base;
    out[i] = exponent > 0 ? nnlib::saturate<T>(static_cast<int32_t>(quotient >> (shift - exponent)))
                          : T{0};
  }
}

}  // namespace

void arm_softmax_q7(const q7_t* vec_in, uint16_t dim_vec, q7_t* p_out) {
  softmax<8>(vec_in, dim_vec, uint32_t{1} << 20, 13, p_out);
}

void arm_softmax_q15(const q15_t* vec_in, uint16_t dim_vec, q15_t* p_out) {
  softmax<16>(vec_in, dim_vec, uint64_t{1} << 32, 17, p_out);
}
