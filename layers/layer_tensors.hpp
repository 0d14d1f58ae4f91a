// SPDX-License-Identifier: MIT
// How forward functions reach the tensors of their layer. A missing list or a missing required
// tensor is a violated contract and faults at once.
#ifndef NNLIB_LAYERS_LAYER_TENSORS_HPP
#define NNLIB_LAYERS_LAYER_TENSORS_HPP

#include "core/ai_layer.h"
#include "core/core_common.h"

namespace nnlib {

// Once for all layers, as each calls them several times.
const ai_tensor_list& layer_list(const ai_layer& layer, uint32_t list);
ai_tensor& layer_tensor(const ai_layer& layer, uint32_t list, uint32_t index = 0);
// Null when the entry is absent.
ai_tensor* optional_tensor(const ai_layer& layer, uint32_t list, uint32_t index);

// Entry 0 of a tensor's quantization, 0 without one.
float tensor_scale(const ai_tensor& tensor);
int32_t tensor_zeropoint(const ai_tensor& tensor);

inline ai_tensor& layer_input(const ai_layer& layer, uint32_t index = 0) {
  return layer_tensor(layer, AI_CHAIN_INPUT, index);
}
inline ai_tensor& layer_output(const ai_layer& layer, uint32_t index = 0) {
  return layer_tensor(layer, AI_CHAIN_OUTPUT, index);
}
inline ai_tensor& layer_weights(const ai_layer& layer, uint32_t index = 0) {
  return layer_tensor(layer, AI_CHAIN_WEIGHTS, index);
}
inline ai_tensor& layer_scratch(const ai_layer& layer, uint32_t index = 0) {
  return layer_tensor(layer, AI_CHAIN_SCRATCH, index);
}

// The tensor's elements as T, from its array's data pointer on.
template <class T>
T* tensor_data(const ai_tensor& tensor) {
  return static_cast<T*>(tensor.data->data);
}

// The layer kind's record, which starts with the base record.
template <class Record>
Record& layer_record(ai_layer* layer) {
  static_assert(offsetof(Record, base) == 0);
  return *reinterpret_cast<Record*>(layer);
}

struct MapDims {
  uint32_t channels;
  uint32_t width;
  uint32_t height;
};

inline MapDims map_dims(const ai_tensor& tensor) {
  return {tensor.shape.data[AI_SHAPE_C], tensor.shape.data[AI_SHAPE_W],
          tensor.shape.data[AI_SHAPE_H]};
}

}  // namespace nnlib

#endif
