/* SPDX-License-Identifier: MIT */
/* Element-wise functions of 8-bit integer maps: layers of type NL.
 *
 * The sign of the input array's format tells uint8 from int8 elements. The output may be the input.
 * A layer takes its parameter bytes from nl_params and applies its function to as many elements as
 * the shape of its input tensor has. Without parameters a function faults. */
#ifndef NNLIB_LAYERS_QUANTIZED_LAYERS_NL_QUARN_INTEGER_H
#define NNLIB_LAYERS_QUANTIZED_LAYERS_NL_QUARN_INTEGER_H

#include "layers/layers_nl_generic_float.h"

#ifdef __cplusplus
extern "C" {
#endif

/* params {p0}, in the elements' type: max(x, p0). */
void nl_func_relu_array_integer(ai_array* out, const ai_array* in, ai_size size,
                                const void* params);

/* params {p0, p1}, in the elements' type: min(max(x, p0), p1). */
void nl_func_clip_array_integer(ai_array* out, const ai_array* in, ai_size size,
                                const void* params);

/* params: the results of all 256 inputs, from the least on: -128 for int8. */
void nl_func_array_integer(ai_array* out, const ai_array* in, ai_size size, const void* params);

void forward_relu_integer(ai_layer* layer); /* all: an ai_layer_nl */
void forward_clip_integer(ai_layer* layer);
void forward_nl_integer(ai_layer* layer);

#ifdef __cplusplus
}
#endif

#endif
