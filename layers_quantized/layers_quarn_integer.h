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

/* BYTES of scratch 0. Like all scratch sizes the same on a PC and on the target. */
ai_size ai_dense_integer_scratch_size(const ai_layer* layer);

/* The same as a constant, for static arrays; scales is how many the weights have. */
#define AI_DENSE_INTEGER_SCRATCH_BYTES(n_in, n_out, scales) \
  ((2u * (n_in) + 3u) / 4u * 4u + ((scales) > 1 ? 6u * (n_out) : 0u))

/* Element-wise addition, layer type ELTWISE or ADD: inputs 0 and 1, of which dimensions of size 1
 * stretch to those of the other (limits in core/core_broadcast.h), output 0 of the size of both
 * together. All three have the type of input 0, uint8 or int8, each its own scale and zero point;
 * rounding as kernels/ko_add.h says. */
void forward_add_integer(ai_layer* layer);

#ifdef __cplusplus
}
#endif

#endif
