// SPDX-License-Identifier: MIT
// Pooling against a loop straight from its definition, to the bit, over many geometries; buffers
// have exactly their size.
#include "layers/layers_pool_generic_float.h"

#include <gtest/gtest.h>
#include <math.h>

#include <bit>
#include <limits>
#include <vector>

#include "core/ai_declare.h"
#include "kernels/pool_geometry.hpp"
#include "test/unit/float_sweep.hpp"

namespace {

using nnlib::PoolGeometry;
using Floats = std::vector<float>;

constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kUnwritten = 0.125f;

enum Kind { kForwardMax, kForwardMean, kForwardMeanPadded, kMapMax, kMapMean };

// Irregular numbers with a few that are not.
#if defined(TEST_FUSED_KERNELS)
constexpr float kSmall = 1e-30f;  // float vectors may flush what is smaller than 2^-126
#else
constexpr float kSmall = 1e-40f;
#endif

Floats map_data(size_t size) {
  const float odd[] = {-0.0f, kNan, -3e9f, kInf, -kInf, kSmall};
  Floats data(size);
  uint32_t state = static_cast<uint32_t>(size) + 1;
  for (float& value : data) {
    state = state * 1664525u + 1013904223u;
    value = static_cast<float>(static_cast<int32_t>(state)) * 3.1e-9f;
    if (state >> 27 == 0) {
      value = odd[(state >> 20) % 6];
    }
  }
  return data;
}

Floats naive(Kind kind, const PoolGeometry& g, const Floats& in) {
  Floats out;
  const bool by_max = kind == kForwardMax || kind == kMapMax;
  const bool forward = kind < kMapMax;
  for (int64_t oy = 0; oy < g.out_height; ++oy) {
    for (int64_t ox = 0; ox < g.out_width; ++ox) {
      for (size_t c = 0; c < g.channels; ++c) {
        float folded = by_max ? -2147483648.0f : 0.0f;
        uint32_t cells = 0;
        for (int64_t y = oy * g.stride_y - g.pad_y; y < oy * g.stride_y - g.pad_y + g.pool_height;
             ++y) {
          for (int64_t x = ox * g.stride_x - g.pad_x; x < ox * g.stride_x - g.pad_x + g.pool_width;
               ++x) {
            if (y < 0 || y >= g.in_height || x < 0 || x >= g.in_width) {
              continue;
            }
            const float cell = in[static_cast<size_t>(y * g.in_width + x) * g.channels + c];
            const bool copy = forward && cells == 0;
            folded = copy ? cell : by_max ? (folded > cell ? folded : cell) : folded + cell;
            ++cells;
          }
        }
        if (kind == kMapMean) {
          folded = folded / static_cast<float>(cells);
        } else if (!by_max) {
          const uint32_t all = g.pool_width * g.pool_height;
          folded *= 1.0f / static_cast<float>(kind == kForwardMeanPadded ? all : cells);
        }
        out.push_back(forward && cells == 0 ? kUnwritten : folded);
      }
    }
  }
  return out;
}

Floats pooled(Kind kind, const PoolGeometry& g, Floats in) {
  Floats out(size_t{g.out_width} * g.out_height * g.channels, kUnwritten);
  nnlib::tensor input({1, g.channels, g.in_width, g.in_height}, in.data());
  nnlib::tensor output({1, g.channels, g.out_width, g.out_height}, out.data());
  if (kind >= kMapMax) {
    const auto u16 = [](uint32_t value) { return static_cast<uint16_t>(value); };
    const ai_pool_func kernel = kind == kMapMax ? pool_func_mp_array_f32 : pool_func_ap_array_f32;
    kernel(&input.array, u16(g.in_width), u16(g.in_height), u16(g.channels), u16(g.pool_width),
           u16(g.pool_height), u16(g.pad_x), u16(g.pad_y), u16(g.stride_x), u16(g.stride_y),
           u16(g.out_width), u16(g.out_height), &output.array);
    return out;
  }
  const nnlib::layer_chain chain(nnlib::list(input), nnlib::list(output));
  const ai_layer_forward forward = kind == kForwardMax ? forward_mp : forward_ap;
  uint32_t pad[4] = {g.pad_y, g.pad_x, 99, 99};
  ai_layer_pool layer = {nnlib::layer(AI_LAYER_TYPE_POOL, forward, chain),
                         {g.pool_width, g.pool_height},
                         {g.stride_x, g.stride_y},
                         {AI_DIMS_WORD(AI_SHAPE_TYPE, 4), pad},
                         kind == kForwardMeanPadded};
  forward(&layer.base);
  return out;
}

void expect_as_naive(const PoolGeometry& g) {
  const Floats in = map_data(size_t{g.in_width} * g.in_height * g.channels);
  for (const Kind kind : {kForwardMax, kForwardMean, kForwardMeanPadded, kMapMax, kMapMean}) {
    const Floats expected = naive(kind, g, in);
    const Floats actual = pooled(kind, g, in);
    for (size_t i = 0; i < expected.size(); ++i) {
      const bool same =
          std::bit_cast<uint32_t>(expected[i]) == std::bit_cast<uint32_t>(actual[i]) ||
          (isnan(expected[i]) && isnan(actual[i]));
      ASSERT_TRUE(same) << "kind " << kind << " [" << i << "]: " << expected[i]
                        << " != " << actual[i] << " in " << g.in_width << "x" << g.in_height << "x"
                        << g.channels << " pool " << g.pool_width << "x" << g.pool_height << " pad "
                        << g.pad_x << "," << g.pad_y << " stride " << g.stride_x << ","
                        << g.stride_y;
    }
  }
}

TEST(Pool, MatchesTheDefinition) {
  // in, pool, pad, stride and out in x and y: windows cut on every side, outside, whole maps.
  constexpr uint32_t kAxes[][5] = {{1, 1, 0, 1, 1},  {17, 2, 0, 2, 8}, {9, 3, 1, 2, 5},
                                   {4, 3, 5, 1, 11}, {5, 5, 2, 1, 5},  {3, 2, 1, 4, 3},
                                   {7, 1, 0, 3, 4},  {2, 6, 3, 2, 4},  {6, 4, 0, 5, 0}};
  for (const uint32_t channels : {1, 2, 3, 4, 7, 8, 9, 16, 17, 33, 71}) {
    for (const auto& x : kAxes) {
      for (const auto& y : kAxes) {
        with_each_instance([&] {
          expect_as_naive({x[0], y[0], channels, x[1], y[1], x[2], y[2], x[3], y[3], x[4], y[4]});
        });
      }
    }
  }
}

TEST(Pool, TakesTheLargestArguments) {
  with_each_instance([] {
    expect_as_naive({3, 2, 5, 65535, 2, 65534, 1, 1, 65535, 3, 2});
    expect_as_naive({2, 3, 1, 2, 65535, 65535, 65533, 65535, 32767, 3, 3});
  });
}

// Row by row, the row kernels give what the layers do; a last incomplete pixel is left out.
TEST(PoolTest, RowKernelsFoldOnePixelAfterTheOther) {
  const Floats row = {1, -5, 2, -7, 0.5f, -3, 99};
  Floats largest = {1.5f, -4};
  pool_func_mp_kernel_array_f32(largest.data(), row.data(), 7, 2);
  EXPECT_EQ((Floats{2, -3}), largest);
  Floats sums = {kNan, kNan};
  pool_func_ap_kernel_array_f32(sums.data(), row.data(), 7, 2, 0, 1);
  EXPECT_EQ((Floats{3.5f, -15}), sums);
  pool_func_ap_kernel_array_f32(sums.data(), row.data(), 4, 2, 3, 2);
  const float third = 1.0f / 3.0f;
  EXPECT_EQ((Floats{6.5f * third, -27 * third}), sums);
}

TEST(WindowTest, HoldsTheTapsInsideTheMap) {
  for (uint32_t seed = 0; seed < 6 * 5 * 7 * 6 * 7 * 4; ++seed) {
    uint32_t rest = seed;
    const auto take = [&rest](uint32_t count) {
      const uint32_t value = rest % count;
      rest /= count;
      return value;
    };
    const uint32_t index = take(6), stride = take(5), pad = take(7), taps = take(6);
    const uint32_t extent = take(7), dilation = take(4) + 1;
    std::vector<uint32_t> inside;
    for (uint32_t tap = 0; tap < taps; ++tap) {
      const uint32_t position = index * stride + tap * dilation;
      if (position >= pad && position - pad < extent) {
        inside.push_back(tap);
      }
    }
    const int64_t start = int64_t{index} * stride - pad;
    const nnlib::Window window = nnlib::clip_taps(start, taps, extent, dilation);
    ASSERT_EQ(inside.size(), window.count) << seed;
    if (!inside.empty()) {
      EXPECT_EQ(inside[0], window.tap) << seed;
      EXPECT_EQ(index * stride + inside[0] * dilation - pad, window.begin) << seed;
    }
  }
  EXPECT_TRUE(nnlib::clip_window(2, 0x80000001u, 0, 1, 8).empty());  // does not wrap around
}

}  // namespace
