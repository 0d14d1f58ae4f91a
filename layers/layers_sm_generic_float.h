/* SPDX-License-Identifier: MIT */
/* Softmax and hardmax along the channels, float32. */
#ifndef NNLIB_LAYERS_LAYERS_SM_GENERIC_FLOAT_H
#define NNLIB_LAYERS_LAYERS_SM_GENERIC_FLOAT_H

#include "core/ai_layer.h"
#include "core/ai_tensor.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Softmax of the `channels` values from in->data on, to out->data; the two may be the same. With m
 * the largest value: out[i] = exp(in[i] - m), the exponential in double precision and rounded, then
 * every out[i] is multiplied by the reciprocal of their sum, formed in index order. */
void nl_func_sm_channel_f32(ai_array* out, const ai_array* in, ai_size channels);

/* nl_func_sm_channel_f32 of `size` values as one group, with the signature of an ai_nl_func: for
 * the nonlinearity of a fused layer. params is not used. */
void nl_func_sm_group_array_f32(ai_array* out, const ai_array* in, ai_size size,
                                const void* params);

/* Softmax of each group of `channels` values, from the last group, which starts in_stride elements
 * before in->data + size, down to in->data_start; out likewise with out_stride. Moves both arrays'
 * data pointers and leaves them at their data_start. */
void nl_func_sm_array_f32(ai_array* out, ai_array* in, ai_size size, ai_size channels,
                          ai_size in_stride, ai_size out_stride);

/* Layer type SM: softmax of every pixel of the input. The strides are the channels of the input and
 * of the output. Both arrays' data pointers end up at their data_start. */
void forward_sm(ai_layer* layer);

/* Of each group of shape[C] values among the first shape[C] * shape[H], 1 for the first of the
 * largest and 0 for the others. The width takes no part: tensors have width 1. The output may
 * be the input. */
void nl_func_hardmax_array_f32(ai_array* out, const ai_array* in, const ai_shape* in_shape);

/* Layer type NL: nl_func_hardmax_array_f32 by the shape of the input. */
void forward_hardmax(ai_layer* layer);

#ifdef __cplusplus
}
#endif

#endif
