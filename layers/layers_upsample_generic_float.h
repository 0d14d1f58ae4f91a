/* SPDX-License-Identifier: MIT */
/* Enlarging a map's width and height. */
#ifndef NNLIB_LAYERS_LAYERS_UPSAMPLE_GENERIC_FLOAT_H
#define NNLIB_LAYERS_LAYERS_UPSAMPLE_GENERIC_FLOAT_H

#include <stdbool.h>

#include "core/ai_layer.h"

#ifdef __cplusplus
extern "C" {
#endif

#define AI_UPSAMPLE_ZEROS 0u    /* any element type */
#define AI_UPSAMPLE_NEAREST 1u  /* any element type */
#define AI_UPSAMPLE_BILINEAR 2u /* float32 */

typedef struct ai_layer_upsample {
  ai_layer base;
  uint32_t mode;          /* AI_UPSAMPLE_* */
  bool center;            /* AI_UPSAMPLE_BILINEAR: pixels are sampled at their centres */
  const ai_array* scales; /* two float32 above 0: height scale, width scale */
} ai_layer_upsample;

/* Chain: input, output of the same batch, channels and format; the output's size is that of its
 * shape. With s the scale of the axis (rows below, columns alike):
 *
 * AI_UPSAMPLE_NEAREST: output row r is input row (int)(r / s), at most the last one.
 * AI_UPSAMPLE_ZEROS: input row y goes to output row y * (int)s; all other cells are 0.
 * AI_UPSAMPLE_BILINEAR: row r mixes the two input rows around (r - o) / s, which is clamped to the
 * map; o is (s - 1) / 2 with center, else 0. A pixel is the sum of its four neighbours times their
 * weights in the order (y0, x0), (y0, x1), (y1, x0), (y1, x1).
 * An unknown mode does nothing. */
void forward_upsample(ai_layer* layer);

#ifdef __cplusplus
}
#endif

#endif
