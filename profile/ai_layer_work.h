/* SPDX-License-Identifier: MIT */
/* How much a layer computes. */
#ifndef NNLIB_PROFILE_AI_LAYER_WORK_H
#define NNLIB_PROFILE_AI_LAYER_WORK_H

#include <stdint.h>

#include "core/ai_layer.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Multiply-accumulates of one run of the layer, taken from its shapes: products of an input with a
 * weight (of two inputs for gemm and matmul) in convolutions, dense, gemm, matmul, time delay,
 * recurrent and time-distributed layers. Products with padding count, as is usual; biases, gates
 * and requantization do not. 0 for every other layer and for functions of the application's own. */
uint64_t ai_layer_multiply_accumulates(const ai_layer* layer);

#ifdef __cplusplus
}
#endif

#endif
