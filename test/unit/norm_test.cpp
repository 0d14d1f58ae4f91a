// SPDX-License-Identifier: MIT
// The normalizations against loops over coordinates, written from their equations: the same bits.
#include <gtest/gtest.h>

#include <cmath>

#include "core/ai_math_helpers.h"
#include "layers/layers_norm_generic_float.h"
#include "nnlib.h"
#include "test/unit/float_data.hpp"

namespace {

using Floats = std::vector<float>;

struct Map {
  nnlib::dims d;
  Floats x = irregular_floats(d.elements(), 1);
  Floats scale = irregular_floats(d.c, 2);
  Floats bias = irregular_floats(d.c, 3);

  // Runs the layer, whose record follows the base with the given parameters, on a copy of x, or
  // into another buffer.
  template <class Layer, class... Parameters>
  Floats run(ai_layer_forward forward, bool in_place, bool with_bias, Parameters... parameters) {
    Floats from = x, to(x.size(), -77.0f);
    float* target = in_place ? from.data() : to.data();
    nnlib::tensor in(d, from.data()), out(d, target);
    nnlib::tensor weights({1, d.c, 1, 1}, scale.data()), biases({1, d.c, 1, 1}, bias.data());
    nnlib::layer_chain chain(nnlib::list(in), nnlib::list(out),
                             nnlib::list(weights, with_bias ? &biases : nnlib::absent));
    Layer layer = {nnlib::layer(AI_LAYER_TYPE_GENERIC, forward, chain), parameters...};
    forward(reinterpret_cast<ai_layer*>(&layer));
    return in_place ? from : to;
  }
};

struct PlainLayer {
  ai_layer base;
};

TEST(Norm, BatchNormScalesEachChannel) {
  Map map = {{1, 5, 3, 2}};
  map.x[7] = 0.0f;  // times a negative scale: -0, which an added 0 would not leave
  map.scale[2] = -1.5f;
  for (const bool with_bias : {false, true}) {
    Floats expected = map.x;
    for (size_t i = 0; i < expected.size(); ++i) {
      expected[i] = expected[i] * map.scale[i % 5];
      expected[i] = with_bias ? expected[i] + map.bias[i % 5] : expected[i];
    }
    for (const bool in_place : {false, true}) {
      EXPECT_TRUE(same_floats(map.run<PlainLayer>(forward_bn, in_place, with_bias), expected));
    }
  }
}

TEST(Norm, LocalResponseSumsTheClippedWindow) {
  constexpr float k = 1.25f, alpha = 0.7f, beta = 0.75f;
  for (const int channels : {1, 2, 5, 8}) {
    for (const unsigned local_size : {1u, 2u, 3u, 4u, 5u, 9u, 64u, 0xFFFFFFFFu}) {
      Map map = {{1, static_cast<uint32_t>(channels), 3, 2}};
      Floats expected;
      for (int64_t i = 0; i < int64_t{channels} * 6; ++i) {
        const int64_t half = local_size / 2, pixel = i / channels * channels;
        float sum = 0.0f;
        for (int64_t c = std::max(i - half, pixel); c <= std::min(i + half, pixel + channels - 1);
             ++c) {
          sum += map.x[static_cast<size_t>(c)] * map.x[static_cast<size_t>(c)];
        }
        expected.push_back(map.x[static_cast<size_t>(i)] * ai_math_pow(sum * alpha + k, -beta));
      }
      EXPECT_TRUE(same_floats(
          map.run<ai_layer_lrn>(forward_lrn, false, false, local_size, k, alpha, beta), expected))
          << channels << " channels, size " << local_size;
    }
  }
}

// The vector of element i along the axis is what shares its other coordinates.
Floats naive_lp(const Map& map, uint32_t axis, float p, bool scaled) {
  const uint32_t extents[] = {map.d.n, map.d.c, map.d.w, map.d.h};
  size_t stride = 1;
  for (uint32_t k = 0; k < axis; ++k) {
    stride *= extents[k];
  }
  const size_t n = extents[axis];
  const bool fast = stride == 1 && p == 2.0f;
  const float scale = scaled ? static_cast<float>(n) : 1.0f;
  Floats y;
  for (size_t i = 0; i < map.x.size(); ++i) {
    const size_t start = i - i / stride % n * stride;
    float s = 0.0f;
    for (size_t j = 0; j < n; ++j) {
      const float value = map.x[start + j * stride];
      s += fast ? value * value : ai_math_pow(std::fabs(value), p);
    }
    const float ratio = s == 0.0f ? scale : scale / s;
    y.push_back(map.x[i] * (fast ? std::sqrt(ratio) : ai_math_pow(ratio, 1.0f / p)));
  }
  return y;
}

TEST(Norm, LpFollowsAnyAxis) {
  for (const nnlib::dims d : {nnlib::dims{1, 5, 3, 4}, {2, 3, 4, 5}, {1, 1, 7, 2}}) {
    Map map = {d};
    for (size_t i = 0; i < map.x.size(); ++i) {  // zeros along each axis
      if (i < d.n * d.c || i / d.n % d.c == 1) {
        map.x[i] = 0.0f;
      }
    }
    for (uint32_t axis = 0; axis < AI_SHAPE_DIMS; ++axis) {
      for (const float p : {0.5f, 1.0f, 2.0f, 3.0f}) {
        for (const bool scaled : {false, true}) {
          const Floats expected = naive_lp(map, axis, p, scaled);
          for (const bool in_place : {false, true}) {
            EXPECT_TRUE(same_floats(
                map.run<ai_layer_norm>(forward_norm, in_place, false, axis, p, scaled), expected))
                << "axis " << axis << " p " << p << " scaled " << scaled;
          }
        }
      }
    }
  }
}

float sum(const Floats& values) {
  float total = 0.0f;
  for (const float value : values) {
    total += value;
  }
  return total;
}

TEST(Norm, InstanceNormPerChannel) {
  constexpr float epsilon = 0.01f;
  for (const uint32_t channels : {1u, 3u, 16u, 17u, 33u}) {
    for (const nnlib::dims d : {nnlib::dims{1, channels, 4, 3}, {1, channels, 1, 1}}) {
      Map map = {d};
      Floats expected(map.x.size());
      for (size_t c = 0; c < channels; ++c) {
        Floats values, squares;  // widths outer, heights inner
        for (size_t i = 0; i < size_t{d.w} * d.h; ++i) {
          values.push_back(map.x[(i % d.h * d.w + i / d.h) * channels + c]);
        }
        const float count = static_cast<float>(values.size());
        const float mean = sum(values) / count;
        for (const float value : values) {
          squares.push_back((value - mean) * (value - mean));
        }
        const float root = 1.0f / std::sqrt(sum(squares) / count + epsilon);
        for (size_t i = c; i < map.x.size(); i += channels) {
          expected[i] = (map.x[i] - mean) * map.scale[c] * root + map.bias[c];
        }
      }
      for (const bool in_place : {false, true}) {
        EXPECT_TRUE(same_floats(
            map.run<ai_layer_instance_norm>(forward_instanceNormalization, in_place, true, epsilon),
            expected));
      }
    }
  }
  Map empty = {{1, 3, 0, 2}};
  empty.run<ai_layer_instance_norm>(forward_instanceNormalization, false, true, epsilon);
}

}  // namespace
