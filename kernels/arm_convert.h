/* SPDX-License-Identifier: MIT */
/* Conversions between Q7, Q15 and float of numbers without integer bits (7 or 15 fractional bits).
 * Each converts blockSize elements; source and destination do not overlap. */
#ifndef NNLIB_KERNELS_ARM_CONVERT_H
#define NNLIB_KERNELS_ARM_CONVERT_H

#include "kernels/arm_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* pDst[i] = pSrc[i] * 256 */
void arm_q7_to_q15(const q7_t* pSrc, q15_t* pDst, uint32_t blockSize);

/* pDst[i] = the upper byte of pSrc[i] (toward minus infinity, no rounding) */
void arm_q15_to_q7(const q15_t* pSrc, q7_t* pDst, uint32_t blockSize);

/* pDst[i] = pSrc[i] / 128 and / 32768, exact */
void arm_q7_to_float(const q7_t* pSrc, float32_t* pDst, uint32_t blockSize);
void arm_q15_to_float(const q15_t* pSrc, float32_t* pDst, uint32_t blockSize);

/* pDst[i] = pSrc[i] * 128 or * 32768 rounded to nearest, halves away from zero: 0.5 is added to a
 * positive product and subtracted from any other, in float, and the fraction cut off. The Q15 form
 * saturates. The Q7 form keeps the low 16 bits of the integer before it saturates, so that 256.0
 * gives -128 and 512.0 gives 0; only what does not fit 32 bits saturates by its sign. NaN gives 0.
 */
void arm_float_to_q7(const float32_t* pSrc, q7_t* pDst, uint32_t blockSize);
void arm_float_to_q15(const float32_t* pSrc, q15_t* pDst, uint32_t blockSize);

#ifdef __cplusplus
}
#endif

#endif
