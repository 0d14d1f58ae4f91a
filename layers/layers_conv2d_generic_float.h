/* SPDX-License-Identifier: MIT */
/* Two-dimensional convolution, float32: layers of type CONV2D and OPTIMIZED_CONV2D.
 *
 * Lists: input 0 (1, C_in, W_in, H_in); output 0 (1, C_out, W_out, H_out); weights 0, then the
 * optional bias of C_out values, then the optional parameters of the nonlinearity (before them, an
 * absent bias is a null entry); scratch as the functions below say. Maps are read and written
 * densely, batch items beyond the first not at all. The output must not overlap the input.
 *
 * Weights have the shape (C_in / groups, K_w, K_h, C_out): in memory [C_out][K_h][K_w][C_in /
 * groups]. Depthwise weights (C_in = C_out = groups) have the shape (C, K_w, K_h, 1):
 * [K_h][K_w][C]; the former shape with C_in / groups = 1 is understood as well.
 *
 * Weights may be indices into a table of floats (AI_ARRAY_FORMAT_LUT4_FLOAT, LUT8_FLOAT): the
 * array's data the indices, its data_start the table of 16 or 256 values. Every call expands them
 * into scratch, in rows of weights shape[0] elements (see ai_dict_decompress_f32).
 *
 * Each output is one sum: from the bias, adding input * weight over the kernel's rows, columns and
 * input channels, in this order, every product and every sum rounded to float32. Kernel positions
 * outside the map do not take part.
 */
#ifndef NNLIB_LAYERS_LAYERS_CONV2D_GENERIC_FLOAT_H
#define NNLIB_LAYERS_LAYERS_CONV2D_GENERIC_FLOAT_H

#include "core/ai_layer.h"
#include "core/ai_tensor.h"
#include "layers/layers_nl_generic_float.h"
#include "layers/layers_pool_generic_float.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ai_layer_conv2d {
  ai_layer base;
  uint32_t groups;           /* of channels; 1: every output sees every input channel */
  const ai_array* nl_params; /* parameters of nl_func, used when weights 2 is absent; or null */
  ai_nl_func nl_func;        /* applied to the C_out values of each pixel; null: none */
  uint32_t filter_stride[2]; /* x, y; the low 16 bits count */
  uint32_t dilation[2];      /* x, y; the low 16 bits count; 1: neighbouring pixels, 0: all taps
                                at one */
  ai_shape filter_pad;       /* 4 values: top, left, bottom, right */
} ai_layer_conv2d;

typedef struct ai_layer_conv2d_nl_pool {
  ai_layer_conv2d base;
  uint32_t pool_size[2];   /* x, y */
  uint32_t pool_stride[2]; /* x, y */
  ai_shape pool_pad;       /* 4 values: top, left, bottom, right */
  ai_pool_func pool_func;  /* pool_func_mp_array_f32, pool_func_ap_array_f32, or one like them */
} ai_layer_conv2d_nl_pool;

/* Convolution, then nl_func on each pixel, row by row. Pads bottom and right are not read: the
 * output's shape decides.
 *
 * nl_func gets the output array, its data pointing to the pixel, as both output and input, and
 * C_out as the size. Its params are the data of weights 2, one step of its stride[2] bytes further
 * with each pixel of a row, from the start again when the step reaches the array's end, and in each
 * new row; so slopes for each channel (C, 1, 1) and for each column (C, W, 1) serve. nl_params does
 * not step. After each row the output array's data is set to its data_start.
 *
 * Index weights: scratch 0 receives the expanded weights, as many as its array has elements. */
void forward_conv2d(ai_layer* layer); /* an ai_layer_conv2d */

/* The transpose of forward_conv2d with the same record, as a layer that enlarges its input: input
 * pixel (x, y) adds input * weight at (kx, ky) to output pixel (x * stride_x - pad_left +
 * kx * dilation_x, y * stride_y - pad_top + ky * dilation_y), where that lies inside the output.
 *
 * Weights, groups, index weights, bias and nl_func as for forward_conv2d, the weights' C_in and
 * C_out being this layer's own. Each sum starts from the bias and runs over the input pixels in
 * memory order, and within a pixel over its channels. */
void forward_conv2d_transpose(ai_layer* layer); /* an ai_layer_conv2d */

/* Convolution, nl_func and pooling without the whole convolved map: the same bits as the three in
 * sequence give, with pool_func on the whole map. Output 0 is the pooled map.
 *
 * Scratch 0 (1, C_out, W_conv, rows) holds the convolved rows of one pooling window, W_conv the
 * width of the convolved map; the rows that the next window needs again move to its front when it
 * is full, so that a window is always one run of rows. It needs ai_conv2d_nl_pool_scratch_size
 * elements; more rows mean fewer moves. Scratch 1 receives expanded weights as scratch 0 of
 * forward_conv2d does. The convolved map has
 * (pad top + pad bottom + H_in - dilated K_h) / stride_y + 1 rows.
 *
 * pool_func is called once for each output row, with the scratch array (data at the window's first
 * row inside the map), W_conv, the rows of the window inside the map, C_out, the pooling size,
 * pad left, what of pad top still lies above those rows, the pooling stride, W_out, 1, and the
 * output array (data at the row). Afterwards the data of both arrays is their data_start. Convolved
 * rows that no window covers are not computed. */
void forward_conv2d_nl_pool(ai_layer* layer); /* an ai_layer_conv2d_nl_pool */

/* ELEMENTS, not bytes, for the expanded weights: scratch 0 of a convolution, scratch 1 of a fused
 * one. 0 when the weights are no indices. Like all scratch sizes the same on a PC and on the
 * target. */
ai_size ai_conv2d_scratch_size(const ai_layer_conv2d* layer);

/* ELEMENTS, not bytes, of scratch 0 of the fused layer, at least: one pooling window of convolved
 * rows. Scratch 1 is not counted. */
ai_size ai_conv2d_nl_pool_scratch_size(const ai_layer_conv2d_nl_pool* layer);

/* Both as constants, for static arrays: w0 to w3 are the weights' dimensions, rows is the pooling
 * window's height or, if that is less, the convolved map's. */
#define AI_CONV2D_SCRATCH_ELEMENTS(w0, w1, w2, w3) ((w0) * (w1) * (w2) * (w3))
#define AI_CONV2D_NL_POOL_SCRATCH_ELEMENTS(c_out, w_conv, rows) ((c_out) * (w_conv) * (rows))

#ifdef __cplusplus
}
#endif

#endif
