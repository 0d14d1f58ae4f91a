// SPDX-License-Identifier: MIT
// The float layers that are not products of matrices.
#include "bench/layer.hpp"
#include "core/ai_math_helpers.h"
#include "layers/layers_eltwise_generic_float.h"
#include "layers/layers_nl_generic_float.h"
#include "layers/layers_pool_generic_float.h"
#include "layers/layers_rnn_generic_float.h"
#include "layers/layers_sm_generic_float.h"

namespace bench {
namespace {

constexpr const char* kContestant = "float32";
constexpr nnlib::dims kLong = {1, 65536, 1, 1};

template <class Record>
std::shared_ptr<Layer<Record>> float_layer(ai_layer_forward forward,
                                           std::initializer_list<nnlib::dims> inputs,
                                           nnlib::dims output,
                                           std::initializer_list<nnlib::dims> weights = {}) {
  auto layer = std::make_shared<Layer<Record>>(forward);
  for (const nnlib::dims& dims : inputs) {
    layer->add(AI_CHAIN_INPUT, AI_ARRAY_FORMAT_FLOAT, dims);
  }
  layer->add(AI_CHAIN_OUTPUT, AI_ARRAY_FORMAT_FLOAT, output);
  for (const nnlib::dims& dims : weights) {
    layer->add(AI_CHAIN_WEIGHTS, AI_ARRAY_FORMAT_FLOAT, dims);
  }
  return layer;
}

void add_recurrent() {
  const auto [steps, features, units] = kRecurrentShape;
  const nnlib::dims in = {1, features, 1, steps}, out = {1, units, 1, steps};
  auto lstm = float_layer<ai_layer_lstm>(
      forward_lstm, {in}, out,
      {{features, units, 4, 1}, {units, units, 4, 1}, {units, 3, 1, 1}, {units, 4, 1, 1}});
  lstm->record.n_units = units;
  lstm->record.activation = lstm->record.out_activation = ai_math_tanh;
  lstm->record.recurrent_activation = ai_math_sigmoid;
  add_layer("LSTM", kContestant, lstm);
  auto gru = float_layer<ai_layer_gru>(
      forward_gru, {in}, out, {{features, units, 3, 1}, {units, units, 3, 1}, {units, 3, 1, 1}});
  gru->record.n_units = units;
  gru->record.activation = ai_math_tanh;
  gru->record.recurrent_activation = ai_math_sigmoid;
  add_layer("GRU", kContestant, gru);
}

void add_pool(const char* name, ai_layer_forward forward) {
  auto layer = float_layer<ai_layer_pool>(forward, {{1, 64, 32, 32}}, {1, 64, 16, 16});
  std::fill_n(layer->record.pool_size, 2, 2u);
  std::fill_n(layer->record.pool_stride, 2, 2u);
  layer->record.pool_pad = layer->square_pads(0);
  add_layer(name, kContestant, layer);
}

void add_elementwise(const char* name, ai_layer_forward forward, nnlib::dims dims) {
  add_layer(name, kContestant, float_layer<ai_layer_nl>(forward, {dims}, dims));
}

}  // namespace

void add_float_layers() {
  add_recurrent();
  add_pool("max pool 2x2, 32x32x64", forward_mp);
  add_pool("average pool 2x2, 32x32x64", forward_ap);
  add_elementwise("softmax 1000", forward_sm, {1, 1000, 1, 1});
  add_elementwise("sigmoid 65536", forward_sigmoid, kLong);
  add_elementwise("tanh 65536", forward_tanh, kLong);
  add_elementwise("exp 65536", forward_exp, kLong);
  add_elementwise("relu 65536", forward_relu, kLong);
  auto sum = float_layer<ai_layer_eltwise>(forward_eltwise, {kLong, kLong}, kLong);
  sum->record.operation = ai_sum;
  add_layer("add 65536", kContestant, sum);
}

}  // namespace bench
