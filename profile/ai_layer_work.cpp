// SPDX-License-Identifier: MIT
#include "profile/ai_layer_work.h"

#include <string_view>

#include "check/ai_network_check.h"
#include "layers/layers_conv2d_generic_float.h"
#include "layers/layers_gemm_generic_float.h"
#include "layers/layers_time_distributed_generic_float.h"

namespace {

// The sizes that count. An inner layer of a time-distributed one runs on maps of height 1, whatever
// tensors stand in its chain for them.
struct Work {
  const ai_layer* layer;
  const ai_tensor* in;
  const ai_tensor* out;
  uint64_t in_height;
  uint64_t out_height;

  uint64_t weights(uint32_t index) const {
    const ai_tensor* tensor = ai_tensor_chain_weights(layer->tensor_chain, index);
    return tensor == nullptr ? 0 : ai_shape_elements(&tensor->shape);
  }
  uint64_t kernel(uint32_t dim) const {
    return ai_tensor_dim(ai_tensor_chain_weights(layer->tensor_chain, 0), dim);
  }
};

Work work_of(const ai_layer* layer, bool step_in, bool step_out) {
  const ai_tensor* in = ai_tensor_chain_input(layer->tensor_chain, 0);
  const ai_tensor* out = ai_tensor_chain_output(layer->tensor_chain, 0);
  return {layer, in, out, step_in ? 1 : ai_tensor_dim(in, AI_SHAPE_H),
          step_out ? 1 : ai_tensor_dim(out, AI_SHAPE_H)};
}

// Every weight meets every pixel of the output once; of the input, where that is the smaller map.
uint64_t weights_by_output(const Work& work) {
  return work.weights(0) * ai_tensor_dim(work.out, AI_SHAPE_W) * work.out_height;
}
uint64_t weights_by_input(const Work& work) {
  return work.weights(0) * ai_tensor_dim(work.in, AI_SHAPE_W) * work.in_height;
}

// Places of a kernel along one axis of the padded map.
uint64_t places(uint64_t padded, uint64_t taps, uint32_t stride, uint32_t dilation) {
  const uint64_t extent = taps == 0 ? 0 : (taps - 1) * (dilation & 0xFFFFu) + 1;
  const uint64_t step = stride & 0xFFFFu;
  return extent > padded ? 0 : step == 0 ? 1 : (padded - extent) / step + 1;
}

// The convolved map is not the output, which is pooled.
uint64_t pooled_convolution(const Work& work) {
  const auto& conv = *reinterpret_cast<const ai_layer_conv2d*>(work.layer);
  if (conv.filter_pad.data == nullptr || ai_dims_count(conv.filter_pad.type_size) < 4) {
    return 0;
  }
  const uint32_t* pad = conv.filter_pad.data;  // top, left, bottom, right
  const uint64_t width = uint64_t{pad[1]} + pad[3] + ai_tensor_dim(work.in, AI_SHAPE_W);
  const uint64_t height = uint64_t{pad[0]} + pad[2] + work.in_height;
  return work.weights(0) * places(width, work.kernel(1), conv.filter_stride[0], conv.dilation[0]) *
         places(height, work.kernel(2), conv.filter_stride[1], conv.dilation[1]);
}

uint64_t gemm(const Work& work) {
  const bool transposed = reinterpret_cast<const ai_layer_gemm*>(work.layer)->tA != 0;
  const uint64_t depth = transposed ? work.in_height : ai_tensor_dim(work.in, AI_SHAPE_C);
  return depth * ai_tensor_dim(work.out, AI_SHAPE_C) * work.out_height;
}

uint64_t matmul(const Work& work) {
  return uint64_t{ai_tensor_dim(work.in, AI_SHAPE_W)} * ai_tensor_dim(work.out, AI_SHAPE_N) *
         ai_tensor_dim(work.out, AI_SHAPE_C) * ai_tensor_dim(work.out, AI_SHAPE_W) *
         work.out_height;
}

uint64_t recurrent(const Work& work) {
  return (work.weights(0) + work.weights(1)) * work.in_height;
}

uint64_t multiply_accumulates(const Work& work);

uint64_t time_distributed(const Work& work) {
  const ai_layer* first = reinterpret_cast<const ai_layer_time_distributed*>(work.layer)->inner;
  uint64_t sum = 0;
  for (const ai_layer* inner = first; inner != nullptr; inner = ai_layer_next(inner)) {
    sum += multiply_accumulates(work_of(inner, inner == first, ai_layer_next(inner) == nullptr));
  }
  return sum * work.in_height;
}

// By name, so that counting draws no layer function into a program. The fixed-point and the integer
// function of a family count alike.
constexpr struct {
  std::string_view family;
  uint64_t (*count)(const Work&);
} kCounts[] = {
    {"forward_conv2d", weights_by_output},
    {"forward_conv2d_transpose", weights_by_input},
    {"forward_conv2d_nl_pool", pooled_convolution},
    {"forward_dense", weights_by_output},
    {"forward_time_delay", weights_by_output},
    {"forward_gemm", gemm},
    {"forward_matmul", matmul},
    {"forward_lstm", recurrent},
    {"forward_gru", recurrent},
    {"_forward_gru_after", recurrent},
    {"forward_time_distributed", time_distributed},
};

std::string_view family_of(const ai_layer* layer) {
  std::string_view name = ai_layer_function_name(layer->forward);
  for (const std::string_view suffix : {"_integer", "_fixed"}) {
    if (name.ends_with(suffix)) {
      name.remove_suffix(suffix.size());
    }
  }
  return name;
}

uint64_t multiply_accumulates(const Work& work) {
  const std::string_view family = family_of(work.layer);
  for (const auto& row : kCounts) {
    if (row.family == family) {
      return row.count(work);
    }
  }
  return 0;
}

}  // namespace

uint64_t ai_layer_multiply_accumulates(const ai_layer* layer) {
  return multiply_accumulates(work_of(layer, false, false));
}
