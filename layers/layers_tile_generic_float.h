/* SPDX-License-Identifier: MIT */
/* Repetition of a map in height, width and channels, for every element type. */
#ifndef NNLIB_LAYERS_LAYERS_TILE_GENERIC_FLOAT_H
#define NNLIB_LAYERS_LAYERS_TILE_GENERIC_FLOAT_H

#include "core/ai_layer.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ai_layer_tile {
  ai_layer base;
  const uint16_t* repeats; /* [0] of the whole map (height), [1] of each row (width), [2] of each
                              pixel (channels) */
} ai_layer_tile;

/* Chain: input, output of C * repeats[2] channels, width W * repeats[1], height H * repeats[0] and
 * the same format. The output is written in sequence: the map again and again, in it each row
 * again and again, in that each pixel again and again. A repeat count of 0 writes nothing. */
void forward_tile(ai_layer* layer);

#ifdef __cplusplus
}
#endif

#endif
