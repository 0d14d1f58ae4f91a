// SPDX-License-Identifier: MIT
#include "layers/layers.h"

namespace {

constexpr uint32_t kCustomTypesCount = 3;

constexpr const char* type_name(uint32_t type) {
#define TYPE_NAME(name, id) \
  case id:                  \
    return #name;
  switch (type) {
    AI_LAYER_TYPES(TYPE_NAME)
    default:
      return "";
  }
#undef TYPE_NAME
}

}  // namespace

ai_layer* ai_layers_forward_layer(ai_layer* layer) {
  layer->forward(layer);
  return ai_layer_next(layer);
}

void ai_layers_forward_all(ai_network* network) {
  if (network->layers == nullptr) {
    return;
  }
  ai_layer* layer = network->layers;
  while (layer != nullptr) {
    network->current_layer = layer;
    layer = ai_layers_forward_layer(layer);
  }
  network->current_layer = nullptr;
}

const char* ai_layer_type_name(uint32_t type) {
  return type_name(type);
}

bool ai_layer_type_is_valid(uint32_t type) {
  return type_name(type)[0] != '\0';
}

bool ai_check_custom_types(const uint32_t* signature) {
  return signature != nullptr && (*signature & 0xFFu) == kCustomTypesCount &&
         *signature == AI_CUSTOM_TYPES_SIGNATURE;
}
