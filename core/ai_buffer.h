/* SPDX-License-Identifier: MIT */
/* Descriptors of caller memory that crosses the platform API. */
#ifndef NNLIB_CORE_AI_BUFFER_H
#define NNLIB_CORE_AI_BUFFER_H

#include <stdint.h>

#include "core/ai_tensor.h"

#ifdef __cplusplus
extern "C" {
#endif

#define AI_BUFFER_META_HAS_INTQ 1u

typedef struct ai_buffer_meta_info {
  uint32_t flags;                     /* AI_BUFFER_META_HAS_INTQ or 0 */
  const ai_intq_info_list* intq_info; /* the tensor's quantization */
} ai_buffer_meta_info;

/* n_batches items of height x width x channels elements, channels innermost, back to back. */
typedef struct ai_buffer {
  ai_buffer_format format;
  uint16_t n_batches;
  uint16_t height;
  uint16_t width;
  uint32_t channels;
  void* data;
  ai_buffer_meta_info* meta_info; /* or null */
} ai_buffer;

/* What ai_platform_network_init takes. */
typedef struct ai_network_params {
  ai_buffer params; /* the weights */
  ai_buffer activations;
} ai_network_params;

#ifdef __cplusplus
}
#endif

#endif
