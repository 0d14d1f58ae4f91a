/* SPDX-License-Identifier: MIT */
/* Two-dimensional convolution of fixed-point maps: layers of type CONV2D and OPTIMIZED_CONV2D.
 *
 * Lists as in layers_conv2d_generic_float.h: input, output, weights with the optional bias and the
 * optional parameters of the nonlinearity, scratch as below. Weights have the shape
 * (C_in, K_w, K_h, C_out): in memory [C_out][K_h][K_w][C_in]; with groups equal to C_in and not 1
 * (C_out, K_w, K_h, 1), in memory [K_h][K_w][C_out], output channel c seeing input channel
 * c / (C_out / C_in). Dilation is not read.
 *
 * Input, weights, bias and output have the same width, 8 or 16 bits, and each its own fractional
 * bits. The sum of products has fi + fw of them, those of input and weights together; the bias is
 * shifted left to that scale, the sum right to that of the output, rounded to nearest with halves
 * going up and saturated. An output with more fractional bits than the sum is computed without
 * shift and then shifted left, saturating. The bias must not have more fractional bits than the
 * sum.
 *
 * Q15 needs one group and as much height as width in everything: maps, kernel, strides, paddings.
 * Any other Q15 layer, widths that differ, groups that are 0 or neither 1 nor C_in, and C_out that
 * is no multiple of those groups hang (core_hang). */
#ifndef NNLIB_LAYERS_QUANTIZED_LAYERS_CONV2D_QUARN_FIXED_H
#define NNLIB_LAYERS_QUANTIZED_LAYERS_CONV2D_QUARN_FIXED_H

#include "layers/layers_conv2d_generic_float.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Scratch 0: ai_conv2d_fixed_scratch_size bytes, aligned for 16-bit elements, contents of no
 * matter; the list may be empty when that is 0. nl_func, when not null, is then applied in place to
 * the C_out values of each pixel, with the data of weights 2 or else of nl_params. */
void forward_conv2d_fixed(ai_layer* layer); /* an ai_layer_conv2d */

/* Convolution, nl_func and pooling, the same bytes as the three in sequence give, without the whole
 * convolved map. That map has the format of output 0, which is the pooled map.
 *
 * Scratch 0 (1, C_out, W_conv, rows) holds convolved rows, W_conv the width of the convolved map,
 * at least as many as a pooling window is high; more rows mean fewer moves. Scratch 1:
 * ai_conv2d_nl_pool_fixed_scratch_size bytes, otherwise as scratch 0 of forward_conv2d_fixed. The
 * convolved map has (pad top + pad bottom + H_in - K_h) / stride_y + 1 rows; those that no window
 * covers are not computed. pool_func and nl_func get arrays with the output's format. */
void forward_conv2d_nl_pool_fixed(ai_layer* layer); /* an ai_layer_conv2d_nl_pool */

/* BYTES of scratch 0. Like all scratch sizes the same on a PC and on the target. */
ai_size ai_conv2d_fixed_scratch_size(const ai_layer_conv2d* layer);

/* BYTES of scratch 1, NOT of scratch 0, the rows, which the layer must have already. */
ai_size ai_conv2d_nl_pool_fixed_scratch_size(const ai_layer_conv2d_nl_pool* layer);

/* Both as a constant, for static arrays; a depthwise convolution needs none. */
#define AI_CONV2D_FIXED_SCRATCH_BYTES(c_in, kernel_w, kernel_h) \
  (4u * (c_in) * (kernel_w) * (kernel_h))

#ifdef __cplusplus
}
#endif

#endif
