/* SPDX-License-Identifier: MIT */
/* Widens 8-bit elements to 16 bits without scaling. */
#ifndef NNLIB_KERNELS_ARM_Q7_TO_Q15_NO_SHIFT_H
#define NNLIB_KERNELS_ARM_Q7_TO_Q15_NO_SHIFT_H

#include "kernels/arm_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* pDst[i] = pSrc[i], sign-extended, for blockSize elements; the two do not overlap. */
void arm_q7_to_q15_no_shift(const q7_t* pSrc, q15_t* pDst, uint32_t blockSize);

#ifdef __cplusplus
}
#endif

#endif
