/* SPDX-License-Identifier: MIT */
/* A box cut out of a tensor, for every element type. */
#ifndef NNLIB_LAYERS_LAYERS_SLICE_GENERIC_FLOAT_H
#define NNLIB_LAYERS_LAYERS_SLICE_GENERIC_FLOAT_H

#include "core/ai_layer.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Entry i of the three arrays belongs together; each has as many as starts. */
typedef struct ai_layer_slice {
  ai_layer base;
  const ai_array* axes;   /* uint32_t AI_SHAPE_*; null for the axes 0, 1, ... in order */
  const ai_array* starts; /* int32_t: the first index of the axis */
  const ai_array* ends;   /* int32_t: one past the last index of the axis */
} ai_layer_slice;

/* Chain: input, output whose shape is the input's, but end - start on each axis given. Any set of
 * axes; an axis that is not given is copied whole, of one given twice the later entry counts.
 * Starts and ends are clamped to the axis: below 0 is 0 (they do not count from the end), beyond
 * the last index is all of it. Nothing past the output's shape is written.
 * Does nothing when starts or ends is null or when the two formats differ in bits. */
void forward_slice(ai_layer* layer);

#ifdef __cplusplus
}
#endif

#endif
