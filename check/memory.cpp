// SPDX-License-Identifier: MIT
#include "check/memory.hpp"

#include "check/layer_check.hpp"

namespace nnlib {
namespace {

bool list_has_array(const ai_tensor_list* list, const ai_array& array) {
  const uint32_t count = ai_tensor_list_count(list);
  for (uint32_t i = 0; i < count; ++i) {
    if (ai_tensor_list_get(list, i)->data == &array) {
      return true;
    }
  }
  return false;
}

Memory memory_of_elements(const Scope& scope, const ai_array& array, uint64_t elements) {
  const auto first = scope.binds(array) ? 0 : reinterpret_cast<uintptr_t>(array.data);
  const uint64_t bytes = run_bytes(array.format, elements);
  const uintptr_t most = ~first;
  return {&array, first, bytes < most ? static_cast<uintptr_t>(bytes) : most};
}

}  // namespace

bool Scope::binds(const ai_array& array) const {
  for (const Step& step : steps) {
    if (&array == step.array) {
      return step.bound;
    }
  }
  return (array.format & AI_FORMAT_FLAG_COPY) == 0 &&
         (list_has_array(ai_tensor_chain_list(&network.io, AI_CHAIN_INPUT), array) ||
          list_has_array(ai_tensor_chain_list(&network.io, AI_CHAIN_OUTPUT), array));
}

Memory memory_of(const Scope& scope, const ai_tensor& tensor) {
  return memory_of_elements(scope, *tensor.data, elements_of(tensor));
}

Memory memory_in_turn(const Scope& scope, const ai_tensor& tensor) {
  for (const Step& step : scope.steps) {
    if (tensor.data == step.array) {
      return memory_of(scope, *step.sequence);
    }
  }
  return memory_of(scope, tensor);
}

Memory whole_memory_of(const Scope& scope, const ai_tensor& tensor) {
  return memory_of_elements(scope, *tensor.data, tensor.data->size);
}

}  // namespace nnlib
