/* SPDX-License-Identifier: MIT */
/* The network record and the records behind its input and output lists. */
#ifndef NNLIB_CORE_AI_NETWORK_H
#define NNLIB_CORE_AI_NETWORK_H

#include <stdint.h>

#include "core/ai_buffer.h"
#include "core/ai_layer.h"
#include "core/core_common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Where a process call stands in the caller's buffer of one input or output tensor. */
typedef struct ai_buffer_cursor {
  void* end;            /* past the last batch */
  void* cursor;         /* the current batch */
  uint32_t batch_bytes; /* of one batch item */
  uint32_t total_bytes; /* of all batches of this buffer */
} ai_buffer_cursor;

/* What a network's input or output list carries: arrays with one element for each tensor. */
typedef struct ai_tensor_list_info {
  ai_buffer_cursor* cursors;
  ai_buffer* buffers; /* filled by the report */
  ai_buffer_meta_info* meta_infos;
} ai_tensor_list_info;

/* Handle tag of a live network. */
#define AI_NETWORK_MAGIC UINT32_C(0xA1C00100)
/* State bits of flags once the network is initialised. */
#define AI_NETWORK_INITIALISED 3u

typedef struct ai_network {
  uint32_t magic;
  uint32_t signature; /* reported as it is */
  uint64_t reserved;
  uint32_t flags;       /* bits 0-1: AI_NETWORK_INITIALISED */
  ai_error error;       /* the first error sticks */
  uint16_t batch_count; /* of the current process call */
  uint16_t batch_index; /* the batch being run */
  ai_buffer params;     /* the weights */
  ai_buffer activations;
  ai_tensor_chain io; /* list 0 the network's inputs, list 1 its outputs */
  ai_layer* layers;
  ai_layer* current_layer; /* null when idle */
} ai_network;

#ifdef __cplusplus
}
#endif

#endif
