// SPDX-License-Identifier: MIT
#include "kernels/arm_fill_q15.h"

#include <algorithm>

void arm_fill_q15(q15_t value, q15_t* pDst, uint32_t blockSize) {
  std::fill_n(pDst, blockSize, value);
}
