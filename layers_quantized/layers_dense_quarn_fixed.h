/* SPDX-License-Identifier: MIT */
/* Fully connected layer on fixed-point data. */
#ifndef NNLIB_LAYERS_QUANTIZED_LAYERS_DENSE_QUARN_FIXED_H
#define NNLIB_LAYERS_QUANTIZED_LAYERS_DENSE_QUARN_FIXED_H

#include "core/ai_layer.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Layer type DENSE. Input 0 of n values (shape[C]) for each position, output 0 of m values for each
 * of its W x H positions, weights 0 (n, m, 1, 1), weights 1 the optional bias of m values. Formats
 * (input, weights and bias, output): Q7 throughout, Q15 throughout, or Q15 with Q7 weights and
 * bias. Any other widths hang.
 *
 * The sum of products has fi + fw fractional bits, those of input and weights together; the bias is
 * shifted left to that scale, the sum right to that of the output, rounded to nearest with halves
 * going up and saturated. An output with more fractional bits than the sum is computed without
 * shift and then shifted left, saturating. The bias must not have more fractional bits than the
 * sum. */
void forward_dense_fixed(ai_layer* layer);

/* BYTES of scratch 0, 0 for Q15 input. Like all scratch sizes the same on a PC and on the target.
 */
ai_size ai_dense_fixed_scratch_size(const ai_layer* layer);

/* The same for Q7 input as a constant, for static arrays. */
#define AI_DENSE_FIXED_SCRATCH_BYTES(n_in) (2u * (n_in))

#ifdef __cplusplus
}
#endif

#endif
