/* SPDX-License-Identifier: MIT */
/* The data model: arrays, shapes and strides, quantization records, tensors, lists and chains.
 *
 * All records are plain data, normally constant-initialised (ai_declare.h); nothing here owns
 * memory. Field order is binding.
 *
 * Dimensions are indexed N, C, W, H (batch, channels, width, height). Strides are in bytes and
 * cumulative: stride[0] is the element size, stride[k] = stride[k - 1] * shape[k - 1]. N is thus
 * innermost, then C, W, H: an activation (N = 1) lies in memory as rows of pixels of channels.
 * Of formats with elements of 4 bits, and of look-up-table indices, stride[1] is the whole bytes of
 * N elements.
 */
#ifndef NNLIB_CORE_AI_TENSOR_H
#define NNLIB_CORE_AI_TENSOR_H

#include <stddef.h>
#include <stdint.h>

#include "core/ai_datatypes_format.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef uint32_t ai_size;

/* A typed block of data. */
typedef struct ai_array {
  ai_array_format format;
  ai_size size;     /* elements, not bytes */
  void* data;       /* first element that layers read and write */
  void* data_start; /* start of the underlying buffer; for a look-up-table format the table, data
                       then pointing to the packed indices */
} ai_array;

#define AI_SHAPE_N 0u
#define AI_SHAPE_C 1u
#define AI_SHAPE_W 2u
#define AI_SHAPE_H 3u
#define AI_SHAPE_DIMS 4u /* dimensions of every tensor */

#define AI_SHAPE_TYPE 0u
#define AI_STRIDE_TYPE 1u
/* First word of a shape or stride record: type byte, then the number of dimensions. */
#define AI_DIMS_WORD(type, count) ((uint32_t)(type) | ((uint32_t)(count) << 8))

typedef struct ai_shape {
  uint32_t type_size; /* AI_DIMS_WORD(AI_SHAPE_TYPE, dimensions) */
  uint32_t* data;
} ai_shape;

typedef struct ai_stride {
  uint32_t type_size; /* AI_DIMS_WORD(AI_STRIDE_TYPE, dimensions) */
  uint32_t* data;     /* bytes */
} ai_stride;

/* Scales and zero points: real value = (q - zero point) * scale. */
typedef struct ai_intq_info {
  const float* scale;
  const void* zeropoint; /* int8_t or uint8_t as the array's format; unused by symmetric weights */
} ai_intq_info;

typedef struct ai_intq_info_list {
  uint32_t flags_size;      /* bits 0-15 flags (0), bits 16-31 number of entries: 1, or one for
                               each output channel */
  const ai_intq_info* info; /* null: no quantization */
} ai_intq_info_list;

/* The layer library that a tensor belongs to. */
#define AI_TENSOR_FLAGS_FLOAT UINT32_C(0x01000001)
#define AI_TENSOR_FLAGS_FIXED UINT32_C(0x0100000A)
#define AI_TENSOR_FLAGS_INTEGER UINT32_C(0x0100000F)

typedef struct ai_tensor {
  const ai_intq_info_list* klass; /* null for float and fixed point */
  uint32_t flags;                 /* AI_TENSOR_FLAGS_* */
  ai_shape shape;
  ai_stride stride;
  ai_array* data; /* may be shared with other tensors */
} ai_tensor;

struct ai_tensor_list_info; /* ai_network.h; only the lists of a network have one */

typedef struct ai_tensor_list {
  uint16_t size;
  ai_tensor* const* tensors; /* size entries; a null entry is an absent tensor and ends the list */
  const struct ai_tensor_list_info* info;
} ai_tensor_list;

/* Lists of a chain; a network's own chain has the first two. */
#define AI_CHAIN_INPUT 0u
#define AI_CHAIN_OUTPUT 1u
#define AI_CHAIN_WEIGHTS 2u
#define AI_CHAIN_SCRATCH 3u
#define AI_CHAIN_LISTS 4u

typedef struct ai_tensor_chain {
  uint16_t size;
  const ai_tensor_list* chain;
} ai_tensor_chain;

/* --- shapes ------------------------------------------------------------------------------- */

/* The fields of a shape's or stride's first word. */
static inline uint32_t ai_dims_type(uint32_t type_size) {
  return type_size & 0xFFu;
}
static inline uint32_t ai_dims_count(uint32_t type_size) {
  return type_size >> 8;
}

/* Product of all dimensions; 1 for an empty shape. */
static inline ai_size ai_shape_elements(const ai_shape* shape) {
  ai_size elements = 1;
  for (uint32_t i = 0; i < ai_dims_count(shape->type_size); ++i) {
    elements *= shape->data[i];
  }
  return elements;
}

/* --- tensors: null or 0 where the tensor, its array or the entry is absent ------------------- */

