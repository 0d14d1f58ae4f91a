/* SPDX-License-Identifier: MIT */
/* Element-wise functions on fixed-point data, in place. */
#ifndef NNLIB_KERNELS_KO_FXP_NL_H
#define NNLIB_KERNELS_KO_FXP_NL_H

#include "kernels/arm_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* data[i] = max(data[i], 0) */
void ko_fxp_relu_q7(q7_t* data, uint32_t count);
void ko_fxp_relu_q15(q15_t* data, uint32_t count);

/* Tanh (type not 0) or sigmoid (type 0) of numbers with int_width integer bits, from the tables of
 * arm_nntables.h; the result has 7 or 15 fractional bits.
 *
 * int_width is 0 to 3; more counts as 3.
 *
 * Q7: data[i] = table[low byte of (data[i] >> (3 - int_width))].
 *
 * Q15: linear between the entries, with s = 11 - int_width, u the element as an unsigned number and
 * f its low s bits: data[i] = (table[u >> s] * (2^s - f) + next * f) >> s, next being the entry
 * that follows but for entries 127 and 255, which are followed by themselves. With int_width below
 * 3 this is right only for data that are not negative; the layers bring their data to 3 first. */
void ko_fxp_nn_activations_direct_q7(q7_t* data, uint32_t count, uint16_t int_width, uint16_t type);
void ko_fxp_nn_activations_direct_q15(q15_t* data, uint32_t count, uint16_t int_width,
                                      uint16_t type);

#ifdef __cplusplus
}
#endif

#endif
