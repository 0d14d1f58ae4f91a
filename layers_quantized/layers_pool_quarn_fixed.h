/* SPDX-License-Identifier: MIT */
/* Max and average pooling of fixed-point maps, 8 or 16 bits by the format of the input.
 *
 * Input and output have the same width and the same fractional bits; maps lie in memory as rows of
 * pixels of channels. Only cells inside the map count. */
#ifndef NNLIB_LAYERS_QUANTIZED_LAYERS_POOL_QUARN_FIXED_H
#define NNLIB_LAYERS_QUANTIZED_LAYERS_POOL_QUARN_FIXED_H

#include "layers/layers_pool_generic_float.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Layers of type POOL: an ai_layer_pool, of which count_include_pad is not read. */
void forward_mp_fixed(ai_layer* layer);
void forward_ap_fixed(ai_layer* layer);

/* Pooling kernels as a fused layer holds them. The average is sum / count rounded to nearest,
 * halves away from zero. A window outside the map gives the least number there is (max) or 0
 * (average). */
void pool_func_mp_array_fixed(ai_array* in, uint16_t in_w, uint16_t in_h, uint16_t channels,
                              uint16_t pool_w, uint16_t pool_h, uint16_t pad_x, uint16_t pad_y,
                              uint16_t stride_x, uint16_t stride_y, uint16_t out_w, uint16_t out_h,
                              ai_array* out);
void pool_func_ap_array_fixed(ai_array* in, uint16_t in_w, uint16_t in_h, uint16_t channels,
                              uint16_t pool_w, uint16_t pool_h, uint16_t pad_x, uint16_t pad_y,
                              uint16_t stride_x, uint16_t stride_y, uint16_t out_w, uint16_t out_h,
                              ai_array* out);

#ifdef __cplusplus
}
#endif

#endif
