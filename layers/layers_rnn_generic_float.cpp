// SPDX-License-Identifier: MIT
#include "layers/layers_rnn_generic_float.h"

#include <algorithm>
#include <utility>

#include "core/core_mem_manager.h"
#include "kernels/exact_arrays.hpp"
#include "kernels/float_product.hpp"
#include "kernels/vector.hpp"
#include "layers/layer_tensors.hpp"

namespace {

using namespace nnlib;

constexpr bool kHasVectors = NNLIB_VECTOR_LANES > 1;

// Gates are worked out for some units at a time: their sums and activations rest on the stack.
constexpr uint32_t kBlockUnits = kHasVectors ? 64 : 8;
using UnitBlock = float[kBlockUnits];

template <class Function>
void for_unit_blocks(uint32_t units, Function function) {
  for (uint32_t first = 0; first < units; first += kBlockUnits) {
    function(first, std::min(kBlockUnits, units - first));
  }
}

using ArrayFunction = void (*)(float* out, const float* in, size_t count);

// What computes many at once, or null. (A target without would link the functions in vain.)
ArrayFunction of_arrays(ai_activation_fn activation) {
  if constexpr (kHasExactArrays) {
    return activation == ai_math_sigmoid ? sigmoid_f32
           : activation == ai_math_tanh  ? tanh_f32
           : activation == ai_math_exp   ? exp_f32
                                         : nullptr;
  }
  return nullptr;
}

void activate(ai_activation_fn activation, float* values, uint32_t count) {
  if (const ArrayFunction function = of_arrays(activation); function != nullptr) {
    function(values, values, count);
    return;
  }
  for (uint32_t i = 0; i < count; ++i) {
    values[i] = activation(values[i]);
  }
}

// One step's input.
struct StepInput {
  const float* x;     // F features
  const float* sums;  // W.x of every gate and unit, when they have been made already, or null
};

// Units `first` to `first + count - 1` of a gate.
struct GateUnits {
  uint32_t gate, first, count;

  size_t row(const ai_rnn_cell_state& s) const { return size_t{gate} * s.n_units + first; }
};

// R.h, or R times what stands for h.
void recurrent_sums(float* sums, const ai_rnn_cell_state& s, const float* h, GateUnits of) {
  vector_product_f32(sums, h, s.recurrent + of.row(s) * s.n_units, s.n_units, of.count, s.n_units);
}

// W.x; made in `buffer` when they are not there.
const float* input_sums(UnitBlock& buffer, const ai_rnn_cell_state& s, const StepInput& in,
                        GateUnits of) {
  if (in.sums != nullptr) {
    return in.sums + of.row(s);
  }
  vector_product_f32(buffer, in.x, s.kernel + of.row(s) * s.n_features, s.n_features, of.count,
                     s.n_features);
  return buffer;
}

struct LstmCell {
  using Layer = ai_layer_lstm;
  enum Gate : uint32_t { kInput, kForget, kCandidate, kOutput, kGates };
  static constexpr uint32_t kStates = 3;  // of U floats
  static constexpr uint32_t kBiasTensor = 3;

  static void set_up(const Layer& layer, float* third_state, ai_rnn_cell_state& s) {
    if (layer.out_activation == nullptr) {
      core_fault();
    }
    s.peephole = tensor_data<const float>(layer_weights(layer.base, 2));
    s.c = third_state;
    s.out_activation = layer.out_activation;
  }

  static void step(const StepInput& in, ai_rnn_cell_state& s) {
    for_unit_blocks(s.n_units,
                    [&](uint32_t first, uint32_t count) { step_block(in, s, first, count); });
    std::swap(s.h_prev, s.h_next);
  }

  // R.h + W.x
  static void sums(UnitBlock& sums, const ai_rnn_cell_state& s, const StepInput& in, GateUnits of) {
    UnitBlock buffer;
    recurrent_sums(sums, s, s.h_prev, of);
    const float* wx = input_sums(buffer, s, in, of);
    for (uint32_t u = 0; u < of.count; ++u) {
      sums[u] += wx[u];
    }
  }

