// SPDX-License-Identifier: MIT
// The recurrent layers against loops written from their equations: the same bits, whatever the
// instruction set, and one heap block of the states' size for each call.
#include <gtest/gtest.h>

#include <cmath>

#include "core/ai_math_helpers.h"
#include "layers/layers_rnn_generic_float.h"
#include "nnlib.h"
#include "test/unit/float_sweep.hpp"

namespace {

struct Heap {
  int given = 0;
  int returned = 0;
  size_t bytes = 0;
  bool refuses = false;
} heap;

}  // namespace

extern "C" {
void* __real_core_mem_alloc(size_t size);
void* __wrap_core_mem_alloc(size_t size);
void* __real_core_mem_free(void* p);
void* __wrap_core_mem_free(void* p);

// Blocks are full of NaN, which a state that is not cleared would spread.
void* __wrap_core_mem_alloc(size_t size) {
  if (heap.refuses) {
    return nullptr;
  }
  ++heap.given;
  heap.bytes = size;
  void* block = __real_core_mem_alloc(size);
  return std::memset(block, 0xFF, size);
}
void* __wrap_core_mem_free(void* p) {
  ++heap.returned;
  return __real_core_mem_free(p);
}
}

namespace {

enum Kind { kLstm, kGruBefore, kGruAfter };
constexpr uint32_t kSizes[] = {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17};

float halve(float x) {
  return 0.5f * x;
}

struct Order {
  bool sequence, go_backwards, reverse;
};

float dot(const float* a, const float* b, uint32_t n) {
  float sum = 0.0f;
  for (uint32_t k = 0; k < n; ++k) {
    sum = plus_product(sum, a[k], b[k]);
  }
  return sum;
}

struct Model {
  Kind kind;
  uint32_t F, U, T;
  uint32_t gates = kind == kLstm ? 4 : 3;
  std::vector<float> x = irregular_floats(size_t{T} * F, 1);
  std::vector<float> W = irregular_floats(size_t{gates} * U * F, 2);
  std::vector<float> R = irregular_floats(size_t{gates} * U * U, 3);
  std::vector<float> B = irregular_floats(size_t{gates} * U, 4);
  std::vector<float> P = irregular_floats(size_t{3} * U, 5);
  ai_activation_fn activation = ai_math_tanh;
  ai_activation_fn recurrent_activation = ai_math_hard_sigmoid;
  ai_activation_fn out_activation = halve;

  float Wx(uint32_t g, uint32_t u, uint32_t t) const {
    return dot(&W[(g * U + u) * F], &x[t * F], F);
  }
  float Rh(uint32_t g, uint32_t u, const std::vector<float>& h) const {
    return dot(&R[(g * U + u) * U], h.data(), U);
  }

  void lstm(uint32_t t, std::vector<float>& h, std::vector<float>& c) const {
    const std::vector<float> h_prev = h;
    for (uint32_t u = 0; u < U; ++u) {
      const auto sum = [&](uint32_t g, uint32_t peephole) {
        return (c[u] * P[peephole * U + u] + B[g * U + u]) + (Rh(g, u, h_prev) + Wx(g, u, t));
      };
      const float i = recurrent_activation(sum(0, 0));
      const float f = recurrent_activation(sum(1, 2));
      const float g = activation(sum(2, 2));
      c[u] = i * g + f * c[u];
      const float o = recurrent_activation(sum(3, 1));
      h[u] = out_activation(c[u]) * o;
    }
  }

  void gru(uint32_t t, std::vector<float>& h) const {
    const std::vector<float> h_prev = h;
    std::vector<float> r(U), rh(U);
    const auto gate = [&](uint32_t g, uint32_t u) {
      return recurrent_activation(Rh(g, u, h_prev) + B[g * U + u] + Wx(g, u, t));
    };
    for (uint32_t u = 0; u < U; ++u) {
      r[u] = gate(1, u);
      rh[u] = r[u] * h_prev[u];
    }
    for (uint32_t u = 0; u < U; ++u) {
      const float product = kind == kGruAfter ? r[u] * Rh(2, u, h_prev) : Rh(2, u, rh);
      const float n = activation(product + B[2 * U + u] + Wx(2, u, t));
      const float z = gate(0, u);
      h[u] = n * (1.0f - z) + h_prev[u] * z;
    }
  }

  // The outputs of all steps, one after the other as they are computed.
  std::vector<float> naive(bool go_backwards) const {
    std::vector<float> h(U), c(U), outputs;
    for (uint32_t i = 0; i < T; ++i) {
      const uint32_t t = go_backwards ? T - 1 - i : i;
      kind == kLstm ? lstm(t, h, c) : gru(t, h);
      outputs.insert(outputs.end(), h.begin(), h.end());
    }
    return outputs;
  }

