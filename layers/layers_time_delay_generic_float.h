/* SPDX-License-Identifier: MIT */
/* A filter over delayed time steps: a convolution along time with taps at any distances. */
#ifndef NNLIB_LAYERS_LAYERS_TIME_DELAY_GENERIC_FLOAT_H
#define NNLIB_LAYERS_LAYERS_TIME_DELAY_GENERIC_FLOAT_H

#include "core/ai_layer.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ai_layer_time_delay {
  ai_layer base;
  const ai_array* delays; /* uint8_t: the D distances of the taps in time steps */
} ai_layer_time_delay;

/* Chain, all float32, features in the channel axis and time steps in the height axis: input of F
 * features; output of U units and T steps; weights 0 the kernel of U * D * F elements, (u, j, k) at
 * (u * D + j) * F + k; weights 1 the bias of U elements, absent for 0. The input has at least
 * T + max(delays) steps.
 *
 *   out[t][u] = bias[u] + sum over j, k of kernel[u][j][k] * in[t + delays[j]][k]
 *
 * Each sum starts with the bias and adds one product after the other, j outer, k inner. */
void forward_time_delay(ai_layer* layer);

#ifdef __cplusplus
}
#endif

#endif
