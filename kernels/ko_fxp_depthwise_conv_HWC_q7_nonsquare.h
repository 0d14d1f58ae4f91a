/* SPDX-License-Identifier: MIT */
/* Q7 depthwise convolution with a channel multiplier. */
#ifndef NNLIB_KERNELS_KO_FXP_DEPTHWISE_CONV_HWC_Q7_NONSQUARE_H
#define NNLIB_KERNELS_KO_FXP_DEPTHWISE_CONV_HWC_Q7_NONSQUARE_H

#include "kernels/arm_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ch_im_out is a multiple m of ch_im_in; output channel c sees input channel c / m. Arguments and
 * arithmetic of arm_convolve_HWC_q7_basic_nonsquare with weights
 * [dim_kernel_y][dim_kernel_x][ch_im_out]. Returns ARM_MATH_SIZE_MISMATCH, having written nothing,
 * when ch_im_out is no multiple. The buffers are not used and may be null. */
arm_status ko_fxp_depthwise_conv_HWC_q7_nonsquare(
    const q7_t* Im_in, uint16_t dim_im_in_x, uint16_t dim_im_in_y, uint16_t ch_im_in,
    const q7_t* wt, uint16_t ch_im_out, uint16_t dim_kernel_x, uint16_t dim_kernel_y,
    uint16_t padding_x, uint16_t padding_y, uint16_t stride_x, uint16_t stride_y, const q7_t* bias,
    uint16_t bias_shift, uint16_t out_shift, q7_t* Im_out, uint16_t dim_im_out_x,
    uint16_t dim_im_out_y, q15_t* bufferA, q7_t* bufferB);

#ifdef __cplusplus
}
#endif

#endif
