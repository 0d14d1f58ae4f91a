/* SPDX-License-Identifier: MIT */
/* Dense and addition layers of 8-bit integer tensors. */
#ifndef NNLIB_LAYERS_QUANTIZED_LAYERS_QUARN_INTEGER_H
#define NNLIB_LAYERS_QUANTIZED_LAYERS_QUARN_INTEGER_H

#include "core/ai_layer.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Fully connected, layer type DENSE. Input 0 (1, n_in, W, H), output 0 (1, n_out, W, H), weights 0
 * (n_in, n_out, 1, 1): a row of n_in for each output; weights 1 the optional int32 bias. Every
 * position is computed from the input's same position. Types, quantization and hanging as in
 * layers_conv2d_quarn_integer.h.
 *
 * Scratch 0, ai_dense_integer_scratch_size bytes aligned to 4 (else the function faults), contents
 * of no matter, may be absent with a single weight scale: the layer is then slower. */
void forward_dense_integer(ai_layer* layer);

/* Bytes of scratch that serve the layer. */
ai_size ai_dense_integer_scratch_size(const ai_layer* layer);

/* Element-wise addition, layer type ELTWISE or ADD: inputs 0 and 1, of which dimensions of size 1
 * stretch to those of the other (limits in core/core_broadcast.h), output 0 of the size of both
 * together. All three have the type of input 0, uint8 or int8, each its own scale and zero point;
 * rounding as kernels/ko_add.h says. */
void forward_add_integer(ai_layer* layer);

#ifdef __cplusplus
}
#endif

#endif
