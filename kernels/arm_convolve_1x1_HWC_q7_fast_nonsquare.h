/* SPDX-License-Identifier: MIT */
/* Q7 convolution with a 1x1 kernel. */
#ifndef NNLIB_KERNELS_ARM_CONVOLVE_1X1_HWC_Q7_FAST_NONSQUARE_H
#define NNLIB_KERNELS_ARM_CONVOLVE_1X1_HWC_Q7_FAST_NONSQUARE_H

#include "kernels/arm_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The same values and arguments as arm_convolve_HWC_q7_basic_nonsquare. Returns
 * ARM_MATH_SIZE_MISMATCH, having written nothing, unless ch_im_in is divisible by 4, ch_im_out is
 * even, both kernel sizes and both strides are 1 and both paddings are 0.
 * bufferA: 2 * ch_im_in elements. */
arm_status arm_convolve_1x1_HWC_q7_fast_nonsquare(
    const q7_t* Im_in, uint16_t dim_im_in_x, uint16_t dim_im_in_y, uint16_t ch_im_in,
    const q7_t* wt, uint16_t ch_im_out, uint16_t dim_kernel_x, uint16_t dim_kernel_y,
    uint16_t padding_x, uint16_t padding_y, uint16_t stride_x, uint16_t stride_y, const q7_t* bias,
    uint16_t bias_shift, uint16_t out_shift, q7_t* Im_out, uint16_t dim_im_out_x,
    uint16_t dim_im_out_y, q15_t* bufferA, q7_t* bufferB);

#ifdef __cplusplus
}
#endif

#endif
