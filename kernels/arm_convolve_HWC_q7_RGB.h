/* SPDX-License-Identifier: MIT */
/* Q7 convolution of a square image of three channels. */
#ifndef NNLIB_KERNELS_ARM_CONVOLVE_HWC_Q7_RGB_H
#define NNLIB_KERNELS_ARM_CONVOLVE_HWC_Q7_RGB_H

#include "kernels/arm_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The values of arm_convolve_HWC_q7_basic_nonsquare with the same sizes in both directions. Returns
 * ARM_MATH_SIZE_MISMATCH, having written nothing, unless ch_im_in is 3.
 * bufferA: 2 * 3 * dim_kernel * dim_kernel elements. */
arm_status arm_convolve_HWC_q7_RGB(const q7_t* Im_in, uint16_t dim_im_in, uint16_t ch_im_in,
                                   const q7_t* wt, uint16_t ch_im_out, uint16_t dim_kernel,
                                   uint16_t padding, uint16_t stride, const q7_t* bias,
                                   uint16_t bias_shift, uint16_t out_shift, q7_t* Im_out,
                                   uint16_t dim_im_out, q15_t* bufferA, q7_t* bufferB);

#ifdef __cplusplus
}
#endif

#endif
