// SPDX-License-Identifier: MIT
#include "kernels/arm_convolve_HWC_q15.h"

#include "kernels/fixed_convolution.hpp"

arm_status arm_convolve_HWC_q15_basic(const q15_t* Im_in, uint16_t dim_im_in, uint16_t ch_im_in,
                                      const q15_t* wt, uint16_t ch_im_out, uint16_t dim_kernel,
                                      uint16_t padding, uint16_t stride, const q15_t* bias,
                                      uint16_t bias_shift, uint16_t out_shift, q15_t* Im_out,
                                      uint16_t dim_im_out, q15_t* bufferA, q7_t* /*bufferB*/) {
  const nnlib::FixedConv<q15_t> conv{
      Im_in,
      {dim_im_in, dim_im_in, ch_im_in, ch_im_out, dim_kernel, dim_kernel, padding, padding, stride,
       stride, dim_im_out, dim_im_out},
      wt,
      bias,
      {bias_shift, out_shift},
      Im_out};
  nnlib::convolve_fixed(conv, 1, bufferA);
  return ARM_MATH_SUCCESS;
}

arm_status arm_convolve_HWC_q15_fast(const q15_t* Im_in, uint16_t dim_im_in, uint16_t ch_im_in,
                                     const q15_t* wt, uint16_t ch_im_out, uint16_t dim_kernel,
                                     uint16_t padding, uint16_t stride, const q15_t* bias,
                                     uint16_t bias_shift, uint16_t out_shift, q15_t* Im_out,
                                     uint16_t dim_im_out, q15_t* bufferA, q7_t* /*bufferB*/) {
  if (ch_im_in % 2 != 0 || ch_im_out % 2 != 0) {
    return ARM_MATH_SIZE_MISMATCH;
  }
  const nnlib::FixedConv<q15_t> conv{
      Im_in,
      {dim_im_in, dim_im_in, ch_im_in, ch_im_out, dim_kernel, dim_kernel, padding, padding, stride,
       stride, dim_im_out, dim_im_out},
      wt,
      bias,
      {bias_shift, out_shift},
      Im_out};
  nnlib::convolve_fixed(conv, 2, bufferA);
  return ARM_MATH_SUCCESS;
}
