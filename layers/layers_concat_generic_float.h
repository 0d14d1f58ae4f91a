/* SPDX-License-Identifier: MIT */
/* Concatenation along one axis, for every element type. */
#ifndef NNLIB_LAYERS_LAYERS_CONCAT_GENERIC_FLOAT_H
#define NNLIB_LAYERS_LAYERS_CONCAT_GENERIC_FLOAT_H

#include "core/ai_layer.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ai_layer_concat {
  ai_layer base;
  uint32_t axis; /* AI_SHAPE_* */
} ai_layer_concat;

/* Chain: any number of inputs, one output; all of the same format and, but for the axis, of the
 * same shape; the output's axis has as many as all inputs together. The inputs follow each other
 * along the axis in list order. */
void forward_concat(ai_layer* layer);

#ifdef __cplusplus
}
#endif

#endif
