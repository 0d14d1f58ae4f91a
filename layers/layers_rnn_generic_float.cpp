// SPDX-License-Identifier: MIT
#include "layers/layers_rnn_generic_float.h"

#include <algorithm>
#include <array>
#include <utility>

#include "core/core_mem_manager.h"
#include "kernels/float_product.hpp"
#include "kernels/vector.hpp"
#include "layers/layer_tensors.hpp"

namespace {

using namespace nnlib;

// Blocks of weight rows times a vector, seen unit by unit: gates() gives the results of one unit
// for consecutive gates. Each is a sum from 0 in index order.
template <uint32_t Gates>
using GateSums = std::array<float, Gates>;

// Reads the rows where they are, when a unit asks for its sums.
class RowProduct {
 public:
  RowProduct(const float* rows, uint32_t /*gates*/, uint32_t units, uint32_t length,
             float*& /*heap*/)
      : rows_(rows), units_(units), length_(length) {}

  static constexpr size_t alignment() { return alignof(float); }
  static size_t heap_floats(size_t /*rows*/, uint32_t /*length*/) { return 0; }

  void multiply(const float* x) { x_ = x; }

  template <uint32_t Gates>
  GateSums<Gates> gates(uint32_t unit, uint32_t first = 0) const {
    const size_t gate_pitch = size_t{units_} * length_;
    const float* row = rows_ + first * gate_pitch + size_t{unit} * length_;
    GateSums<Gates> sums = {};
    for (uint32_t k = 0; k < length_; ++k) {
      for (uint32_t g = 0; g < Gates; ++g) {
        sums[g] += row[g * gate_pitch + k] * x_[k];
      }
    }
    return sums;
  }

 private:
  const float* rows_;
  const float* x_ = nullptr;
  uint32_t units_;
  uint32_t length_;
};

// Transposes the rows once into the heap block, then computes the sums of all units side by side.
class TransposedProduct {
 public:
  TransposedProduct(const float* rows, uint32_t gates, uint32_t units, uint32_t length,
                    float*& heap)
      : columns_(heap), rows_(size_t{gates} * units), units_(units), length_(length) {
    transpose_f32(columns_, rows, rows_, length_);
    heap += heap_floats(rows_, length);
  }

  static constexpr size_t alignment() { return 64; }  // a cache line
  static size_t heap_floats(size_t rows, uint32_t length) { return rows * length + rows; }

  void multiply(const float* x) {
    product_f32(sums(), rows_, {x, length_, 1}, {columns_, 1, rows_}, 1, rows_, length_);
  }

  template <uint32_t Gates>
  GateSums<Gates> gates(uint32_t unit, uint32_t first = 0) const {
    GateSums<Gates> unit_sums;
    for (uint32_t g = 0; g < Gates; ++g) {
      unit_sums[g] = sums()[size_t{first + g} * units_ + unit];
    }
    return unit_sums;
  }

 private:
  float* sums() const { return columns_ + rows_ * length_; }

  float* columns_;
  size_t rows_;
  uint32_t units_;
  uint32_t length_;
};

// The products of one cell: of every gate's kernel with the input and recurrent weights with the
// previous output, but for the last Cell::kLateGates gates, whose recurrent weights wait for a
// vector that the step makes.
template <class Cell, class Product>
struct CellProducts {
  Product input;
  Product recurrent;
  Product late;

  static constexpr uint32_t kEarlyGates = Cell::kGates - Cell::kLateGates;

  CellProducts(const ai_rnn_cell_state& s, float* heap)
      : input(s.kernel, Cell::kGates, s.n_units, s.n_features, heap),
        recurrent(s.recurrent, kEarlyGates, s.n_units, s.n_units, heap),
        late(s.recurrent + size_t{kEarlyGates} * s.n_units * s.n_units, Cell::kLateGates, s.n_units,
             s.n_units, heap) {}

  static size_t heap_floats(uint32_t features, uint32_t units) {
    return Product::heap_floats(size_t{Cell::kGates} * units, features) +
           Product::heap_floats(size_t{kEarlyGates} * units, units) +
           Product::heap_floats(size_t{Cell::kLateGates} * units, units);
  }
};

// Gates are worked out for some units at a time, activation by activation: a processor then
// overlaps the calls, which wait for each other within one unit.
constexpr uint32_t kBlockUnits = 16;
using UnitBlock = float[kBlockUnits];

template <class Function>
void for_unit_blocks(uint32_t units, Function function) {
  for (uint32_t first = 0; first < units; first += kBlockUnits) {
    function(first, std::min(kBlockUnits, units - first));
  }
}

void activate(ai_activation_fn activation, float* values, uint32_t count) {
  for (uint32_t i = 0; i < count; ++i) {
    values[i] = activation(values[i]);
  }
}

struct LstmCell {
  using Layer = ai_layer_lstm;
  enum Gate : uint32_t { kInput, kForget, kCandidate, kOutput, kGates };
  static constexpr uint32_t kLateGates = 0;
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

