/* SPDX-License-Identifier: MIT */
/* The base record of every layer. A layer kind's record starts with it and adds its parameters. */
#ifndef NNLIB_CORE_AI_LAYER_H
#define NNLIB_CORE_AI_LAYER_H

#include <stdint.h>

#include "core/ai_tensor.h"

#ifdef __cplusplus
extern "C" {
#endif

struct ai_network;
typedef struct ai_layer ai_layer;

/* Computes the layer's outputs from its chain and its own parameters. Layer functions validate
 * nothing and report nothing. */
typedef void (*ai_layer_forward)(ai_layer* layer);

struct ai_layer {
  uint16_t type;   /* AI_LAYER_TYPE_* */
  uint16_t id;     /* with type the first 32-bit word, which the network signature covers */
  void* user_data; /* the application's; the runtime never reads it */
  struct ai_network* network; /* the owner, written by ai_platform_network_init */
  ai_layer* next;             /* the last layer points to itself or to null */
  ai_layer_forward forward;
  const ai_tensor_chain* tensor_chain; /* inputs, outputs, weights, scratch */
};

/* X(name, id) of every layer type. */
#define AI_LAYER_TYPES(X)         \
  X(ADD, 10001)                   \
  X(BN, 10002)                    \
  X(CONV2D, 10004)                \
  X(DENSE, 10005)                 \
  X(GRU, 10006)                   \
  X(LRN, 10007)                   \
  X(LSTM, 10008)                  \
  X(NL, 10009)                    \
  X(NORM, 10010)                  \
  X(OPTIMIZED_CONV2D, 10011)      \
  X(TRANSPOSE, 10012)             \
  X(POOL, 10013)                  \
  X(SM, 10014)                    \
  X(SPLIT, 10015)                 \
  X(TIME_DELAY, 10016)            \
  X(TIME_DISTRIBUTED, 10017)      \
  X(CONCAT, 10019)                \
  X(GEMM, 10020)                  \
  X(UPSAMPLE, 10021)              \
  X(ELTWISE, 10022)               \
  X(GENERIC, 10023)               \
  X(INSTANCENORMALIZATION, 10024) \
  X(PAD, 10025)                   \
  X(SLICE, 10026)                 \
  X(TILE, 10027)                  \
  X(REDUCE, 10028)

#define AI_LAYER_TYPE_ENTRY_(name, id) AI_LAYER_TYPE_##name = id,
typedef enum ai_layer_type { AI_LAYER_TYPES(AI_LAYER_TYPE_ENTRY_) } ai_layer_type;
#undef AI_LAYER_TYPE_ENTRY_

/* The layer after this one; null when next is the layer itself or null. */
static inline ai_layer* ai_layer_next(const ai_layer* layer) {
  return layer->next != layer ? layer->next : NULL;
}

#ifdef __cplusplus
}
#endif

#endif
