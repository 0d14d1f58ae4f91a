/* SPDX-License-Identifier: MIT */
/* Widens 8-bit elements to 16 bits in the interleaved order of the reordered matrix kernels. */
#ifndef NNLIB_KERNELS_ARM_Q7_TO_Q15_REORDERED_NO_SHIFT_H
#define NNLIB_KERNELS_ARM_Q7_TO_Q15_REORDERED_NO_SHIFT_H

#include "kernels/arm_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Sign-extends blockSize elements. Within each complete group of four, source elements 0, 1, 2, 3
 * land in the order 0, 2, 1, 3; the last blockSize mod 4 keep theirs. The two do not overlap. */
void arm_q7_to_q15_reordered_no_shift(const q7_t* pSrc, q15_t* pDst, uint32_t blockSize);

#ifdef __cplusplus
}
#endif

#endif
