// SPDX-License-Identifier: MIT
#include "kernels/arm_convolve_HWC_q7_basic_nonsquare.h"

#include "kernels/fixed_convolution.hpp"

arm_status arm_convolve_HWC_q7_basic_nonsquare(
    const q7_t* Im_in, uint16_t dim_im_in_x, uint16_t dim_im_in_y, uint16_t ch_im_in,
    const q7_t* wt, uint16_t ch_im_out, uint16_t dim_kernel_x, uint16_t dim_kernel_y,
    uint16_t padding_x, uint16_t padding_y, uint16_t stride_x, uint16_t stride_y, const q7_t* bias,
    uint16_t bias_shift, uint16_t out_shift, q7_t* Im_out, uint16_t dim_im_out_x,
    uint16_t dim_im_out_y, q15_t* bufferA, q7_t* /*bufferB*/) {
  const nnlib::FixedConv<q7_t> conv{
      Im_in,
      {dim_im_in_x, dim_im_in_y, ch_im_in, ch_im_out, dim_kernel_x, dim_kernel_y, padding_x,
       padding_y, stride_x, stride_y, dim_im_out_x, dim_im_out_y},
      wt,
      bias,
      {bias_shift, out_shift},
      Im_out};
  nnlib::convolve_fixed(conv, 2, bufferA);
  return ARM_MATH_SUCCESS;
}
