/* SPDX-License-Identifier: MIT */
/* Float layers driven by a binary function: element by element with broadcasting, and reduction. */
#ifndef NNLIB_LAYERS_LAYERS_ELTWISE_GENERIC_FLOAT_H
#define NNLIB_LAYERS_LAYERS_ELTWISE_GENERIC_FLOAT_H

#include "core/ai_layer.h"
#include "core/ai_math_helpers.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ai_layer_eltwise {
  ai_layer base;
  ai_binary_fn operation; /* ai_sum, ... or a function of the application's */
} ai_layer_eltwise;

typedef struct ai_layer_reduce {
  ai_layer base;
  float
      neutral_value; /* what every output element starts with: 0 for a sum, FLT_MAX for a minimum */
  ai_binary_fn operation;
} ai_layer_reduce;

/* Chain: inputs A and B, output Y, all float32. In each dimension the inputs have the same size or
 * one of them has 1 and is repeated (limit: core/core_broadcast.h); Y has the larger sizes.
 *
 *   Y[i] = operation(A[i], B[i])
 *
 * The operation is called once for each output element, in memory order. Y may lie over an input
 * that is not broadcast, exactly; any other overlap is excluded. ai_sum, ai_sub, ai_mul, ai_div,
 * ai_min and ai_max are expanded in place of the call, with the same results. */
void forward_eltwise(ai_layer* layer);

/* Chain: input X, output Y, both float32 and apart from each other. Y has X's sizes but for the
 * reduced dimensions, where it has 1 (limit: core/core_broadcast.h). Each element of Y starts with
 * neutral_value and takes in, in X's memory order, every element of X that falls on it:
 *
 *   Y[i] = operation(Y[i], X[j]) */
void forward_reduce(ai_layer* layer);

#ifdef __cplusplus
}
#endif

#endif
