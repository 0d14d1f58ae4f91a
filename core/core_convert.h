/* SPDX-License-Identifier: MIT */
/* Format conversion layers: float, fixed point (Q) and quantized 8-bit integers.
 *
 * List 0 tensor 0 is the input, list 1 tensor 0 the output; the elements of the input's shape are
 * converted, one by one, and nothing else of the output's shape is read. A chain with fewer than
 * two lists faults. Formats are those of the arrays; the widths of fixed point are 8 and 16 bits. A
 * tensor without quantization record is fixed point, q standing for q / 2^fbits; one with a record
 * is an 8-bit integer, q standing for (q - zero point) * scale of entry 0, both 0 when the record
 * has no entry. Values out of range saturate, NaN becomes 0.
 */
#ifndef NNLIB_CORE_CORE_CONVERT_H
#define NNLIB_CORE_CORE_CONVERT_H

#include "core/ai_layer.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Float to any of the others, or, when the input is not float, the reverse.
 *
 * To fixed point: rounded to nearest, halves away from zero, by arm_float_to_q7 or arm_float_to_q15
 * (what they do far out of range included). When the output has integer bits, the INPUT buffer is
 * multiplied by 2^-(integer bits) in place and stays so.
 *
 * To int8: x / scale + zero point, rounded to nearest, halves away from zero. To uint8:
 * x / scale + (zero point + 0.5) cut off, so halves go up. All in single precision. */
void node_convert(ai_layer* layer);

/* Fixed point to fixed point. With s = integer bits of the input - integer bits of the output: a
 * left shift by s > 0 saturates and is done before the width changes, a right shift does not round
 * and is done after it. A left shift with a change of width is done in place on the INPUT buffer.
 * Nothing at all is written when width and integer bits agree: input and output are then meant to
 * be one buffer. */
void node_convert_fixed(ai_layer* layer);

/* uint8 to int8 or back: the zero point moves by 128, so the top bit of every byte is inverted.
 * Quantization records are not read. */
void node_convert_integer(ai_layer* layer);

#ifdef __cplusplus
}
#endif

#endif