  static void step_block(const StepInput& in, ai_rnn_cell_state& s, uint32_t first,
                         uint32_t count) {
    const uint32_t units = s.n_units;
    const float* bias = s.bias + first;
    const float* input_peephole = s.peephole + first;
    const float* output_peephole = input_peephole + units;
    const float* forget_peephole = output_peephole + units;
    float* c = s.c + first;
    float* h = s.h_next + first;
    UnitBlock gates[kGates];
    for (uint32_t gate = 0; gate < kGates; ++gate) {
      sums(gates[gate], s, in, {gate, first, count});
    }
    auto& [i, f, g, o] = gates;
    for (uint32_t u = 0; u < count; ++u) {
      i[u] = (c[u] * input_peephole[u] + bias[kInput * units + u]) + i[u];
      f[u] = (c[u] * forget_peephole[u] + bias[kForget * units + u]) + f[u];
      g[u] = (c[u] * forget_peephole[u] + bias[kCandidate * units + u]) + g[u];
    }
    activate(s.recurrent_activation, i, count);
    activate(s.recurrent_activation, f, count);
    activate(s.activation, g, count);
    for (uint32_t u = 0; u < count; ++u) {
      c[u] = i[u] * g[u] + f[u] * c[u];
      o[u] = (c[u] * output_peephole[u] + bias[kOutput * units + u]) + o[u];
      h[u] = c[u];
    }
    activate(s.recurrent_activation, o, count);
    activate(s.out_activation, h, count);
    for (uint32_t u = 0; u < count; ++u) {
      h[u] = h[u] * o[u];
    }
  }
};

// h_next holds z until the output takes its place.
struct GruCell {
  using Layer = ai_layer_gru;
  enum Gate : uint32_t { kUpdate, kReset, kCandidate, kGates };
  static constexpr uint32_t kBiasTensor = 2;

  // sums + B + W.x, from left to right
  static void add_input(float* sums, const ai_rnn_cell_state& s, const StepInput& in,
                        GateUnits of) {
    UnitBlock buffer;
    const float* wx = input_sums(buffer, s, in, of);
    const float* bias = s.bias + of.row(s);
    for (uint32_t u = 0; u < of.count; ++u) {
      sums[u] = sums[u] + bias[u] + wx[u];
    }
  }

  static void gate(float* out, const ai_rnn_cell_state& s, const StepInput& in, GateUnits of) {
    recurrent_sums(out, s, s.h_prev, of);
    add_input(out, s, in, of);
    activate(s.recurrent_activation, out, of.count);
  }

  // n holds the candidate's recurrent term.
  static void output(const ai_rnn_cell_state& s, const StepInput& in, UnitBlock& n, uint32_t first,
                     uint32_t count) {
    const float* h = s.h_prev + first;
    float* z = s.h_next + first;
    add_input(n, s, in, {kCandidate, first, count});
    activate(s.activation, n, count);
    for (uint32_t u = 0; u < count; ++u) {
      z[u] = n[u] * (1.0f - z[u]) + h[u] * z[u];
    }
  }
};

struct GruCellBefore : GruCell {
  static constexpr uint32_t kStates = 3;

  static void set_up(const Layer&, float* third_state, ai_rnn_cell_state& s) { s.rh = third_state; }

  static void step(const StepInput& in, ai_rnn_cell_state& s) {
    for_unit_blocks(s.n_units, [&](uint32_t first, uint32_t count) {
      gate(s.h_next + first, s, in, {kUpdate, first, count});
      gate(s.rh + first, s, in, {kReset, first, count});
      for (uint32_t u = first; u < first + count; ++u) {
        s.rh[u] = s.rh[u] * s.h_prev[u];
      }
    });
    for_unit_blocks(s.n_units, [&](uint32_t first, uint32_t count) {
      UnitBlock n;
      recurrent_sums(n, s, s.rh, {kCandidate, first, count});
      output(s, in, n, first, count);
    });
    std::swap(s.h_prev, s.h_next);
  }
};

struct GruCellAfter : GruCell {
  static constexpr uint32_t kStates = 2;

  static void set_up(const Layer&, float*, ai_rnn_cell_state&) {}

  static void step(const StepInput& in, ai_rnn_cell_state& s) {
    for_unit_blocks(s.n_units, [&](uint32_t first, uint32_t count) {
      UnitBlock r, n;
      gate(s.h_next + first, s, in, {kUpdate, first, count});
      gate(r, s, in, {kReset, first, count});
      recurrent_sums(n, s, s.h_prev, {kCandidate, first, count});
      for (uint32_t u = 0; u < count; ++u) {
        n[u] = r[u] * n[u];
      }
      output(s, in, n, first, count);
    });
    std::swap(s.h_prev, s.h_next);
  }
};

// W.x of some steps at once, where there are vectors: a matrix product takes a fraction of the time
// that single ones do, which turn their weights in registers again for each.
class InputsAhead {
 public:
  InputsAhead(const ai_rnn_cell_state& s, const float* in, size_t gates, uint32_t steps,
              bool backwards)
      : kernel_(s.kernel),
        in_(in),
        features_(s.n_features),
        rows_(gates * s.n_units),
        most_(rows_ == 0 ? 0 : static_cast<uint32_t>(kFloats / rows_)),
        steps_(steps),
        backwards_(backwards) {}

