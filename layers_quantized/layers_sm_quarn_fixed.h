/* SPDX-License-Identifier: MIT */
/* Softmax to the base two along the channels of fixed-point maps. */
#ifndef NNLIB_LAYERS_QUANTIZED_LAYERS_SM_QUARN_FIXED_H
#define NNLIB_LAYERS_QUANTIZED_LAYERS_SM_QUARN_FIXED_H

#include "core/ai_layer.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Layer type SM: arm_softmax_q7 or arm_softmax_q15, by the bits of the input, of every pixel. The
 * input counts as raw integers, the output has 7 or 15 fractional bits whatever its format says. */
void forward_sm_fixed(ai_layer* layer);

/* The softmax of `size` values as one group: an ai_nl_func for a fused layer. params is not used.
 */
void sm_func_sm_array_fixed(ai_array* out, const ai_array* in, ai_size size, const void* params);

#ifdef __cplusplus
}
#endif

#endif
