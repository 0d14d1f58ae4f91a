/* SPDX-License-Identifier: MIT */
/* Element-wise functions on fixed-point data, 8 or 16 bits by the format of the input.
 *
 * The kernels (ai_nl_func) copy `size` elements from in to out when the two arrays have different
 * data, then work in place on out. A layer (an ai_layer_nl) applies its kernel to as many elements
 * as its input tensor has. The format of the output is not read: relu keeps the fractional bits of
 * the input, tanh and sigmoid give 7 or 15. */
#ifndef NNLIB_LAYERS_QUANTIZED_LAYERS_NL_QUARN_FIXED_H
#define NNLIB_LAYERS_QUANTIZED_LAYERS_NL_QUARN_FIXED_H

#include "layers/layers_nl_generic_float.h"

#ifdef __cplusplus
extern "C" {
#endif

/* max(x, 0) */
void nl_func_relu_array_fixed(ai_array* out, const ai_array* in, ai_size size, const void* params);
void forward_relu_fixed(ai_layer* layer);

/* min(max(x, 0), maximum); params points to the maximum, one number of the width and the fractional
 * bits of the input; without it the function faults. The layer takes it from the start of its
 * parameter array. */
void nl_func_relu_max_array_fixed(ai_array* out, const ai_array* in, ai_size size,
                                  const void* params);
void forward_relu_max_fixed(ai_layer* layer);

/* By the tables of arm_nntables.h, which cover -8 to 8 in steps of 1/16, Q15 interpolated. Data
 * that do not have 3 integer bits are shifted first, saturating: nothing is lost beyond 8. Q7 data
 * with 0 to 2 integer bits need no shift. */
void nl_func_tanh_array_fixed(ai_array* out, const ai_array* in, ai_size size, const void* params);
void forward_tanh_fixed(ai_layer* layer);
void nl_func_sigmoid_array_fixed(ai_array* out, const ai_array* in, ai_size size,
                                 const void* params);
void forward_sigmoid_fixed(ai_layer* layer);

#ifdef __cplusplus
}
#endif

#endif