  // Of step t and of those that follow it.
  StepInput at(uint32_t t) {
    const float* x = in_ + t * features_;
    if constexpr (kHasVectors) {
      if (most_ > 1 && steps_ > 1) {
        if (t - first_ >= count_) {
          make(t);
        }
        return {x, sums_ + (t - first_) * rows_};
      }
    }
    return {x, nullptr};
  }

 private:
  static constexpr size_t kFloats = kHasVectors ? 2048 : 1;

  void make(uint32_t t) {
    count_ = std::min(most_, backwards_ ? t + 1 : steps_ - t);
    first_ = backwards_ ? t + 1 - count_ : t;
    product_f32(sums_, rows_, {in_ + first_ * features_, features_, 1}, {kernel_, features_, 1},
                count_, rows_, features_);
  }

  const float* kernel_;
  const float* in_;
  size_t features_;
  size_t rows_;
  uint32_t most_;  // steps that fit
  uint32_t steps_;
  bool backwards_;
  uint32_t first_ = 0;
  uint32_t count_ = 0;
  float sums_[kFloats];
};

ai_activation_fn or_identity(ai_activation_fn activation) {
  return activation != nullptr ? activation : func_dummy;
}

// The state before the first step; heap holds Cell::kStates blocks of U floats.
template <class Cell>
ai_rnn_cell_state start(const typename Cell::Layer& layer, uint16_t features, float* heap) {
  const auto units = static_cast<uint16_t>(layer.n_units);
  ai_rnn_cell_state s = {};
  s.kernel = tensor_data<const float>(layer_weights(layer.base, 0));
  s.recurrent = tensor_data<const float>(layer_weights(layer.base, 1));
  s.bias = tensor_data<const float>(layer_weights(layer.base, Cell::kBiasTensor));
  s.activation = or_identity(layer.activation);
  s.recurrent_activation = or_identity(layer.recurrent_activation);
  s.h_prev = heap;
  s.h_next = heap + units;
  s.n_features = features;
  s.n_units = units;
  std::fill_n(heap, size_t{Cell::kStates} * units, 0.0f);
  Cell::set_up(layer, heap + size_t{2} * units, s);
  return s;
}

template <class Cell>
void run_steps(const typename Cell::Layer& layer, float* heap) {
  const float* in = tensor_data<const float>(layer_input(layer.base));
  float* out = tensor_data<float>(layer_output(layer.base));
  const MapDims dims = map_dims(layer_input(layer.base));
  const uint32_t steps = dims.height;
  const bool sequence = map_dims(layer_output(layer.base)).height >= 2;
  const bool backwards = layer.go_backwards != 0;
  ai_rnn_cell_state s = start<Cell>(layer, static_cast<uint16_t>(dims.channels), heap);
  InputsAhead inputs(s, in, Cell::kGates, steps, backwards);
  for (uint32_t i = 0; i < steps; ++i) {
    Cell::step(inputs.at(backwards ? steps - 1 - i : i), s);
    if (sequence) {
      const uint32_t slot = layer.reverse != 0 ? steps - 1 - i : i;
      std::copy_n(s.h_prev, s.n_units, out + size_t{slot} * s.n_units);
    }
  }
  if (!sequence) {
    std::copy_n(s.h_prev, s.n_units, out);
  }
}

// A call of its own: where one layer leads to another, only one's frame is on the stack.
template <class Cell>
NNLIB_NOINLINE void forward(ai_layer* base) {
  const auto& layer = layer_record<typename Cell::Layer>(base);
  void* heap = core_mem_alloc(size_t{Cell::kStates} * layer.n_units * sizeof(float));
  if (heap != nullptr) {
    run_steps<Cell>(layer, static_cast<float*>(heap));
    core_mem_free(heap);
  }
}

}  // namespace

void lstm_cell(const float* x, ai_rnn_cell_state* s) {
  LstmCell::step({x, nullptr}, *s);
}

void gru_cell_before(const float* x, ai_rnn_cell_state* s) {
  GruCellBefore::step({x, nullptr}, *s);
}

void gru_cell_after(const float* x, ai_rnn_cell_state* s) {
  GruCellAfter::step({x, nullptr}, *s);
}

void forward_lstm(ai_layer* layer) {
  forward<LstmCell>(layer);
}

void forward_gru(ai_layer* layer) {
  if (layer_record<ai_layer_gru>(layer).reset_after != 0) {
    _forward_gru_after(layer);
  } else {
    forward<GruCellBefore>(layer);
  }
}

void _forward_gru_after(ai_layer* layer) {
  forward<GruCellAfter>(layer);
}
