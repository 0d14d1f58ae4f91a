// SPDX-License-Identifier: MIT
// LSTM and GRU over whole sequences. Their layers take heap while they run.
#include "importer/lower/lowering.hpp"

namespace nnlib::importer {
namespace {

struct Named {
  const char* name;
  Function function;
};

Function activation_named(const std::string& name) {
  static const Named known[] = {{"tanh", NNLIB_FUNCTION(ai_math_tanh)},
                                {"sigmoid", NNLIB_FUNCTION(ai_math_sigmoid)},
                                {"hard_sigmoid", NNLIB_FUNCTION(ai_math_hard_sigmoid)}};
  for (const Named& row : known) {
    if (name == row.name) {
      return row.function;
    }
  }
  throw Unsupported("activation " + name + " is not available",
                    "tanh, sigmoid and hard_sigmoid are");
}

struct Sizes {
  uint32_t features, steps, units, out_steps;
};

Sizes sizes_of(NetworkBuilder& b, const Node& node, uint32_t gates) {
  const Value& x = b.value(node.input(0));
  const Value& y = b.value(node.output());
  const Value& kernel = b.value(node.input(1));
  const Value& recurrent = b.value(node.input(2));
  require(x.rank() == 2 && y.rank() == 2 && kernel.constant() && recurrent.constant(),
          "sequences have to be steps of features, and weights constants");
  const Sizes s{static_cast<uint32_t>(x.shape[1]), static_cast<uint32_t>(x.shape[0]),
                static_cast<uint32_t>(y.shape[1]), static_cast<uint32_t>(y.shape[0])};
  require(s.features <= UINT16_MAX && s.units <= UINT16_MAX, "a dimension exceeds 65535");
  require(kernel.elements() == int64_t{gates} * s.units * s.features &&
              recurrent.elements() == int64_t{gates} * s.units * s.units &&
              (s.out_steps == 1 || s.out_steps == s.steps),
          "weights and sequences do not fit together");
  return s;
}

Tensor& zeros(NetworkBuilder& b, const char* what, uint32_t count) {
  const std::vector<float> elements(count, 0.0F);
  return b.weights<float>(what, flat_dims(count), elements);
}

// Weights in the layer's order; absent ones are zeros.
Tensor& weights_or_zeros(NetworkBuilder& b, ValueId id, const char* what, uint32_t count) {
  if (id == kAbsent) {
    return zeros(b, what, count);
  }
  require(b.value(id).constant() && b.value(id).elements() == count,
          std::string(what) + " do not fit the weights");
  return b.tensor(id, flat_dims(count));
}

// The states of a call and the word before them, on a 32-bit target.
size_t heap_bytes(size_t states, uint32_t units) {
  return states * units * sizeof(float) + sizeof(uint32_t);
}

void connect(NetworkBuilder& b, const Node& node, LayerBuilder& layer, const Sizes& s,
             uint32_t gates) {
  layer.input(b.tensor(node.input(0), {1, s.features, 1, s.steps}))
      .output(b.tensor(node.output(), {1, s.units, 1, s.out_steps}))
      .weights(&b.tensor(node.input(1), flat_dims(uint64_t{gates} * s.units * s.features)))
      .weights(&b.tensor(node.input(2), flat_dims(uint64_t{gates} * s.units * s.units)))
      .macs(uint64_t{gates} * s.steps * s.units * (s.features + s.units));
}

template <class Record>
void set_common(LayerBuilder& layer, const Node& node, const Sizes& s) {
  layer.set(NNLIB_MEMBER(Record, n_units), s.units)
      .set(NNLIB_MEMBER(Record, activation), activation_named(node.text("activation", "tanh")))
      .set(NNLIB_MEMBER(Record, recurrent_activation),
           activation_named(node.text("recurrent_activation", "sigmoid")))
      .set(NNLIB_MEMBER(Record, go_backwards), static_cast<uint8_t>(node.integer("go_backwards")))
      .set(NNLIB_MEMBER(Record, reverse), static_cast<uint8_t>(node.integer("reverse")));
}

void lstm(NetworkBuilder& b, const Node& node) {
  const Sizes s = sizes_of(b, node, 4);
  Tensor& bias = weights_or_zeros(b, node.input(3), "bias", 4 * s.units);
  Tensor& peepholes = weights_or_zeros(b, node.input(4), "peepholes", 3 * s.units);
  LayerBuilder layer = b.layer<ai_layer_lstm>(NNLIB_LAYER_TYPE(LSTM), NNLIB_FUNCTION(forward_lstm));
  connect(b, node, layer, s, 4);
  layer.weights(&peepholes).weights(&bias).heap(heap_bytes(3, s.units));
  set_common<ai_layer_lstm>(layer, node, s);
  layer.set(NNLIB_MEMBER(ai_layer_lstm, out_activation),
            activation_named(node.text("out_activation", "tanh")));
}

void gru(NetworkBuilder& b, const Node& node) {
  const Sizes s = sizes_of(b, node, 3);
  Tensor& bias = weights_or_zeros(b, node.input(3), "bias", 3 * s.units);
  const bool after = node.integer("reset_after") != 0;
  LayerBuilder layer = b.layer<ai_layer_gru>(NNLIB_LAYER_TYPE(GRU), NNLIB_FUNCTION(forward_gru));
  connect(b, node, layer, s, 3);
  layer.weights(&bias)
      .heap(heap_bytes(after ? 2 : 3, s.units))
      .set(NNLIB_MEMBER(ai_layer_gru, reset_after), uint8_t{after});
  set_common<ai_layer_gru>(layer, node, s);
}

constexpr Lowering kRecurrentRows[] = {
    {Op::lstm, lstm, kFloat, "constant weights; states start at 0; takes heap while it runs"},
    {Op::gru, gru, kFloat, "constant weights; states start at 0; takes heap while it runs"},
};

}  // namespace

std::span<const Lowering> recurrent_lowerings() {
  return kRecurrentRows;
}

}  // namespace nnlib::importer
