/* SPDX-License-Identifier: MIT */
/* Copies a vector. */
#ifndef NNLIB_KERNELS_ARM_COPY_Q7_H
#define NNLIB_KERNELS_ARM_COPY_Q7_H

#include "kernels/arm_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* pDst[i] = pSrc[i] for blockSize elements; the two do not overlap. */
void arm_copy_q7(const q7_t* pSrc, q7_t* pDst, uint32_t blockSize);

#ifdef __cplusplus
}
#endif

#endif
