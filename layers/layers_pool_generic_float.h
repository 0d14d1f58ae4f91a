/* SPDX-License-Identifier: MIT */
/* Max and average pooling over width and height, float32.
 *
 * Maps are rows of pixels of channels: element (x, y, c) of a map of width W with C channels is
 * number (y * W + x) * C + c. Strides of tensors and batches take no part. Cells outside the input
 * map are never read and never count.
 */
#ifndef NNLIB_LAYERS_LAYERS_POOL_GENERIC_FLOAT_H
#define NNLIB_LAYERS_LAYERS_POOL_GENERIC_FLOAT_H

#include <stdint.h>

#include "core/ai_layer.h"
#include "core/ai_tensor.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Layer type POOL. The size of the output is that of its tensor. */
typedef struct ai_layer_pool {
  ai_layer base;
  uint32_t pool_size[2];     /* width, height of the window */
  uint32_t pool_stride[2];   /* step in x, in y */
  ai_shape pool_pad;         /* 4 values: top, left, bottom, right; the last two are not read */
  uint8_t count_include_pad; /* average by the whole window, not by its cells inside the map */
} ai_layer_pool;

/* The running maximum m of a window: m = m > cell ? m : cell, from its first cell inside the map
 * on, row by row. A NaN is thus replaced by the next cell. A pixel whose window lies outside the
 * map is not written. */
void forward_mp(ai_layer* layer);

/* The sum of a window's cells inside the map, from the first on row by row, times 1.0f / count,
 * where count is the number of those cells or, with count_include_pad, of all. A pixel whose window
 * lies outside the map is not written. */
void forward_ap(ai_layer* layer);

/* A pooling kernel as a fused layer holds it: pools the in_w x in_h map at in->data into the
 * out_w x out_h map at out->data. pad_x and pad_y are the padding on the left and at the top. */
typedef void (*ai_pool_func)(ai_array* in, uint16_t in_w, uint16_t in_h, uint16_t channels,
                             uint16_t pool_w, uint16_t pool_h, uint16_t pad_x, uint16_t pad_y,
                             uint16_t stride_x, uint16_t stride_y, uint16_t out_w, uint16_t out_h,
                             ai_array* out);

/* As forward_mp, but the running maximum starts at -2^31: that is the result of a window outside
 * the map, and the least there is. */
void pool_func_mp_array_f32(ai_array* in, uint16_t in_w, uint16_t in_h, uint16_t channels,
                            uint16_t pool_w, uint16_t pool_h, uint16_t pad_x, uint16_t pad_y,
                            uint16_t stride_x, uint16_t stride_y, uint16_t out_w, uint16_t out_h,
                            ai_array* out);

/* The sum, from 0, of a window's cells inside the map, divided by their number: NaN for a window
 * outside the map. */
void pool_func_ap_array_f32(ai_array* in, uint16_t in_w, uint16_t in_h, uint16_t channels,
                            uint16_t pool_w, uint16_t pool_h, uint16_t pad_x, uint16_t pad_y,
                            uint16_t stride_x, uint16_t stride_y, uint16_t out_w, uint16_t out_h,
                            ai_array* out);

/* Folds the n / channels pixels at `in`, in order, into the running maxima at `out`:
 * out[c] = out[c] > in[c] ? out[c] : in[c]. */
void pool_func_mp_kernel_array_f32(float* out, const float* in, uint32_t n, uint32_t channels);

/* Adds the n / channels pixels at `in`, in order, to the sums at `out`; with first 1 the first
 * pixel replaces them instead. Then, unless count is 0, multiplies the sums by 1.0f / count: the
 * rows of a window take one call each, the last with the count. */
void pool_func_ap_kernel_array_f32(float* out, const float* in, uint32_t n, uint32_t channels,
                                   uint32_t count, int32_t first);

#ifdef __cplusplus
}
#endif

#endif
