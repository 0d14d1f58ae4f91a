/* SPDX-License-Identifier: MIT */
/* Q15 convolution of square maps with square kernels: the arithmetic and the layouts of
 * arm_convolve_HWC_q7_basic_nonsquare, saturated to 16 bits, with a Q15 bias. The accumulator has
 * 32 bits here too and wraps: inputs and weights need the headroom. bufferB is not used. */
#ifndef NNLIB_KERNELS_ARM_CONVOLVE_HWC_Q15_H
#define NNLIB_KERNELS_ARM_CONVOLVE_HWC_Q15_H

#include "kernels/arm_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Any channel counts. bufferA: dim_kernel * dim_kernel * ch_im_in elements. Returns
 * ARM_MATH_SUCCESS. */
arm_status arm_convolve_HWC_q15_basic(const q15_t* Im_in, uint16_t dim_im_in, uint16_t ch_im_in,
                                      const q15_t* wt, uint16_t ch_im_out, uint16_t dim_kernel,
                                      uint16_t padding, uint16_t stride, const q15_t* bias,
                                      uint16_t bias_shift, uint16_t out_shift, q15_t* Im_out,
                                      uint16_t dim_im_out, q15_t* bufferA, q7_t* bufferB);

/* The same values. Returns ARM_MATH_SIZE_MISMATCH, having written nothing, unless both channel
 * counts are even. bufferA: 2 * dim_kernel * dim_kernel * ch_im_in elements. */
arm_status arm_convolve_HWC_q15_fast(const q15_t* Im_in, uint16_t dim_im_in, uint16_t ch_im_in,
                                     const q15_t* wt, uint16_t ch_im_out, uint16_t dim_kernel,
                                     uint16_t padding, uint16_t stride, const q15_t* bias,
                                     uint16_t bias_shift, uint16_t out_shift, q15_t* Im_out,
                                     uint16_t dim_im_out, q15_t* bufferA, q7_t* bufferB);

#ifdef __cplusplus
}
#endif

#endif
