// SPDX-License-Identifier: MIT
#include "kernels/arm_q7_to_q15_no_shift.h"

#include <algorithm>

void arm_q7_to_q15_no_shift(const q7_t* pSrc, q15_t* pDst, uint32_t blockSize) {
  std::copy_n(pSrc, blockSize, pDst);
}
