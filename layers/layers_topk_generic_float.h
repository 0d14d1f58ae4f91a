/* SPDX-License-Identifier: MIT */
/* The k largest values along one axis. */
#ifndef NNLIB_LAYERS_LAYERS_TOPK_GENERIC_FLOAT_H
#define NNLIB_LAYERS_LAYERS_TOPK_GENERIC_FLOAT_H

#include "core/ai_layer.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Of layer type AI_LAYER_TYPE_GENERIC. */
typedef struct ai_layer_topk {
  ai_layer base;
  uint32_t axis; /* AI_SHAPE_* */
  uint32_t k;    /* 1 up to the input's size along the axis; a larger one is cut to it */
} ai_layer_topk;

/* Chain: float32 input; outputs 0, the values (float32), and 1, their indices along the axis
 * (uint32_t). Both outputs have the input's shape, but k along the axis: at every coordinate of
 * the other axes stand the k largest values of that line, largest first, equal ones in input
 * order. Nothing compares larger than a NaN or smaller than one: a NaN among the first k values of
 * a line keeps its place, and no value moves past it; one after them is never taken. */
void forward_topK(ai_layer* layer);

#ifdef __cplusplus
}
#endif

#endif
