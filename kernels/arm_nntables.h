/* SPDX-License-Identifier: MIT */
/* Look-up tables of tanh and sigmoid. Entry i is 2^(n-1) * f(x), rounded to nearest and saturated
 * to n signed bits, n = 8 for q7 and 16 for q15. */
#ifndef NNLIB_KERNELS_ARM_NNTABLES_H
#define NNLIB_KERNELS_ARM_NNTABLES_H

#include "kernels/arm_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* x = i / 16, or (i - 256) / 16 from i = 128 on: the index is the low byte of the position */
extern const q7_t tanhTable_q7[256];
extern const q7_t sigmoidTable_q7[256];
extern const q15_t tanhTable_q15[256];
extern const q15_t sigmoidTable_q15[256];

/* The same positions from 32 on: x = (i + 32) / 16 up to i = 95, then (i - 224) / 16 */
extern const q15_t tanhHTable_q15[192];
extern const q15_t sigmoidHTable_q15[192];

/* Around zero, twice as fine: x = i / 32, or (i - 128) / 32 from i = 64 on */
extern const q15_t tanhLTable_q15[128];
extern const q15_t sigmoidLTable_q15[128];

#ifdef __cplusplus
}
#endif

#endif