  template <class Products>
  static void step(const float* x, ai_rnn_cell_state& s, Products& products) {
    products.input.multiply(x);
    products.recurrent.multiply(s.h_prev);
    for_unit_blocks(s.n_units,
                    [&](uint32_t first, uint32_t count) { step_block(s, products, first, count); });
    std::swap(s.h_prev, s.h_next);
  }

  template <class Products>
  static void step_block(ai_rnn_cell_state& s, const Products& products, uint32_t first,
                         uint32_t count) {
    const uint32_t units = s.n_units;
    const float* bias = s.bias + first;
    const float* input_peephole = s.peephole + first;
    const float* output_peephole = input_peephole + units;
    const float* forget_peephole = output_peephole + units;
    float* c = s.c + first;
    float* h = s.h_next + first;
    UnitBlock i, f, g, o;
    for (uint32_t u = 0; u < count; ++u) {
      const auto wx = products.input.template gates<kGates>(first + u);
      const auto rh = products.recurrent.template gates<kGates>(first + u);
      const auto sum = [&](Gate gate, const float* peephole) {
        return (c[u] * peephole[u] + bias[gate * units + u]) + (rh[gate] + wx[gate]);
      };
      i[u] = sum(kInput, input_peephole);
      f[u] = sum(kForget, forget_peephole);
      g[u] = sum(kCandidate, forget_peephole);
      o[u] = rh[kOutput] + wx[kOutput];
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

  template <class Products>
  static void update_and_reset(const ai_rnn_cell_state& s, const Products& products, uint32_t first,
                               uint32_t count, float* r) {
    const uint32_t units = s.n_units;
    const float* bias = s.bias + first;
    float* z = s.h_next + first;
    for (uint32_t u = 0; u < count; ++u) {
      const auto wx = products.input.template gates<2>(first + u);
      const auto rh = products.recurrent.template gates<2>(first + u);
      z[u] = rh[kUpdate] + bias[kUpdate * units + u] + wx[kUpdate];
      r[u] = rh[kReset] + bias[kReset * units + u] + wx[kReset];
    }
    activate(s.recurrent_activation, z, count);
    activate(s.recurrent_activation, r, count);
  }

  // n holds the candidate's recurrent term.
  template <class Products>
  static void output(const ai_rnn_cell_state& s, const Products& products, uint32_t first,
                     uint32_t count, UnitBlock& n) {
    const float* bias = s.bias + size_t{kCandidate} * s.n_units + first;
    const float* h = s.h_prev + first;
    float* z = s.h_next + first;
    for (uint32_t u = 0; u < count; ++u) {
      n[u] = n[u] + bias[u] + products.input.template gates<1>(first + u, kCandidate)[0];
    }
    activate(s.activation, n, count);
    for (uint32_t u = 0; u < count; ++u) {
      z[u] = n[u] * (1.0f - z[u]) + h[u] * z[u];
    }
  }
};

struct GruCellBefore : GruCell {
  static constexpr uint32_t kLateGates = 1;
  static constexpr uint32_t kStates = 3;

  static void set_up(const Layer&, float* third_state, ai_rnn_cell_state& s) { s.rh = third_state; }

  template <class Products>
  static void step(const float* x, ai_rnn_cell_state& s, Products& products) {
    products.input.multiply(x);
    products.recurrent.multiply(s.h_prev);
    update_and_reset(s, products, 0, s.n_units, s.rh);
    for (uint32_t u = 0; u < s.n_units; ++u) {
      s.rh[u] = s.rh[u] * s.h_prev[u];
    }
    products.late.multiply(s.rh);
    for_unit_blocks(s.n_units, [&](uint32_t first, uint32_t count) {
      UnitBlock n;
      for (uint32_t u = 0; u < count; ++u) {
        n[u] = products.late.template gates<1>(first + u)[0];
      }
      output(s, products, first, count, n);
    });
    std::swap(s.h_prev, s.h_next);
  }
};

struct GruCellAfter : GruCell {
  static constexpr uint32_t kLateGates = 0;
  static constexpr uint32_t kStates = 2;

  static void set_up(const Layer&, float*, ai_rnn_cell_state&) {}

  template <class Products>
  static void step(const float* x, ai_rnn_cell_state& s, Products& products) {
    products.input.multiply(x);
    products.recurrent.multiply(s.h_prev);
    for_unit_blocks(s.n_units, [&](uint32_t first, uint32_t count) {
      UnitBlock r, n;
      update_and_reset(s, products, first, count, r);
      for (uint32_t u = 0; u < count; ++u) {
        n[u] = r[u] * products.recurrent.template gates<1>(first + u, kCandidate)[0];
      }
      output(s, products, first, count, n);
    });
    std::swap(s.h_prev, s.h_next);
  }
};

// What is fastest from the second step on: a single step reads each weight once, as would its
// transposition.
#if NNLIB_VECTOR_LANES > 1
using SequenceProduct = TransposedProduct;
#else
using SequenceProduct = RowProduct;
#endif

template <class Cell, class Product>
size_t heap_size(uint32_t features, uint32_t units) {
  const size_t floats =
      size_t{Cell::kStates} * units + CellProducts<Cell, Product>::heap_floats(features, units);
  return floats * sizeof(float) + (Product::alignment() - alignof(float));
}

template <size_t Alignment>
float* aligned(float* p) {
  const size_t past = reinterpret_cast<uintptr_t>(p) % Alignment;
  return past == 0 ? p : p + (Alignment - past) / sizeof(float);
}

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

template <class Cell, class Product>
void run_steps(const typename Cell::Layer& layer, uint32_t features, float* heap) {
  const float* in = tensor_data<const float>(layer_input(layer.base));
  float* out = tensor_data<float>(layer_output(layer.base));
  const uint32_t steps = map_dims(layer_input(layer.base)).height;
  const bool sequence = map_dims(layer_output(layer.base)).height >= 2;
  ai_rnn_cell_state s = start<Cell>(layer, static_cast<uint16_t>(features), heap);
  CellProducts<Cell, Product> products(
      s, aligned<Product::alignment()>(heap + size_t{Cell::kStates} * s.n_units));
  for (uint32_t i = 0; i < steps; ++i) {
    const uint32_t t = layer.go_backwards != 0 ? steps - 1 - i : i;
    Cell::step(in + size_t{t} * s.n_features, s, products);
    if (sequence) {
      const uint32_t slot = layer.reverse != 0 ? steps - 1 - i : i;
      std::copy_n(s.h_prev, s.n_units, out + size_t{slot} * s.n_units);
    }
  }
  if (!sequence) {
    std::copy_n(s.h_prev, s.n_units, out);
  }
}

// False when there is no heap for it.
template <class Cell, class Product>
bool forward_with(const typename Cell::Layer& layer, uint32_t features) {
  void* heap = core_mem_alloc(heap_size<Cell, Product>(features, layer.n_units));
  if (heap == nullptr) {
    return false;
  }
  run_steps<Cell, Product>(layer, features, static_cast<float*>(heap));
  core_mem_free(heap);
  return true;
}

template <class Cell>
void forward(ai_layer* base) {
  const auto& layer = layer_record<typename Cell::Layer>(base);
  const MapDims in = map_dims(layer_input(*base));
  if (in.height < 2 || !forward_with<Cell, SequenceProduct>(layer, in.channels)) {
    forward_with<Cell, RowProduct>(layer, in.channels);
  }
}

template <class Cell>
void step_on_rows(const float* x, ai_rnn_cell_state* s) {
  CellProducts<Cell, RowProduct> products(*s, nullptr);
  Cell::step(x, *s, products);
}

}  // namespace

void lstm_cell(const float* x, ai_rnn_cell_state* s) {
  step_on_rows<LstmCell>(x, s);
}

void gru_cell_before(const float* x, ai_rnn_cell_state* s) {
  step_on_rows<GruCellBefore>(x, s);
}

void gru_cell_after(const float* x, ai_rnn_cell_state* s) {
  step_on_rows<GruCellAfter>(x, s);
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

size_t ai_lstm_heap_size(uint32_t n_features, uint32_t n_units) {
  return heap_size<LstmCell, SequenceProduct>(n_features, n_units);
}

size_t ai_gru_heap_size(uint32_t n_features, uint32_t n_units, bool reset_after) {
  return reset_after ? heap_size<GruCellAfter, SequenceProduct>(n_features, n_units)
                     : heap_size<GruCellBefore, SequenceProduct>(n_features, n_units);
}
