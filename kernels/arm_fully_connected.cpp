// SPDX-License-Identifier: MIT
#include "kernels/arm_fully_connected.h"

#include "kernels/row_products.hpp"

arm_status arm_fully_connected_mat_q7_vec_q15(const q15_t* pV, const q7_t* pM, uint16_t dim_vec,
                                              uint16_t num_of_rows, uint16_t bias_shift,
                                              uint16_t out_shift, const q7_t* bias, q15_t* pOut,
                                              q15_t* /*vec_buffer*/) {
  const nnlib::FixedRows<q7_t, q15_t> rows{pM, bias, num_of_rows, dim_vec, {bias_shift, out_shift}};
  nnlib::multiply_vector(rows, pV, pOut);
  return ARM_MATH_SUCCESS;
}

arm_status arm_fully_connected_q15(const q15_t* pV, const q15_t* pM, uint16_t dim_vec,
                                   uint16_t num_of_rows, uint16_t bias_shift, uint16_t out_shift,
                                   const q15_t* bias, q15_t* pOut, q15_t* /*vec_buffer*/) {
  const nnlib::FixedRows<q15_t> rows{pM, bias, num_of_rows, dim_vec, {bias_shift, out_shift}};
  nnlib::multiply_vector(rows, pV, pOut);
  return ARM_MATH_SUCCESS;
}
