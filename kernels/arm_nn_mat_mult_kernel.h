/* SPDX-License-Identifier: MIT */
/* Rows of Q7 weights times two columns of 16-bit values. */
#ifndef NNLIB_KERNELS_ARM_NN_MAT_MULT_KERNEL_H
#define NNLIB_KERNELS_ARM_NN_MAT_MULT_KERNEL_H

#include "kernels/arm_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* pOut[p * ch_im_out + r] for p = 0, 1 and every row r of the ch_im_out x numCol_A matrix pA:
 * bias[r] and the product of row r with column p, in the arithmetic of
 * arm_convolve_HWC_q7_basic_nonsquare. pInBuffer holds the two columns of numCol_A values one after
 * the other. Any row count. Returns pOut + 2 * ch_im_out. */
q7_t* arm_nn_mat_mult_kernel_q7_q15(const q7_t* pA, const q15_t* pInBuffer, uint16_t ch_im_out,
                                    uint16_t numCol_A, uint16_t bias_shift, uint16_t out_shift,
                                    const q7_t* bias, q7_t* pOut);

/* The same with columns in the order of arm_q7_to_q15_reordered_no_shift; the weights keep their
 * natural order. */
q7_t* arm_nn_mat_mult_kernel_q7_q15_reordered(const q7_t* pA, const q15_t* pInBuffer,
                                              uint16_t ch_im_out, uint16_t numCol_A,
                                              uint16_t bias_shift, uint16_t out_shift,
                                              const q7_t* bias, q7_t* pOut);

#ifdef __cplusplus
}
#endif

#endif
