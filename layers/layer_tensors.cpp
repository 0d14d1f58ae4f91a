// SPDX-License-Identifier: MIT
#include "layers/layer_tensors.hpp"

namespace nnlib {

const ai_tensor_list& layer_list(const ai_layer& layer, uint32_t list) {
  const ai_tensor_list* found = ai_tensor_chain_list(layer.tensor_chain, list);
  if (found == nullptr) {
    core_fault();
  }
  return *found;
}

ai_tensor* optional_tensor(const ai_layer& layer, uint32_t list, uint32_t index) {
  return ai_tensor_list_get(&layer_list(layer, list), index);
}

ai_tensor& layer_tensor(const ai_layer& layer, uint32_t list, uint32_t index) {
  ai_tensor* tensor = optional_tensor(layer, list, index);
  if (tensor == nullptr) {
    core_fault();
  }
  return *tensor;
}

float tensor_scale(const ai_tensor& tensor) {
  return ai_tensor_scale(&tensor, 0);
}

int32_t tensor_zeropoint(const ai_tensor& tensor) {
  return ai_tensor_zeropoint(&tensor, 0);
}

}  // namespace nnlib
