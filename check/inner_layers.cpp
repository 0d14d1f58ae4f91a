// SPDX-License-Identifier: MIT
#include "check/inner_layers.hpp"

#include "check/layer_check.hpp"
#include "check/public_functions.hpp"
#include "check/walk.hpp"

namespace nnlib {
namespace {

// One time step of a sequence tensor.
class StepTensor {
 public:
  explicit StepTensor(const ai_tensor& sequence) : array_(*sequence.data), tensor_(sequence) {
    for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) {
      shape_[i] = i == AI_SHAPE_H ? 1 : sequence.shape.data[i];
    }
    tensor_.data = &array_;
    tensor_.shape.data = shape_;
    array_.size = ai_shape_elements(&tensor_.shape);
    array_.data_start = array_.data;  // each step starts anew
  }
  StepTensor(const StepTensor&) = delete;
  StepTensor& operator=(const StepTensor&) = delete;

  ai_tensor* tensor() { return &tensor_; }
  const ai_array* array() const { return &array_; }

 private:
  uint32_t shape_[AI_SHAPE_DIMS];
  ai_array array_;
  ai_tensor tensor_;
};

// A layer's chain with other tensors as the first input or output.
class StandInChain {
 public:
  explicit StandInChain(const ai_tensor_chain* chain) {
    const uint32_t lists = chain != nullptr && chain->chain != nullptr ? chain->size : 0;
    chain_ = {static_cast<uint16_t>(lists < AI_CHAIN_LISTS ? lists : AI_CHAIN_LISTS), lists_};
    for (uint32_t i = 0; i < chain_.size; ++i) {
      lists_[i] = chain->chain[i];
    }
  }
  StandInChain(const StandInChain&) = delete;
  StandInChain& operator=(const StandInChain&) = delete;

  // False when the list has no first tensor or too many of them.
  bool replace(uint32_t list, ai_tensor* tensor) {
    ai_tensor_list& replaced = lists_[list];
    if (list >= chain_.size || replaced.tensors == nullptr || replaced.size == 0 ||
        replaced.size > AI_TIME_DISTRIBUTED_LIST_MAX) {
      return false;
    }
    for (uint32_t i = 0; i < replaced.size; ++i) {
      tensors_[list][i] = i == 0 ? tensor : replaced.tensors[i];
    }
    replaced.tensors = tensors_[list];
    return true;
  }
  uint32_t size(uint32_t list) const { return list < chain_.size ? lists_[list].size : 0; }
  const ai_tensor_chain* chain() const { return &chain_; }

 private:
  ai_tensor_chain chain_;
  ai_tensor_list lists_[AI_CHAIN_LISTS] = {};
  ai_tensor* tensors_[2][AI_TIME_DISTRIBUTED_LIST_MAX] = {};
};

void replace_first(StandInChain& chain, uint32_t list, StepTensor& step, Report& report) {
  if (!chain.replace(list, step.tensor())) {
    Finding(report) << "the layer has " << chain.size(list)
                    << (list == AI_CHAIN_INPUT ? " inputs" : " outputs")
                    << ", inside a time-distributed layer 1 to " << AI_TIME_DISTRIBUTED_LIST_MAX
                    << " are possible, else it faults";
  }
}

void check_inner_layers(const LayerCheck& outer, Report& report) {
  const ai_layer* first = outer.record<ai_layer_time_distributed>().inner;
  const ai_tensor* input = outer.sound(AI_CHAIN_INPUT);
  const ai_tensor* output = outer.sound(AI_CHAIN_OUTPUT);
  if (first == nullptr || input == nullptr || output == nullptr) {
    return;
  }
  const Place place = report.place();
  const WalkLength length = length_of(Walk(first));
  if (!length.ends) {
    Finding(report) << "the list of inner layers does not end: behind inner layer "
                    << length.layers - 1 << " comes inner layer " << length.back_to;
  }
  StepTensor in(*input);
  StepTensor out(*output);
  const Scope& around = outer.scope();
  const Scope scope = {around.network,
                       {{in.array(), input, around.binds(*input->data)},
                        {out.array(), output, around.binds(*output->data)}}};
  Walk walk(first);
  for (uint32_t i = 0; i < length.layers; ++i, walk.step()) {
    const ai_layer& inner = *walk.layer();
    report.enter({place.layer, i, place.function});
    StandInChain chain(inner.tensor_chain);
    if (i == 0) {
      replace_first(chain, AI_CHAIN_INPUT, in, report);
    }
    if (i + 1 == length.layers) {
      replace_first(chain, AI_CHAIN_OUTPUT, out, report);
    }
    check_layer(scope, inner, chain.chain(), report.place(), report);
  }
  report.enter(place);
}

}  // namespace

void check_layer(const Scope& scope, const ai_layer& layer, const ai_tensor_chain* chain,
                 const Place& place, Report& report) {
  const LayerRule* rule = find_layer_rule(layer.forward);
  report.enter({place.layer, place.inner, rule != nullptr ? rule->name : ""});
  if (layer.forward == nullptr) {
    Finding(report) << "the layer of type " << TypeName{layer.type}
                    << " has no function, the pointer is null";
    return;
  }
  LayerCheck check(scope, layer, chain, rule, report);
  check.run();
  if (layer.forward == forward_time_distributed && has_type_of(layer, *rule)) {
    if (place.inner == AI_CHECK_NO_LAYER) {
      check_inner_layers(check, report);
    } else {
      Finding(report) << "time-distributed layers stand inside one another, the inner layers of"
                         " the second are not looked at";
    }
  }
}

}  // namespace nnlib
