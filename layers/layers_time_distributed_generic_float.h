/* SPDX-License-Identifier: MIT */
/* A chain of layers run once for each time step. */
#ifndef NNLIB_LAYERS_LAYERS_TIME_DISTRIBUTED_GENERIC_FLOAT_H
#define NNLIB_LAYERS_LAYERS_TIME_DISTRIBUTED_GENERIC_FLOAT_H

#include "core/ai_layer.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ai_layer_time_distributed {
  ai_layer base;
  ai_layer* inner; /* the first of one or more layers, linked by next; the last points to itself or
                      to null */
} ai_layer_time_distributed;

/* Chain: input and output with the time steps in the height axis, as many in both. For each step
 * the inner layers run on a tensor of height 1 over that step's slice of the input and write into
 * one over that step's slice of the output.
 *
 * The step tensors take the place of the first input of the first inner layer and of the first
 * output of the last one; what stands there in the inner chains is never read, so it may be any
 * tensor, also the outer one. To this end those two layers' tensor_chain point to copies on the
 * stack while the steps run, and to the layers' own, unchanged chains again afterwards: chains and
 * lists may be constant. All other tensors of the inner layers stay as they are, also where the
 * same tensor is named a second time. Each of the two lists has at most
 * AI_TIME_DISTRIBUTED_LIST_MAX entries; a longer one faults. */
void forward_time_distributed(ai_layer* layer);

#define AI_TIME_DISTRIBUTED_LIST_MAX 8u

#ifdef __cplusplus
}
#endif

#endif
