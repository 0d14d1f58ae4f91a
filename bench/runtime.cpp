// The runtime's layers, with wide and with narrow vectors.
#include <algorithm>

#include "bench/workloads.hpp"
#include "core/ai_declare.h"
#include "core/ai_math_helpers.h"
#include "kernels/vector.hpp"
#include "layers/layers_conv2d_generic_float.h"
#include "layers/layers_dense_generic_float.h"
#include "layers/layers_eltwise_generic_float.h"
#include "layers/layers_nl_generic_float.h"
#include "layers/layers_pool_generic_float.h"
#include "layers/layers_rnn_generic_float.h"
#include "layers/layers_sm_generic_float.h"

namespace bench {
namespace {

// A tensor with storage of its own.
struct Tensor {
  explicit Tensor(nnlib::dims dims) : floats(dims.elements()), tensor(dims, floats.data()) {}
  Floats floats;
  nnlib::tensor tensor;
};

// A layer of one record type over one input and up to four weight tensors.
template <class Record>
struct Layer {
  Layer(ai_layer_forward forward, nnlib::dims in_, nnlib::dims out_,
        std::initializer_list<nnlib::dims> weights_ = {})
      : in(in_), out(out_) {
    uint16_t count = 0;
    for (const nnlib::dims& dims : weights_) {
      weights[count] = std::make_unique<Tensor>(dims);
      weight_tensors[count] = &weights[count]->tensor;
      ++count;
    }
    lists[2] = {count, weight_tensors, nullptr};
    base() = nnlib::layer(AI_LAYER_TYPE_GENERIC, forward, chain);
  }
  Layer(const Layer&) = delete;

  ai_layer& base() { return reinterpret_cast<ai_layer&>(record); }
  ai_shape square_pads(uint32_t pad) {
    std::fill_n(pads, 4, pad);
    return {AI_DIMS_WORD(AI_SHAPE_TYPE, AI_SHAPE_DIMS), pads};
  }

  Tensor in, out;
  std::unique_ptr<Tensor> weights[4];
  ai_tensor* in_tensors[2] = {&in.tensor, &in.tensor};
  ai_tensor* out_tensors[1] = {&out.tensor};
  ai_tensor* weight_tensors[4] = {};
  ai_tensor_list lists[4] = {{1, in_tensors, nullptr}, {1, out_tensors, nullptr}, {}, {}};
  ai_tensor_chain chain = {4, lists};
  uint32_t pads[4] = {};
  Record record = {};
};

template <class Record>
void add(const std::string& workload, std::shared_ptr<Layer<Record>> layer, double operations = 0) {
  const auto call = [layer] { layer->base().forward(&layer->base()); };
  add_benchmark(workload, "nnlib", operations, call);
  if (nnlib::vector_wide()) {
    add_benchmark(workload, "nnlib narrow", operations, call, false);
  }
}

using Dims = std::initializer_list<nnlib::dims>;

void add_conv(const ConvShape& s) {
  auto layer = std::make_shared<Layer<ai_layer_conv2d>>(
      forward_conv2d, nnlib::dims{1, s.channels, s.size, s.size},
      nnlib::dims{1, s.out_channels(), s.out_size(), s.out_size()},
      Dims{{s.channels, s.taps, s.taps, s.depthwise() ? 1 : s.filters},
           {1, s.out_channels(), 1, 1}});
  ai_layer_conv2d& record = layer->record;
  record.groups = s.depthwise() ? s.channels : 1;
  record.filter_stride[0] = record.filter_stride[1] = s.stride;
  record.dilation[0] = record.dilation[1] = 1;
  record.filter_pad = layer->square_pads(s.pad);
  add(s.name, layer, s.operations());
}

void add_dense(const DenseShape& s) {
  add(s.name,
      std::make_shared<Layer<ai_layer>>(forward_dense, nnlib::dims{1, s.inputs, 1, 1},
                                        nnlib::dims{1, s.outputs, 1, 1},
                                        Dims{{s.inputs, s.outputs, 1, 1}, {1, s.outputs, 1, 1}}),
      2.0 * s.inputs * s.outputs);
}

void add_recurrent() {
  const auto [steps, features, units] = kRecurrentShape;
  const nnlib::dims in = {1, features, 1, steps}, out = {1, units, 1, steps};
  auto lstm = std::make_shared<Layer<ai_layer_lstm>>(
      forward_lstm, in, out,
      Dims{{features, units, 4, 1}, {units, units, 4, 1}, {units, 3, 1, 1}, {units, 4, 1, 1}});
  lstm->record.n_units = units;
  lstm->record.activation = lstm->record.out_activation = ai_math_tanh;
  lstm->record.recurrent_activation = ai_math_sigmoid;
  add("LSTM", lstm);
  auto gru = std::make_shared<Layer<ai_layer_gru>>(
      forward_gru, in, out, Dims{{features, units, 3, 1}, {units, units, 3, 1}, {units, 3, 1, 1}});
  gru->record.n_units = units;
  gru->record.activation = ai_math_tanh;
  gru->record.recurrent_activation = ai_math_sigmoid;
  add("GRU", gru);
}

void add_pool(const char* name, ai_layer_forward forward) {
  auto layer = std::make_shared<Layer<ai_layer_pool>>(forward, nnlib::dims{1, 64, 32, 32},
                                                      nnlib::dims{1, 64, 16, 16});
  std::fill_n(layer->record.pool_size, 2, 2u);
  std::fill_n(layer->record.pool_stride, 2, 2u);
  layer->record.pool_pad = layer->square_pads(0);
  add(name, layer);
}

void add_elementwise(const char* name, ai_layer_forward forward, uint32_t count) {
  const nnlib::dims dims = {1, count, 1, 1};
  add(name, std::make_shared<Layer<ai_layer_nl>>(forward, dims, dims));
}

}  // namespace

void add_runtime() {
  for (const ConvShape& shape : kConvShapes) {
    add_conv(shape);
  }
  for (const DenseShape& shape : kDenseShapes) {
    add_dense(shape);
  }
  add_recurrent();
  add_pool("max pool 2x2, 32x32x64", forward_mp);
  add_pool("average pool 2x2, 32x32x64", forward_ap);
  add_elementwise("softmax 1000", forward_sm, 1000);
  add_elementwise("sigmoid 65536", forward_sigmoid, 65536);
  add_elementwise("tanh 65536", forward_tanh, 65536);
  add_elementwise("exp 65536", forward_exp, 65536);
  add_elementwise("relu 65536", forward_relu, 65536);
  const nnlib::dims dims = {1, 65536, 1, 1};
  auto sum = std::make_shared<Layer<ai_layer_eltwise>>(forward_eltwise, dims, dims);
  sum->lists[0].size = 2;
  sum->record.operation = ai_sum;
  add("add 65536", sum);
}

}  // namespace bench
