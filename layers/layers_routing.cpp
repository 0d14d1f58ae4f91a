// SPDX-License-Identifier: MIT
#include "layers/layers_routing.h"

#include "layers/layer_tensors.hpp"

using namespace nnlib;

void forward_split(ai_layer* layer) {
  ai_layer_split& split = layer_record<ai_layer_split>(layer);
  if (split.callback != nullptr) {
    split.callback(split.branch_contexts[split.index], split.context);
  }
  layer->next = split.branches[split.index];
  ++split.index;
  if (split.index == split.count) {
    split.index = 0;
  }
}

void forward_add(ai_layer* layer) {
  ai_layer_add& add = layer_record<ai_layer_add>(layer);
  if (add.callback != nullptr) {
    add.callback(add.context, add.branches[add.index]);
  }
  ++add.index;
  if (add.index < add.count) {
    layer->next = add.loop_back;
  } else {
    add.index = 0;
    layer->next = add.continuation;
  }
}
