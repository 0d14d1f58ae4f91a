/* SPDX-License-Identifier: MIT */
/* Q7 convolution, any sizes.
 *
 * Maps are HWC: element (x, y, c) of a map of width W with C channels is number (y * W + x) * C +
 * c. Weights are [ch_im_out][dim_kernel_y][dim_kernel_x][ch_im_in]. padding_x is on the left,
 * padding_y at the top; taps outside the map do not count, and what lies beyond the other edges
 * follows from the output size. Each output is
 *
 *   saturate((bias * 2^bias_shift + 2^(out_shift - 1) + sum of products) >> out_shift)
 *
 * without the second term when out_shift is 0, in 32 bits that wrap: rounded to nearest, halves
 * toward plus infinity. bias has one value for each output channel in the type of the weights; null
 * stands for zeros. bias_shift is at most 31, out_shift at most 30. Maps, weights and bias do not
 * overlap. The other convolution kernels follow this text. */
#ifndef NNLIB_KERNELS_ARM_CONVOLVE_HWC_Q7_BASIC_NONSQUARE_H
#define NNLIB_KERNELS_ARM_CONVOLVE_HWC_Q7_BASIC_NONSQUARE_H

#include "kernels/arm_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* bufferA: 2 * dim_kernel_x * dim_kernel_y * ch_im_in elements; bufferB is not used and may be
 * null. Returns ARM_MATH_SUCCESS. */
arm_status arm_convolve_HWC_q7_basic_nonsquare(
    const q7_t* Im_in, uint16_t dim_im_in_x, uint16_t dim_im_in_y, uint16_t ch_im_in,
    const q7_t* wt, uint16_t ch_im_out, uint16_t dim_kernel_x, uint16_t dim_kernel_y,
    uint16_t padding_x, uint16_t padding_y, uint16_t stride_x, uint16_t stride_y, const q7_t* bias,
    uint16_t bias_shift, uint16_t out_shift, q7_t* Im_out, uint16_t dim_im_out_x,
    uint16_t dim_im_out_y, q15_t* bufferA, q7_t* bufferB);

#ifdef __cplusplus
}
#endif

#endif
