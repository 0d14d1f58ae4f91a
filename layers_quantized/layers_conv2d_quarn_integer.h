/* SPDX-License-Identifier: MIT */
/* Two-dimensional convolution of 8-bit integer maps: layers of type CONV2D and OPTIMIZED_CONV2D.
 *
 * Lists: input 0 (1, C_in, W_in, H_in); output 0 (1, C_out, W_out, H_out); weights 0, then the
 * optional int32 bias of C_out values in units of input scale * weight scale, then optionally the
 * parameters of the element-wise function; scratch as below. Weights have the shape
 * (C_in, K_w, K_h, C_out): in memory [C_out][K_h][K_w][C_in]; depthwise, with groups equal to C_in
 * and not 1 and C_out equal to C_in, (C, K_w, K_h, 1): in memory [K_h][K_w][C]. Dilation is not
 * read; the output's shape decides over the padding at the bottom and on the right.
 *
 * Types, by the signs of the formats of input and weights: both uint8; uint8 input with int8
 * weights; both int8. The output has the type of the input; int8 weights have the zero point 0.
 * The scales and zero points are entry 0 of the tensors' records, but the weights may have one
 * entry for each output channel; uint8 weights then must have their zero points, else the function
 * faults. Every output is the sum in 32 bits, requantized (see
 * kernels/ko_requantize.h) with in scale * weight scale / out scale.
 *
 * Any other groups, 0 too, or types: the function hangs in an endless loop (core_hang), the sign of
 * a mis-described network. */
#ifndef NNLIB_LAYERS_QUANTIZED_LAYERS_CONV2D_QUARN_INTEGER_H
#define NNLIB_LAYERS_QUANTIZED_LAYERS_CONV2D_QUARN_INTEGER_H

#include "layers/layers_conv2d_generic_float.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Scratch 0: ai_conv2d_integer_scratch_size bytes, aligned to 4 (else the function faults),
 * contents of no matter: what the kernel needs, then the pairs of channels. With nl_func, scratch 1
 * receives the convolved map, as many elements as the output has, from which nl_func is then
 * applied into the output, once for the whole map. Its params are the data of weights 2, or else of
 * nl_params. */
void forward_conv2d_integer(ai_layer* layer); /* an ai_layer_conv2d */

/* Convolution, nl_func and pooling, the same bytes as the three in sequence give but for pooling
 * windows outside the map, without the whole convolved map, which has the format and the
 * quantization of output 0, the pooled map.
 *
 * Scratch 0 (1, C_out, W_conv, rows) holds convolved rows, W_conv the width of the convolved map,
 * at least as many as a pooling window is high; more rows mean fewer moves. Scratch 1 is what
 * scratch 0 is for forward_conv2d_integer. The convolved map has (pad top + pad bottom + H_in -
 * K_h) / stride_y + 1 rows; those that no window covers are not computed. pool_func is
 * pool_func_mp_array_integer or pool_func_ap_array_integer, or one like them. */
void forward_conv2d_nl_pool_integer(ai_layer* layer); /* an ai_layer_conv2d_nl_pool */

/* BYTES of scratch 0; 0 for a layer that hangs. Like all scratch sizes the same on a PC and on the
 * target. */
ai_size ai_conv2d_integer_scratch_size(const ai_layer_conv2d* layer);

/* BYTES of scratch 1, NOT of scratch 0, the rows, which the layer must have already. */
ai_size ai_conv2d_nl_pool_integer_scratch_size(const ai_layer_conv2d_nl_pool* layer);

/* Both as constants, for static arrays: of an ordinary convolution, and of a depthwise one. scales
 * is how many the weights have. */
#define AI_CONV2D_INTEGER_SCRATCH_BYTES(c_in, c_out, kernel_w, kernel_h, scales) \
  (4u * (c_in) * (kernel_w) * (kernel_h) + 4u * (c_out) + ((scales) > 1 ? 6u * (c_out) : 0u))
#define AI_DEPTHWISE_INTEGER_SCRATCH_BYTES(channels, kernel_w, kernel_h, scales) \
  (((2u * (((channels) * (kernel_w) * (kernel_h) + 1u) / 2u) +                   \
     2u * (channels) * (kernel_w) * (kernel_h) + 3u) /                           \
    4u) *                                                                        \
       4u +                                                                      \
   ((scales) > 1 ? 6u * (channels) : 0u))

#ifdef __cplusplus
}
#endif

#endif
