// SPDX-License-Identifier: MIT
// The formulas as plain loops, each sum by itself: what a straightforward program does.
#include <cmath>
#include <vector>

#include "bench/layer.hpp"

namespace bench {
namespace {

struct Conv {
  explicit Conv(const ConvShape& s)
      : shape(s),
        in(s.in_count()),
        weights(s.weight_count()),
        bias(s.out_channels()),
        out(s.out_count()) {}
  ConvShape shape;
  Floats in, weights, bias, out;
};

bool inside(uint32_t position, uint32_t size) {
  return position < size;  // positions before the map wrap around to large ones
}

void run(Conv& c) {
  const ConvShape& s = c.shape;
  float* out = c.out.data();
  for (uint32_t y = 0; y < s.out_size(); ++y) {
    for (uint32_t x = 0; x < s.out_size(); ++x) {
      for (uint32_t filter = 0; filter < s.out_channels(); ++filter) {
        float sum = c.bias.data()[filter];
        for (uint32_t ky = 0; ky < s.taps; ++ky) {
          for (uint32_t kx = 0; kx < s.taps; ++kx) {
            const uint32_t iy = y * s.stride + ky - s.pad, ix = x * s.stride + kx - s.pad;
            if (!inside(iy, s.size) || !inside(ix, s.size)) {
              continue;
            }
            const float* pixel = c.in.data() + (size_t{iy} * s.size + ix) * s.channels;
            const size_t tap = size_t{ky} * s.taps + kx;
            if (s.depthwise()) {
              sum += pixel[filter] * c.weights.data()[tap * s.channels + filter];
              continue;
            }
            const float* weights =
                c.weights.data() + (size_t{filter} * s.taps * s.taps + tap) * s.channels;
            for (uint32_t channel = 0; channel < s.channels; ++channel) {
              sum += pixel[channel] * weights[channel];
            }
          }
        }
        *out++ = sum;
      }
    }
  }
}

float dot(const float* a, const float* b, uint32_t n) {
  float sum = 0.0f;
  for (uint32_t k = 0; k < n; ++k) {
    sum += a[k] * b[k];
  }
  return sum;
}

float rounded(double x) {
  return static_cast<float>(x);
}
float sigmoid(float x) {
  return 1.0f / (1.0f + rounded(std::exp(-static_cast<double>(x))));
}
float tanh_of(float x) {
  return rounded(std::tanh(static_cast<double>(x)));
}

// LSTM (4 gates) and GRU (3) of the shape, all weights in the order of the gates.
struct Recurrent {
  Recurrent(const RecurrentShape& s, uint32_t gates)
      : shape(s),
        in(size_t{s.steps} * s.features),
        kernel(size_t{gates} * s.units * s.features),
        recurrent(size_t{gates} * s.units * s.units),
        bias(size_t{gates} * s.units),
        h(s.units, 0.0f),
        next(s.units),
        c(s.units, 0.0f) {}
  RecurrentShape shape;
  Floats in, kernel, recurrent, bias;
  std::vector<float> h, next, c;

  float gate(uint32_t number, uint32_t unit, const float* x, const float* state) const {
    const size_t row = size_t{number} * shape.units + unit;
    return dot(recurrent.data() + row * shape.units, state, shape.units) + bias.data()[row] +
           dot(kernel.data() + row * shape.features, x, shape.features);
  }
};

void run_lstm(Recurrent& r) {
  for (uint32_t step = 0; step < r.shape.steps; ++step) {
    const float* x = r.in.data() + size_t{step} * r.shape.features;
    for (uint32_t u = 0; u < r.shape.units; ++u) {
      const float i = sigmoid(r.gate(0, u, x, r.h.data())),
                  f = sigmoid(r.gate(1, u, x, r.h.data()));
      const float g = tanh_of(r.gate(2, u, x, r.h.data())),
                  o = sigmoid(r.gate(3, u, x, r.h.data()));
      r.c[u] = i * g + f * r.c[u];
      r.next[u] = tanh_of(r.c[u]) * o;
    }
    r.h.swap(r.next);
  }
}

void run_gru(Recurrent& r) {
  std::vector<float> reset(r.shape.units), update(r.shape.units);
  for (uint32_t step = 0; step < r.shape.steps; ++step) {
    const float* x = r.in.data() + size_t{step} * r.shape.features;
    for (uint32_t u = 0; u < r.shape.units; ++u) {
      update[u] = sigmoid(r.gate(0, u, x, r.h.data()));
      reset[u] = sigmoid(r.gate(1, u, x, r.h.data())) * r.h[u];
    }
    for (uint32_t u = 0; u < r.shape.units; ++u) {
      const float n = tanh_of(r.gate(2, u, x, reset.data()));
      r.next[u] = n * (1.0f - update[u]) + r.h[u] * update[u];
    }
    r.h.swap(r.next);
  }
}

}  // namespace

void add_naive_loops() {
  for (const ConvShape& shape : kConvShapes) {
    auto conv = std::make_shared<Conv>(shape);
    add_benchmark(shape.name, "naive", shape.operations(), [conv] { run(*conv); });
  }
  for (const DenseShape& s : kDenseShapes) {
    auto in = std::make_shared<Floats>(s.inputs), out = std::make_shared<Floats>(s.outputs);
    auto weights = std::make_shared<Floats>(size_t{s.inputs} * s.outputs);
    add_benchmark(s.name, "naive", s.operations(), [=] {
      for (uint32_t j = 0; j < s.outputs; ++j) {
        out->data()[j] = dot(weights->data() + size_t{j} * s.inputs, in->data(), s.inputs);
      }
    });
  }
  auto lstm = std::make_shared<Recurrent>(kRecurrentShape, 4);
  auto gru = std::make_shared<Recurrent>(kRecurrentShape, 3);
  add_benchmark("LSTM", "naive", 0, [lstm] { run_lstm(*lstm); });
  add_benchmark("GRU", "naive", 0, [gru] { run_gru(*gru); });
}

}  // namespace bench