  std::vector<float> forward(Order order) {
    std::vector<float> y(size_t{order.sequence ? T : 1} * U, -77.0f);
    nnlib::tensor in({1, F, 1, T}, x.data()), out({1, U, 1, order.sequence ? T : 1}, y.data());
    nnlib::tensor kernel({F, gates * U, 1, 1}, W.data()), bias({1, gates * U, 1, 1}, B.data());
    nnlib::tensor recurrent({U, gates * U, 1, 1}, R.data()), peephole({1, 3 * U, 1, 1}, P.data());
    const nnlib::layer_chain chain(nnlib::list(in), nnlib::list(out),
                                   kind == kLstm ? nnlib::list(kernel, recurrent, peephole, bias)
                                                 : nnlib::list(kernel, recurrent, bias, peephole));
    const ai_layer base = nnlib::layer(AI_LAYER_TYPE_GENERIC, nullptr, chain);
    const ai_activation_fn gate = recurrent_activation;
    const uint8_t go_backwards = order.go_backwards, reverse = order.reverse;
    if (kind == kLstm) {
      ai_layer_lstm lstm = {base, U, activation, gate, out_activation, go_backwards, reverse};
      forward_lstm(&lstm.base);
    } else {
      ai_layer_gru gru = {base, U, activation, gate, kind == kGruAfter, go_backwards, reverse};
      forward_gru(&gru.base);
    }
    return y;
  }

  // Whether y, from forward, holds the right ones of the steps, from naive.
  bool matches(const std::vector<float>& y, const std::vector<float>& steps, Order order) const {
    bool same = true;
    for (uint32_t slot = 0; slot < (order.sequence ? T : 1); ++slot) {
      const uint32_t step = order.sequence && !order.reverse ? slot
                            : order.sequence                 ? T - 1 - slot
                                                             : T - 1;
      same = same && same_floats(&y[slot * U], &steps[step * U], U);
    }
    return same;
  }
};

template <class Check>
void for_all_sizes(Check check) {
  for (const Kind kind : {kLstm, kGruBefore, kGruAfter}) {
    for (const uint32_t F : kSizes) {
      for (const uint32_t U : kSizes) {
        for (uint32_t T = 1; T <= 4; ++T) {
          Model model = {kind, F, U, T};
          SCOPED_TRACE(testing::Message()
                       << "kind " << kind << " F " << F << " U " << U << " T " << T);
          check(model);
        }
      }
    }
    // More units than are worked out at a time, more steps than are multiplied together; so many
    // units that steps go one by one.
    for (Model model : {Model{kind, 5, 70, 23}, Model{kind, 3, 345, 2}}) {
      SCOPED_TRACE(testing::Message() << "kind " << kind << " U " << model.U);
      check(model);
    }
  }
}

TEST(Rnn, ForwardFunctionsGiveTheBitsOfTheEquations) {
  for_all_sizes([](Model& model) {
    const size_t states = (model.kind == kGruAfter ? 2 : 3) * model.U * sizeof(float);
    for (unsigned options = 0; options < 8; ++options) {
      const Order order = {model.T > 1 && (options & 1) != 0, (options & 2) != 0,
                           (options & 4) != 0};
      const std::vector<float> steps = model.naive(order.go_backwards);
      with_each_instance([&] {
        heap = {};
        EXPECT_TRUE(model.matches(model.forward(order), steps, order)) << options;
        EXPECT_TRUE(heap.given == 1 && heap.returned == 1 && heap.bytes == states);
      });
    }
  });
}

// On the weights as they are, two buffers taking turns.
TEST(Rnn, CellsGiveTheBitsOfTheEquations) {
  for_all_sizes([](Model& model) {
    std::vector<float> first(model.U), second(model.U, NAN), c(model.U), rh(model.U, NAN);
    ai_rnn_cell_state s = {.kernel = model.W.data(),
                           .recurrent = model.R.data(),
                           .bias = model.B.data(),
                           .activation = model.activation,
                           .recurrent_activation = model.recurrent_activation,
                           .h_prev = first.data(),
                           .h_next = second.data(),
                           .n_features = static_cast<uint16_t>(model.F),
                           .n_units = static_cast<uint16_t>(model.U),
                           .peephole = model.P.data(),
                           .c = c.data(),
                           .out_activation = model.out_activation,
                           .rh = rh.data()};
    const auto cells = {lstm_cell, gru_cell_before, gru_cell_after};
    for (uint32_t t = 0; t < model.T; ++t) {
      cells.begin()[model.kind](&model.x[t * model.F], &s);
    }
    const std::vector<float>& last = model.T % 2 != 0 ? second : first;
    EXPECT_EQ(s.h_prev, last.data());
    EXPECT_NE(s.h_next, last.data());
    EXPECT_TRUE(model.matches(last, model.naive(false), {}));
  });
}

TEST(Rnn, NullActivationsAreTheIdentityButForTheOutput) {
  for (const Kind kind : {kLstm, kGruBefore, kGruAfter}) {
    Model model = {kind, 3, 5, 2};
    model.activation = model.recurrent_activation = func_dummy;
    const std::vector<float> steps = model.naive(false);
    model.activation = model.recurrent_activation = nullptr;
    EXPECT_TRUE(model.matches(model.forward({}), steps, {}));
  }
  Model model = {kLstm, 3, 5, 2};
  model.out_activation = nullptr;
  EXPECT_DEATH(model.forward({}), "");
}

TEST(Rnn, WithoutHeapTheOutputStaysAsItWas) {
  heap = {.refuses = true};
  for (const Kind kind : {kLstm, kGruBefore, kGruAfter}) {
    EXPECT_EQ((Model{kind, 3, 5, 2}.forward({})), std::vector<float>(5, -77.0f));
  }
  heap = {};
}

}  // namespace
