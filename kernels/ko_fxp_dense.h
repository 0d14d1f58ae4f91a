/* SPDX-License-Identifier: MIT */
/* Fully connected layer on Q7 vectors. */
#ifndef NNLIB_KERNELS_KO_FXP_DENSE_H
#define NNLIB_KERNELS_KO_FXP_DENSE_H

#include "kernels/arm_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The arguments and the arithmetic of arm_fully_connected.h, saturated to Q7. vec_buffer, dim_vec
 * elements, makes it faster and may be null. Returns ARM_MATH_SUCCESS. */
arm_status ko_fxp_fully_connected_q7(const q7_t* pV, const q7_t* pM, uint16_t dim_vec,
                                     uint16_t num_of_rows, uint16_t bias_shift, uint16_t out_shift,
                                     const q7_t* bias, q7_t* pOut, q15_t* vec_buffer);

#ifdef __cplusplus
}
#endif

#endif
