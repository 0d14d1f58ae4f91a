/* SPDX-License-Identifier: MIT */
/* Max and average pooling of 8-bit integer maps: layers of type POOL, uint8 or int8 by the sign of
 * the input array's format. Only cells inside the map take part; rounding as kernels/ko_pool.h
 * says. */
#ifndef NNLIB_LAYERS_QUANTIZED_LAYERS_POOL_QUARN_INTEGER_H
#define NNLIB_LAYERS_QUANTIZED_LAYERS_POOL_QUARN_INTEGER_H

#include "layers/layers_pool_generic_float.h"

#ifdef __cplusplus
extern "C" {
#endif

/* From the input tensor's scale and zero point to those of the output tensor. count_include_pad is
 * not read. */
void forward_mp_integer(ai_layer* layer); /* both: an ai_layer_pool */
void forward_ap_integer(ai_layer* layer);

/* As fused layers call them: input and output have the same scale and zero point. They are not told
 * the zero point: a window without cells gives 0. */
void pool_func_mp_array_integer(ai_array* in, uint16_t in_w, uint16_t in_h, uint16_t channels,
                                uint16_t pool_w, uint16_t pool_h, uint16_t pad_x, uint16_t pad_y,
                                uint16_t stride_x, uint16_t stride_y, uint16_t out_w,
                                uint16_t out_h, ai_array* out);
void pool_func_ap_array_integer(ai_array* in, uint16_t in_w, uint16_t in_h, uint16_t channels,
                                uint16_t pool_w, uint16_t pool_h, uint16_t pad_x, uint16_t pad_y,
                                uint16_t stride_x, uint16_t stride_y, uint16_t out_w,
                                uint16_t out_h, ai_array* out);

#ifdef __cplusplus
}
#endif

#endif
