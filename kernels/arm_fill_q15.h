/* SPDX-License-Identifier: MIT */
/* Fills a vector with one value. */
#ifndef NNLIB_KERNELS_ARM_FILL_Q15_H
#define NNLIB_KERNELS_ARM_FILL_Q15_H

#include "kernels/arm_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* pDst[i] = value for blockSize elements. The value comes first. */
void arm_fill_q15(q15_t value, q15_t* pDst, uint32_t blockSize);

#ifdef __cplusplus
}
#endif

#endif
