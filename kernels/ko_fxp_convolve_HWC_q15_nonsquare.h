/* SPDX-License-Identifier: MIT */
/* Q15 convolution, any sizes. */
#ifndef NNLIB_KERNELS_KO_FXP_CONVOLVE_HWC_Q15_NONSQUARE_H
#define NNLIB_KERNELS_KO_FXP_CONVOLVE_HWC_Q15_NONSQUARE_H

#include "kernels/arm_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The values of arm_convolve_HWC_q15_basic for any shapes; arguments as those of
 * arm_convolve_HWC_q7_basic_nonsquare.
 * bufferA: 2 * dim_kernel_x * dim_kernel_y * ch_im_in elements. Returns ARM_MATH_SUCCESS. */
arm_status ko_fxp_convolve_HWC_q15_nonsquare(
    const q15_t* Im_in, uint16_t dim_im_in_x, uint16_t dim_im_in_y, uint16_t ch_im_in,
    const q15_t* wt, uint16_t ch_im_out, uint16_t dim_kernel_x, uint16_t dim_kernel_y,
    uint16_t padding_x, uint16_t padding_y, uint16_t stride_x, uint16_t stride_y, const q15_t* bias,
    uint16_t bias_shift, uint16_t out_shift, q15_t* Im_out, uint16_t dim_im_out_x,
    uint16_t dim_im_out_y, q15_t* bufferA, q7_t* bufferB);

#ifdef __cplusplus
}
#endif

#endif
