/* SPDX-License-Identifier: MIT */
/* Weights stored as indices of 4 or 8 bits into a dictionary of 16 or 256 floats.
 *
 * 4-bit indices lie two in a byte, the first in the high half; of an odd number the last one is the
 * high half of a byte of its own.
 */
#ifndef NNLIB_KERNELS_AI_DICTIONARY_H
#define NNLIB_KERNELS_AI_DICTIONARY_H

#include <stdint.h>

#include "core/ai_tensor.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Adds dictionary[index of k] * x[k] over k < n to *acc. The sum is formed first, from 0 in index
 * order, and then added. */
void ai_dict8_dot_array_f32(float* acc, const uint8_t* indices, const float* dictionary,
                            const float* x, ai_size n);
void ai_dict4_dot_array_f32(float* acc, const uint8_t* indices, const float* dictionary,
                            const float* x, ai_size n);

/* Expands count values. With bits 4 every row of row_len values starts on a byte of its own; bits 8
 * has no rows; any other number of bits expands nothing. */
void ai_dict_decompress_f32(float* out, const uint8_t* indices, const float* dictionary,
                            uint32_t bits, ai_size row_len, ai_size count);

#ifdef __cplusplus
}
#endif

#endif
