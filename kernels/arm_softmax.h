/* SPDX-License-Identifier: MIT */
/* Softmax to the base two over one vector of raw integers: about 2^x[i] / sum of 2^x[j], as a
 * fraction of 128 (Q7) or 32768 (Q15), whatever fractional bits the input has.
 *
 * With e the element minus (the largest element minus 8; Q15: 16) and S the sum of 2^e over the
 * elements with e > 0: 0 where e <= 0, else 2^(7 + e) / S (Q15: 2^(15 + e) / S) toward zero,
 * saturated. So elements that far below the largest count as zero. dim_vec is at most 32767;
 * nothing is written for 0. p_out may be vec_in. */
#ifndef NNLIB_KERNELS_ARM_SOFTMAX_H
#define NNLIB_KERNELS_ARM_SOFTMAX_H

#include "kernels/arm_types.h"

#ifdef __cplusplus
extern "C" {
#endif

void arm_softmax_q7(const q7_t* vec_in, uint16_t dim_vec, q7_t* p_out);
void arm_softmax_q15(const q15_t* vec_in, uint16_t dim_vec, q15_t* p_out);

#ifdef __cplusplus
}
#endif

#endif
