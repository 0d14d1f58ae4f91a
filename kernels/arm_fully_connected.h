/* SPDX-License-Identifier: MIT */
/* Fully connected layers on 16-bit vectors.
 *
 * pOut[r] = saturate((bias[r] * 2^bias_shift + 2^(out_shift - 1) + pM[r] . pV) >> out_shift) for
 * the num_of_rows rows of dim_vec weights, in the arithmetic of
 * arm_convolve_HWC_q7_basic_nonsquare. bias has the type of the weights; null stands for zeros.
 * vec_buffer is not used and may be null. pOut and pV do not overlap. Both return ARM_MATH_SUCCESS.
 */
#ifndef NNLIB_KERNELS_ARM_FULLY_CONNECTED_H
#define NNLIB_KERNELS_ARM_FULLY_CONNECTED_H

#include "kernels/arm_types.h"

#ifdef __cplusplus
extern "C" {
#endif

arm_status arm_fully_connected_mat_q7_vec_q15(const q15_t* pV, const q7_t* pM, uint16_t dim_vec,
                                              uint16_t num_of_rows, uint16_t bias_shift,
                                              uint16_t out_shift, const q7_t* bias, q15_t* pOut,
                                              q15_t* vec_buffer);

arm_status arm_fully_connected_q15(const q15_t* pV, const q15_t* pM, uint16_t dim_vec,
                                   uint16_t num_of_rows, uint16_t bias_shift, uint16_t out_shift,
                                   const q15_t* bias, q15_t* pOut, q15_t* vec_buffer);

#ifdef __cplusplus
}
#endif

#endif
