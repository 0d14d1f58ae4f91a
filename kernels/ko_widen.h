/* SPDX-License-Identifier: MIT */
/* Widening of 8-bit values to 16 bits, and filling. A count of 0 writes nothing. */
#ifndef NNLIB_KERNELS_KO_WIDEN_H
#define NNLIB_KERNELS_KO_WIDEN_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* In the same order. */
void ko_uint8_to16_no_shift(const uint8_t* source, int16_t* destination, uint32_t count);

/* In the order of arm_q7_to_q15_reordered_no_shift: of each complete group of four the elements 0,
 * 2, 1, 3; the last count % 4 as they are. */
void ko_uint8_reordered_no_shift(const uint8_t* source, int16_t* destination, uint32_t count);
void ko_int8_reordered_no_shift(const int8_t* source, int16_t* destination, uint32_t count);

/* The same less the zero point. packed_zeropoint is the zero point in both halves of a word, for
 * cores that subtract two values at a time; the results follow from zeropoint alone. */
void ko_uint8_reordered_no_shift_zero(const uint8_t* source, int16_t* destination, uint32_t count,
                                      uint32_t packed_zeropoint, uint8_t zeropoint);
void ko_int8_reordered_no_shift_zero(const int8_t* source, int16_t* destination, uint32_t count,
                                     uint32_t packed_zeropoint, int8_t zeropoint);

void ko_uint8_fill(uint8_t value, uint8_t* destination, uint32_t count);

#ifdef __cplusplus
}
#endif

#endif
