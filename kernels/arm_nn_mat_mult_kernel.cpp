// SPDX-License-Identifier: MIT
#include "kernels/arm_nn_mat_mult_kernel.h"

#include "kernels/fixed_mat_mult.hpp"
#include "kernels/reorder.hpp"

q7_t* arm_nn_mat_mult_kernel_q7_q15(const q7_t* pA, const q15_t* pInBuffer, uint16_t ch_im_out,
                                    uint16_t numCol_A, uint16_t bias_shift, uint16_t out_shift,
                                    const q7_t* bias, q7_t* pOut) {
  const nnlib::FixedRows<q7_t> rows{pA, bias, ch_im_out, numCol_A, {bias_shift, out_shift}};
  nnlib::multiply_vector(rows, pInBuffer, pOut);
  nnlib::multiply_vector(rows, pInBuffer + numCol_A, pOut + ch_im_out);
  return pOut + 2 * size_t{ch_im_out};
}

q7_t* arm_nn_mat_mult_kernel_q7_q15_reordered(const q7_t* pA, const q15_t* pInBuffer,
                                              uint16_t ch_im_out, uint16_t numCol_A,
                                              uint16_t bias_shift, uint16_t out_shift,
                                              const q7_t* bias, q7_t* pOut) {
  const nnlib::FixedRows<q7_t> rows{pA, bias, ch_im_out, numCol_A, {bias_shift, out_shift}};
  nnlib::fixed_mat_mult<2>(
      rows, pInBuffer, [numCol_A](uint32_t i) { return nnlib::reordered(i, numCol_A); }, pOut);
  return pOut + 2 * size_t{ch_im_out};
}
