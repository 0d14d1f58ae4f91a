// SPDX-License-Identifier: MIT
#include "kernels/ko_fxp_dense.h"

#include "kernels/arm_q7_to_q15_no_shift.h"
#include "kernels/fixed_mat_mult.hpp"

arm_status ko_fxp_fully_connected_q7(const q7_t* pV, const q7_t* pM, uint16_t dim_vec,
                                     uint16_t num_of_rows, uint16_t bias_shift, uint16_t out_shift,
                                     const q7_t* bias, q7_t* pOut, q15_t* vec_buffer) {
  const nnlib::FixedRows<q7_t> rows{pM, bias, num_of_rows, dim_vec, {bias_shift, out_shift}};
  if (vec_buffer != nullptr) {
    arm_q7_to_q15_no_shift(pV, vec_buffer, dim_vec);
    nnlib::multiply_vector(rows, vec_buffer, pOut);
  } else {
    nnlib::fixed_mat_mult<1>(
        rows, pV, [](uint32_t i) { return i; }, pOut);
  }
  return ARM_MATH_SUCCESS;
}
