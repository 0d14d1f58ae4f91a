// SPDX-License-Identifier: MIT
#include "kernels/arm_q7_to_q15_reordered_no_shift.h"

#include "kernels/reorder.hpp"

void arm_q7_to_q15_reordered_no_shift(const q7_t* pSrc, q15_t* pDst, uint32_t blockSize) {
  nnlib::copy_reordered(pSrc, pDst, blockSize, [](q7_t element) { return q15_t{element}; });
}
