// SPDX-License-Identifier: MIT
#include "layers/layers_time_distributed_generic_float.h"

#include <algorithm>

#include "core/core_utils.h"
#include "layers/layer_tensors.hpp"
#include "layers/layers.h"

using namespace nnlib;

namespace {

// One time step of a sequence as a tensor of its own.
class StepTensor {
 public:
  explicit StepTensor(const ai_tensor& sequence)
      : start_(tensor_data<uint8_t>(sequence)), bytes_(sequence.stride.data[AI_SHAPE_H]) {
    core_tensor_clone(&tensor_, &sequence);
    core_array_clone(&array_, sequence.data);
    shape_[AI_SHAPE_H] = 1;
    tensor_.data = &array_;
    array_.size = ai_shape_elements(&tensor_.shape);
  }
  StepTensor(const StepTensor&) = delete;
  StepTensor& operator=(const StepTensor&) = delete;

  // Layers that move data along while they run put it back to data_start.
  void point_at(uint32_t step) { array_.data = array_.data_start = start_ + step * bytes_; }

  ai_tensor& tensor() { return tensor_; }

 private:
  uint8_t* start_;
  size_t bytes_;
  uint32_t shape_[AI_SHAPE_DIMS];
  uint32_t stride_[AI_SHAPE_DIMS];
  ai_array array_;
  ai_tensor tensor_ = {nullptr,
                       0,
                       {AI_DIMS_WORD(AI_SHAPE_TYPE, AI_SHAPE_DIMS), shape_},
                       {AI_DIMS_WORD(AI_STRIDE_TYPE, AI_SHAPE_DIMS), stride_},
                       nullptr};
};

// While it lives, a tensor stands first in one list of a layer's chain.
class StandIn {
 public:
  StandIn(ai_layer& layer, uint32_t list, ai_tensor& tensor)
      : layer_(layer), original_(layer.tensor_chain) {
    const ai_tensor_list& replaced = layer_list(layer, list);
    if (replaced.size == 0 || replaced.size > AI_TIME_DISTRIBUTED_LIST_MAX) {
      core_fault();
    }
    chain_ = {static_cast<uint16_t>(std::min<uint32_t>(original_->size, AI_CHAIN_LISTS)), lists_};
    std::copy_n(original_->chain, chain_.size, lists_);
    std::copy_n(replaced.tensors, replaced.size, tensors_);
    tensors_[0] = &tensor;
    lists_[list].tensors = tensors_;
    layer.tensor_chain = &chain_;
  }
  ~StandIn() { layer_.tensor_chain = original_; }
  StandIn(const StandIn&) = delete;
  StandIn& operator=(const StandIn&) = delete;

 private:
  ai_layer& layer_;
  const ai_tensor_chain* original_;
  ai_tensor_chain chain_;
  ai_tensor_list lists_[AI_CHAIN_LISTS];
  ai_tensor* tensors_[AI_TIME_DISTRIBUTED_LIST_MAX];
};

ai_layer& last_layer(ai_layer& first) {
  ai_layer* last = &first;
  while (ai_layer* next = ai_layer_next(last)) {
    last = next;
  }
  return *last;
}

}  // namespace

void forward_time_distributed(ai_layer* layer) {
  ai_layer& first = *layer_record<ai_layer_time_distributed>(layer).inner;
  const ai_tensor& input = layer_input(*layer);
  StepTensor in(input);
  StepTensor out(layer_output(*layer));
  // A single inner layer gets both: the second copy is made of the first.
  const StandIn first_input(first, AI_CHAIN_INPUT, in.tensor());
  const StandIn last_output(last_layer(first), AI_CHAIN_OUTPUT, out.tensor());
  for (uint32_t step = 0; step < input.shape.data[AI_SHAPE_H]; ++step) {
    in.point_at(step);
    out.point_at(step);
    for (ai_layer* inner = &first; inner != nullptr;) {
      inner = ai_layers_forward_layer(inner);
    }
  }
}
