/* SPDX-License-Identifier: MIT */
/* Normalization in single precision: batch, local response, Lp along one axis, instance.
 *
 * C, W and H are the input's channels, width and height; the output has the same shape. Sums are
 * float sums from 0 in index order. Batch, Lp and instance normalization may run in place (output
 * and input the same elements); none takes a partial overlap. A missing list or required tensor
 * faults; nothing else is checked. */
#ifndef NNLIB_LAYERS_LAYERS_NORM_GENERIC_FLOAT_H
#define NNLIB_LAYERS_LAYERS_NORM_GENERIC_FLOAT_H

#include <stdbool.h>
#include <stdint.h>

#include "core/ai_layer.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ai_layer_lrn {
  ai_layer base;
  uint32_t local_size; /* channels in the window; an even size covers one channel more */
  float k;
  float alpha; /* multiplies the sum of squares as it stands: divide it by the window beforehand */
  float beta;
} ai_layer_lrn;

typedef struct ai_layer_norm {
  ai_layer base;
  uint32_t axis;  /* AI_SHAPE_* */
  float exponent; /* p */
  bool scale;     /* multiply the quotient by the number of elements along the axis */
} ai_layer_norm;

typedef struct ai_layer_instance_norm {
  ai_layer base;
  float epsilon; /* added to the variance */
} ai_layer_instance_norm;

/* Weights [0] scale (C), [1] bias (C, may be absent): out = in * scale[c] + bias[c], mean and
 * variance being folded into the two. The layer is a plain ai_layer. */
void forward_bn(ai_layer* layer);

/* ai_layer_lrn: func_lrn_array_f32 with half = local_size / 2. */
void forward_lrn(ai_layer* layer);

/* ai_layer_norm: every vector along the axis by func_norm_array_f32, or by
 * func_norm_l2_fast_array_f32 when p is 2 and the vector's elements are neighbours. */
void forward_norm(ai_layer* layer);

/* ai_layer_instance_norm; weights [0] scale (C), [1] bias (C). For each channel, mean and
 * population variance over its W * H positions (widths outer, heights inner);
 * out = (in - mean) * scale[c] * (1 / sqrtf(variance + epsilon)) + bias[c]. */
void forward_instanceNormalization(ai_layer* layer);

/* One pixel: out[j] = in[j] * pow(alpha * s + k, -beta), pow in double precision, where s is the
 * sum of the squares of channels j - half ... j + half, clipped to the pixel. out holds the sums
 * meanwhile and is apart from in. */
void func_lrn_channel_f32(float* out, const float* in, int32_t channels, int32_t half, float k,
                          float alpha, float beta);

/* The same for every pixel of size elements, that is size / channels pixels. */
void func_lrn_array_f32(float* out, const float* in, ai_size size, int32_t channels, int32_t half,
                        float k, float alpha, float beta);

/* Vectors of n elements that lie stride elements apart, stride vectors interleaved in each of
 * outer blocks of n * stride elements. With s the sum of pow(|x|, p): out = x * f,
 * f = pow(scale / s, 1 / p), or pow(scale, 1 / p) for s = 0. 1 / p is a float quotient, and each
 * pow is rounded to float. */
void func_norm_array_f32(float* out, const float* in, float p, float scale, uint32_t stride,
                         uint32_t n, uint32_t outer);

/* Every n of size consecutive elements: out = x * f with s the sum of x * x, f = sqrt(scale / s),
 * or sqrt(scale) for s = 0. */
void func_norm_l2_fast_array_f32(float* out, const float* in, float scale, uint32_t n,
                                 uint32_t size);

#ifdef __cplusplus
}
#endif

#endif
