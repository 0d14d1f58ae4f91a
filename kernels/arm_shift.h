/* SPDX-License-Identifier: MIT */
/* Shifts a vector by a signed number of bits. */
#ifndef NNLIB_KERNELS_ARM_SHIFT_H
#define NNLIB_KERNELS_ARM_SHIFT_H

#include "kernels/arm_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* pDst[i] = pSrc[i] shifted left by shiftBits and saturated, or, for a negative count, shifted
 * right arithmetically without rounding (-1 stays -1), for blockSize elements. Every count is
 * defined: beyond the element width a left shift saturates all but 0 and a right shift leaves the
 * sign. pDst may be pSrc but not overlap it otherwise. */
void arm_shift_q7(const q7_t* pSrc, int8_t shiftBits, q7_t* pDst, uint32_t blockSize);
void arm_shift_q15(const q15_t* pSrc, int8_t shiftBits, q15_t* pDst, uint32_t blockSize);

#ifdef __cplusplus
}
#endif

#endif
