/* SPDX-License-Identifier: MIT */
/* Permutation of the four axes, for every element type. */
#ifndef NNLIB_LAYERS_LAYERS_TRANSPOSE_GENERIC_FLOAT_H
#define NNLIB_LAYERS_LAYERS_TRANSPOSE_GENERIC_FLOAT_H

#include "core/ai_layer.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ai_layer_transpose {
  ai_layer base;
  const uint32_t* perm; /* four AI_SHAPE_*: the input axis that each output axis runs along */
} ai_layer_transpose;

/* Chain: input, output of the same format with shape[i] = input shape[perm[i]]. The output is
 * written in sequence, axis 0 innermost: element (d0, d1, d2, d3) is the input's element at the
 * coordinates d[i] along axis perm[i]. */
void forward_transpose(ai_layer* layer);

#ifdef __cplusplus
}
#endif

#endif