static inline ai_array* ai_tensor_array(const ai_tensor* tensor) {
  return tensor != NULL ? tensor->data : NULL;
}
static inline ai_array_format ai_tensor_format(const ai_tensor* tensor) {
  const ai_array* array = ai_tensor_array(tensor);
  return array != NULL ? array->format : 0u;
}
static inline void* ai_tensor_data(const ai_tensor* tensor) {
  const ai_array* array = ai_tensor_array(tensor);
  return array != NULL ? array->data : NULL;
}
/* Elements of the tensor's array. */
static inline ai_size ai_tensor_size(const ai_tensor* tensor) {
  const ai_array* array = ai_tensor_array(tensor);
  return array != NULL ? array->size : 0u;
}
/* Dimension AI_SHAPE_*. */
static inline uint32_t ai_tensor_dim(const ai_tensor* tensor, uint32_t index) {
  const int present = tensor != NULL && tensor->shape.data != NULL &&
                      index < ai_dims_count(tensor->shape.type_size);
  return present ? tensor->shape.data[index] : 0u;
}
/* Bytes between neighbours along AI_SHAPE_*. */
static inline uint32_t ai_tensor_stride(const ai_tensor* tensor, uint32_t index) {
  const int present = tensor != NULL && tensor->stride.data != NULL &&
                      index < ai_dims_count(tensor->stride.type_size);
  return present ? tensor->stride.data[index] : 0u;
}
/* Bytes of one batch item: shape[H] * stride[H]. */
static inline uint32_t ai_tensor_batch_bytes(const ai_tensor* tensor) {
  return ai_tensor_dim(tensor, AI_SHAPE_H) * ai_tensor_stride(tensor, AI_SHAPE_H);
}

/* The scales and zero points; null without quantization. */
static inline const ai_intq_info* ai_tensor_intq(const ai_tensor* tensor) {
  return tensor != NULL && tensor->klass != NULL ? tensor->klass->info : NULL;
}
/* Number of (scale, zero point) entries. */
static inline uint32_t ai_tensor_intq_size(const ai_tensor* tensor) {
  return ai_tensor_intq(tensor) != NULL ? tensor->klass->flags_size >> 16 : 0u;
}
static inline float ai_tensor_scale(const ai_tensor* tensor, uint32_t channel) {
  const int present = channel < ai_tensor_intq_size(tensor) && tensor->klass->info->scale != NULL;
  return present ? tensor->klass->info->scale[channel] : 0.0f;
}
/* The zero point, signed or unsigned as the array's format says. */
static inline int32_t ai_tensor_zeropoint(const ai_tensor* tensor, uint32_t channel) {
  if (channel >= ai_tensor_intq_size(tensor) || tensor->klass->info->zeropoint == NULL) {
    return 0;
  }
  const void* zeropoint = tensor->klass->info->zeropoint;
  return ai_fmt_is_signed(ai_tensor_format(tensor)) ? ((const int8_t*)zeropoint)[channel]
                                                    : ((const uint8_t*)zeropoint)[channel];
}

/* --- lists and chains: null where the list or the entry is absent ----------------------------- */

static inline ai_tensor* ai_tensor_list_get(const ai_tensor_list* list, uint32_t index) {
  return list != NULL && list->tensors != NULL && index < list->size ? list->tensors[index] : NULL;
}
/* Entries before the first absent one: what a walk over the list visits. */
static inline uint32_t ai_tensor_list_count(const ai_tensor_list* list) {
  uint32_t count = 0;
  while (ai_tensor_list_get(list, count) != NULL) {
    ++count;
  }
  return count;
}
static inline const ai_tensor_list* ai_tensor_chain_list(const ai_tensor_chain* chain,
                                                         uint32_t list) {
  return chain != NULL && chain->chain != NULL && list < chain->size ? &chain->chain[list] : NULL;
}
static inline ai_tensor* ai_tensor_chain_get(const ai_tensor_chain* chain, uint32_t list,
                                             uint32_t index) {
  return ai_tensor_list_get(ai_tensor_chain_list(chain, list), index);
}
static inline ai_tensor* ai_tensor_chain_input(const ai_tensor_chain* chain, uint32_t index) {
  return ai_tensor_chain_get(chain, AI_CHAIN_INPUT, index);
}
static inline ai_tensor* ai_tensor_chain_output(const ai_tensor_chain* chain, uint32_t index) {
  return ai_tensor_chain_get(chain, AI_CHAIN_OUTPUT, index);
}
static inline ai_tensor* ai_tensor_chain_weights(const ai_tensor_chain* chain, uint32_t index) {
  return ai_tensor_chain_get(chain, AI_CHAIN_WEIGHTS, index);
}
static inline ai_tensor* ai_tensor_chain_scratch(const ai_tensor_chain* chain, uint32_t index) {
  return ai_tensor_chain_get(chain, AI_CHAIN_SCRATCH, index);
}

#ifdef __cplusplus
}
#endif

#endif
