// SPDX-License-Identifier: MIT
// Layers that move and combine tensors against index loops, in heap blocks of exactly their size.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <numeric>
#include <random>
#include <vector>

#include "core/core_broadcast.h"
#include "layers/layers_generic_float.h"
#include "nnlib.h"

namespace {

using nnlib::list;
using Place = std::array<uint32_t, AI_SHAPE_DIMS>;

std::mt19937 g_random(7);

struct Block {
  std::unique_ptr<uint8_t[]> bytes;
};

// Elements of any size; all but those of 4 bytes lie at odd addresses.
struct Map : private Block, nnlib::tensor {
  Map(Place dims, size_t element_bytes)
      : Block{std::make_unique<uint8_t[]>(count(dims) * element_bytes + odd(element_bytes))},
        nnlib::tensor(AI_ARRAY_FORMAT_MAKE_UQ(8 * element_bytes, 0),
                      {dims[0], dims[1], dims[2], dims[3]}, bytes.get() + odd(element_bytes)),
        size(dims),
        element(element_bytes) {
    std::memset(array.data, 0xA5, array.size * element);  // unwritten
  }
  static size_t count(Place dims) { return size_t{dims[0]} * dims[1] * dims[2] * dims[3]; }
  static size_t odd(size_t element_bytes) { return element_bytes == 4 ? 0 : 1; }

  template <class Visit>
  void for_each_place(Visit visit) const {
    for (uint32_t i = 0; i < array.size; ++i) {
      const uint32_t pixel = i / size[0] / size[1];
      visit(Place{i % size[0], i / size[0] % size[1], pixel % size[2], pixel / size[2]});
    }
  }
  uint8_t* at(Place p) const {
    size_t offset = 0;
    for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) offset += p[i] * stride.data[i];
    return static_cast<uint8_t*>(array.data) + offset;
  }
  float& value(Place p) const { return *reinterpret_cast<float*>(at(p)); }

  Place size;
  size_t element;
};

struct Input : Map {
  Input(Place dims, size_t element_bytes) : Map(dims, element_bytes) {
    std::generate_n(at({}), array.size * element, [] { return uint8_t(g_random()); });
  }
};
struct FloatInput : Map {
  explicit FloatInput(Place dims, std::vector<float> special = {}) : Map(dims, 4) {
    std::uniform_real_distribution<float> number(-2.0f, 2.0f);
    for_each_place([&](Place p) {
      const size_t pick = g_random() % 16;
      value(p) = pick < special.size() ? special[pick] : number(g_random);
    });
  }
};

template <class Layer, class Inputs, class Outputs, class... Weights>
void run(ai_layer_forward forward, Layer layer, Inputs in, Outputs out, Weights... weights) {
  const nnlib::layer_chain chain(in, out, weights...);
  layer.base = nnlib::layer(AI_LAYER_TYPE_GENERIC, forward, chain);
  forward(&layer.base);
}

// source: where the element at a place of the output comes from; null when it stays unwritten.
template <class Source>
void expect_elements(const Map& out, Source source) {
  const Map unwritten({1, 1, 1, 1}, out.element);
  out.for_each_place([&](Place p) {
    const uint8_t* const expected = source(p);
    ASSERT_EQ(std::memcmp(out.at(p), expected ? expected : unwritten.at({}), out.element), 0)
        << "at " << testing::PrintToString(p) << ", element bytes " << out.element;
  });
}

// The row or column of a map of n that stands at a place outside.
int source_of(uint32_t mode, int at, int n) {
  while (mode == AI_PAD_REFLECT && n > 1 && (at < 0 || at >= n)) {
    at = at < 0 ? -at : 2 * (n - 1) - at;
  }
  return std::clamp(at, 0, std::max(n - 1, 0));
}

void check_pad(uint32_t mode, Input& in, uint32_t top, uint32_t left, uint32_t bottom,
               uint32_t right) {
  const uint32_t pads[] = {top, left};
  const auto [n, c, w, h] = in.size;
  Input value({1, 1, 1, 1}, in.element);
  Map out({n, c, w + left + right, h + top + bottom}, in.element);
  run(forward_pad, ai_layer_pad{{}, mode, pads, &value.array}, list(in), list(out));
  expect_elements(out, [&, w = int(w), h = int(h)](Place p) -> const uint8_t* {
    const int x = int(p[2]) - int(left), y = int(p[3]) - int(top);
    const int from_x = source_of(mode, x, w), from_y = source_of(mode, y, h);
    if (mode == AI_PAD_CONSTANT && (from_x != x || from_y != y)) return value.at({});
    // Mirrored rows before: as many as columns.
    if (mode == AI_PAD_REFLECT && p[3] < top && p[3] >= left) return nullptr;
    return in.at({p[0], p[1], uint32_t(from_x), uint32_t(from_y)});
  });
}

TEST(Pad, FillsAroundTheMap) {
  const std::array<uint32_t, 4> amounts = {0, 1, 3, 6};
  for (const size_t element : {1u, 2u, 4u, 8u, 12u}) {
    for (const Place size : {Place{1, 2, 2, 3}, Place{2, 1, 5, 1}, Place{1, 3, 1, 4}}) {
      Input in(size, element);
      for (uint32_t i = 0; i < 256; ++i) {
        for (const uint32_t mode : {AI_PAD_CONSTANT, AI_PAD_REFLECT, AI_PAD_EDGE}) {
          check_pad(mode, in, amounts[i & 3], amounts[i >> 2 & 3], amounts[i >> 4 & 3],
                    amounts[i >> 6]);
        }
      }
    }
  }
}

TEST(Pad, ConstantAroundAnEmptyMap) {
  Input in({1, 1, 0, 1}, 2);
  check_pad(AI_PAD_CONSTANT, in, 0, 1, 0, 0);
}

TEST(Tile, RepeatsMapRowsAndPixels) {
  for (const uint16_t maps : {0, 1, 2, 5}) {
    for (const uint16_t rows : {0, 1, 3}) {
      for (const uint16_t pixels : {0, 1, 2, 7}) {
        Input in({1, 2, 3, 2}, 2);
        Map out({1, 2u * pixels, 3u * rows, 2u * maps}, 2);
        const uint16_t repeats[] = {maps, rows, pixels};
        run(forward_tile, ai_layer_tile{{}, repeats}, list(in), list(out));
        expect_elements(out, [&](Place p) { return in.at({0, p[1] % 2, p[2] % 3, p[3] % 2}); });
      }
    }
  }
}

TEST(Upsample, EveryModeAndScale) {
  for (const auto& [sh, sw] : {std::pair{1.0f, 3.0f}, {2.0f, 1.0f}, {2.5f, 1.5f}, {3.0f, 2.0f}}) {
    float factors[] = {sh, sw};
    const ai_array scales = {AI_ARRAY_FORMAT_FLOAT, 2, factors, factors};
    Input in({2, 3, 4, 3}, 8);
    FloatInput map(in.size);
    const Place big = {2, 3, uint32_t(sw * 4), uint32_t(sh * 3)};
    Map nearest(big, 8), zeros(big, 8), bilinear(big, 4);
    run(forward_upsample, ai_layer_upsample{{}, AI_UPSAMPLE_NEAREST, false, &scales}, list(in),
        list(nearest));
    expect_elements(nearest, [&, sh = double(sh), sw = double(sw)](Place p) {
      return in.at({p[0], p[1], uint32_t(p[2] / sw), uint32_t(p[3] / sh)});
    });
    run(forward_upsample, ai_layer_upsample{{}, AI_UPSAMPLE_ZEROS, false, &scales}, list(in),
        list(zeros));
    expect_elements(zeros, [&, sh = uint32_t(sh), sw = uint32_t(sw)](Place p) {
      static const uint8_t zero[8] = {};
      const Place from = {p[0], p[1], p[2] / sw, p[3] / sh};
      const bool corner = p[2] % sw == 0 && p[3] % sh == 0 && from[2] < 4 && from[3] < 3;
      return corner ? in.at(from) : zero;
    });
    for (const bool center : {false, true}) {
      run(forward_upsample, ai_layer_upsample{{}, AI_UPSAMPLE_BILINEAR, center, &scales}, list(map),
          list(bilinear));
      const auto position = [&](uint32_t at, double scale, double last) {
        return std::clamp((at - (center ? (scale - 1) / 2 : 0)) / scale, 0.0, last);
      };
      bilinear.for_each_place([&, sh = double(sh), sw = double(sw)](Place p) {
        const double x = position(p[2], sw, 3), y = position(p[3], sh, 2);
        double sum = 0;
        for (uint32_t i = 0; i < 12; ++i) {
          sum += std::max(0.0, 1 - std::abs(x - i % 4)) * std::max(0.0, 1 - std::abs(y - i / 4)) *
                 double(map.value({p[0], p[1], i % 4, i / 4}));
        }
        EXPECT_NEAR(bilinear.value(p), sum, 1e-5);
      });
    }
  }
}

TEST(Concat, AlongEveryAxis) {
  for (const size_t element : {1u, 4u, 12u}) {
    for (uint32_t axis = 0; axis < AI_SHAPE_DIMS; ++axis) {
      const auto sized = [axis](uint32_t size) {
        Place p = {2, 3, 2, 4};
        p[axis] = size;
        return p;
      };
      Input a(sized(2), element), b(sized(1), element), c(sized(3), element);
      Map out(sized(6), element);
      run(forward_concat, ai_layer_concat{{}, axis}, list(a, b, c), list(out));
      expect_elements(out, [&](Place p) {
        const Input& in = p[axis] < 2 ? a : p[axis] < 3 ? b : c;
        p[axis] -= p[axis] < 2 ? 0 : p[axis] < 3 ? 2 : 3;
        return in.at(p);
      });
    }
  }
}

TEST(Transpose, EveryPermutation) {
  for (const size_t element : {1u, 2u, 4u, 8u, 12u}) {
    for (const Place from : {Place{2, 3, 4, 5}, Place{1, 5, 3, 2}}) {
      Input in(from, element);
      Place perm = {0, 1, 2, 3};
      do {
        Place size;
        for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) size[i] = from[perm[i]];
        Map out(size, element);
        run(forward_transpose, ai_layer_transpose{{}, perm.data()}, list(in), list(out));
        expect_elements(out, [&](Place p) {
          Place q;
          for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) q[perm[i]] = p[i];
          return in.at(q);
        });
      } while (std::next_permutation(perm.begin(), perm.end()));
    }
  }
}

template <class T>
ai_array array_of(std::vector<T>& values) {
  return {nnlib::format_of<T>, ai_size(values.size()), values.data(), values.data()};
}

TEST(Slice, EverySetOfAxes) {
  const Place size = {3, 4, 5, 6};
  for (uint32_t set = 0; set < 16 * 8; ++set) {
    const size_t element = std::array{1u, 4u, 8u}[set % 3];
    std::vector<uint32_t> axes;
    std::vector<int32_t> starts, ends;
    Place first = {}, count = size;
    for (uint32_t axis = AI_SHAPE_DIMS; axis-- > 0;) {  // in any order
      if ((set >> axis & 1) != 0) {
        first[axis] = g_random() % size[axis];
        count[axis] = 1 + g_random() % (size[axis] - first[axis]);
        const uint32_t end = first[axis] + count[axis];
        axes.push_back(axis);
        starts.push_back(first[axis] == 0 ? -3 : int32_t(first[axis]));  // clamped
        ends.push_back(end == size[axis] ? 99 : int32_t(end));
      }
    }
    const ai_array all[] = {array_of(axes), array_of(starts), array_of(ends)};
    Input in(size, element);
    Map out(count, element);
    run(forward_slice, ai_layer_slice{{}, &all[0], &all[1], &all[2]}, list(in), list(out));
    expect_elements(out, [&](Place p) {
      for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) p[i] += first[i];
      return in.at(p);
    });
  }
}

TEST(Slice, DefaultAxesAndRefusals) {
  std::vector<int32_t> starts = {0, 1}, ends = {1, 3}, empty = {1, 1};
  const ai_array from = array_of(starts), to = array_of(ends), nothing = array_of(empty);
  Input in({1, 3, 2, 2}, 2);
  const auto slice = [&](const ai_array* begin, const ai_array* end, size_t element, bool copies) {
    Map out({1, 2, 2, 2}, element);
    run(forward_slice, ai_layer_slice{{}, nullptr, begin, end}, list(in), list(out));
    expect_elements(out, [&](Place p) {
      return copies ? in.at({0, p[1] + 1, p[2], p[3]}) : nullptr;
    });
  };
  slice(&from, &to, 2, true);
  slice(&from, &to, 1, false);
  slice(&from, &nothing, 2, false);
  slice(nullptr, &to, 2, false);
  slice(&from, nullptr, 2, false);
}

void check_topk(uint32_t axis, uint32_t k) {
  FloatInput in({4, 5, 3, 5}, {1, -1, 0.5f, 1, -1, 2, 2});  // with equal values
  Place size = in.size;
  size[axis] = k;
  Map values(size, 4), indices(size, 4);
  run(forward_topK, ai_layer_topk{{}, axis, k}, list(in), list(values, indices));
  values.for_each_place([&](Place p) {
    const auto input = [&](uint32_t i) {
      Place from = p;
      from[axis] = i;
      return in.value(from);
    };
    std::vector<uint32_t> order(in.size[axis]);
    std::iota(order.begin(), order.end(), 0u);
    std::stable_sort(order.begin(), order.end(),
                     [&](uint32_t a, uint32_t b) { return input(a) > input(b); });
    uint32_t index = 0xA5A5A5A5u;
    if (p[axis] < order.size()) {
      index = order[p[axis]];
      EXPECT_EQ(values.value(p), input(index)) << "axis " << axis << ", k " << k;
    }
    EXPECT_EQ(std::memcmp(indices.at(p), &index, sizeof(index)), 0);
  });
}

TEST(TopK, EveryAxis) {
  for (uint32_t i = 0; i < AI_SHAPE_DIMS * 7; ++i) check_topk(i / 7, i % 7);
}

TEST(TopK, NanStays) {
  float line[] = {1, NAN, 0, 5, 7}, values[3] = {};
  uint32_t indices[3] = {};
  nnlib::tensor in({1, 5, 1, 1}, line), out({1, 3, 1, 1}, values), out2({1, 3, 1, 1}, indices);
  run(forward_topK, ai_layer_topk{{}, AI_SHAPE_C, 3}, list(in), list(out, out2));
  EXPECT_EQ(std::vector<uint32_t>(indices, indices + 3), (std::vector<uint32_t>{0, 1, 4}));
  EXPECT_EQ(values[2], 7);
}

TEST(TimeDelay, KeepsTheOrderOfEachSum) {
  for (uint32_t steps = 1; steps <= 17; ++steps) {
    const uint32_t F = 1 + steps % 3, U = 1 + steps % 2;
    std::vector<uint8_t> delays = {3, 0, 7, 200};
    FloatInput in({1, F, 1, steps + 200}), kernel({F, 4, 1, U}), bias({1, U, 1, 1});
    for (const bool with_bias : {true, false}) {
      Map out({1, U, 1, steps}, 4);
      const ai_array taps = array_of(delays);
      run(forward_time_delay, ai_layer_time_delay{{}, &taps}, list(in), list(out),
          list(kernel, with_bias ? &bias : nnlib::absent));
      out.for_each_place([&](Place p) {
        float sum = with_bias ? bias.value({0, p[1], 0, 0}) : 0.0f;
        for (uint32_t j = 0; j < 4; ++j) {
          for (uint32_t k = 0; k < F; ++k) {
            sum += kernel.value({k, j, 0, p[1]}) * in.value({0, k, 0, p[3] + delays[j]});
          }
        }
        EXPECT_EQ(out.value(p), sum) << steps << " steps";
      });
    }
  }
}

// --- broadcasting -------------------------------------------------------------------------------

TEST(Broadcast, FormulasAndDimensionCounts) {
  const auto offsets = [](Place a, Place s) {
    std::array<int32_t, 4> steps;
    ai_offsets out = {7, steps.data()};
    const ai_shape operand = {AI_DIMS_WORD(3, 4), a.data()}, loops = {AI_DIMS_WORD(0, 4), s.data()};
    core_compute_offsets(&out, &operand, &loops);
    EXPECT_EQ(out.type_size, AI_DIMS_WORD(7, 4));
    return steps;
  };
  using Steps = std::array<int32_t, 4>;
  EXPECT_EQ(offsets({2, 3, 4, 5}, {2, 3, 4, 5}), (Steps{1, 0, 0, 0}));
  EXPECT_EQ(offsets({2, 1, 4, 1}, {2, 3, 4, 5}), (Steps{1, -2, 2, -8}));
  EXPECT_EQ(offsets({1, 3, 1, 5}, {2, 3, 4, 5}), (Steps{0, 1, -3, 3}));
  // Batch and channels at once: the limit, kept as the formulas have it.
  EXPECT_EQ(offsets({1, 1, 4, 1}, {2, 3, 4, 5}), (Steps{0, -1, 2, -4}));
  EXPECT_EQ(offsets({1, 1, 1, 5}, {2, 3, 4, 5}), (Steps{0, -1, 0, 2}));

  Place a = {2, 1, 4, 9}, b = {1, 3, 4, 9}, sizes = {0, 0, 0, 77};
  ai_shape out = {7, sizes.data()};
  const ai_shape shape_a = {AI_DIMS_WORD(3, 3), a.data()}, shape_b = {AI_DIMS_WORD(0, 4), b.data()};
  core_get_broadcasted_shape(&out, &shape_a, &shape_b);
  EXPECT_EQ(out.type_size, AI_DIMS_WORD(7, 3));
  EXPECT_EQ(sizes, (Place{2, 3, 4, 77}));
}

// The dimensions of the set reduced to 1.
Place shrunk(Place dims, uint32_t set) {
  for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) dims[i] = (set >> i & 1) != 0 ? 1 : dims[i];
  return dims;
}

bool walkable(const Map& operand, Place loops) {
  return operand.size[0] == loops[0] || operand.size[1] == loops[1];
}

// What stands at a place of the loops.
float& broadcast(const Map& map, Place p) {
  for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) p[i] = map.size[i] == 1 ? 0 : p[i];
  return map.value(p);
}

float custom(float a, float b) {
  return (a + 10.0f) * (b * 0.5f) + 12.5f;
}

const ai_binary_fn kOperations[] = {ai_sum, ai_sub, ai_mul,       ai_div,
                                    ai_min, ai_max, ai_floor_div, custom};
const Place kLoops[] = {{2, 3, 4, 5}, {1, 9, 2, 3}, {1, 3, 7, 2}, {1, 1, 6, 11}, {3, 1, 2, 2}};
const std::vector<float> kSpecial = {0.0f, -0.0f, NAN, INFINITY, -INFINITY, 1e-42f};

void expect_bits(const Map& expected, const Map& out, uint32_t set) {
  ASSERT_EQ(std::memcmp(expected.array.data, out.array.data, 4 * out.array.size), 0)
      << "set " << set << ", loops " << testing::PrintToString(out.size);
}

TEST(Eltwise, EveryBroadcast) {
  for (const Place full : kLoops) {
    for (uint32_t sets = 0; sets < 256; ++sets) {
      const Place loops = shrunk(full, sets & 15 & sets >> 4);
      for (const ai_binary_fn operation : kOperations) {
        FloatInput a(shrunk(full, sets & 15), kSpecial), b(shrunk(full, sets >> 4), kSpecial);
        if (!walkable(a, loops) || !walkable(b, loops)) continue;
        Map out(loops, 4), expected(loops, 4);
        const ai_layer_eltwise layer = {{}, operation};
        run(forward_eltwise, layer, list(a, b), list(out));
        out.for_each_place(
            [&](Place p) { expected.value(p) = operation(broadcast(a, p), broadcast(b, p)); });
        expect_bits(expected, out, sets);
        if (Map& in_place = a.size == loops ? a : b; in_place.size == loops) {
          run(forward_eltwise, layer, list(a, b), list(in_place));
          expect_bits(expected, in_place, sets);
        }
      }
    }
  }
}

TEST(Reduce, EverySetOfAxes) {
  for (const Place full : kLoops) {
    for (uint32_t set = 0; set < 16; ++set) {
      FloatInput in(full, {-0.0f, 1e-42f, 3e7f});
      for (const ai_binary_fn operation : kOperations) {
        Map out(shrunk(full, set), 4), expected(out.size, 4);
        if (!walkable(out, full)) continue;
        const float neutral = std::numeric_limits<float>::max();
        run(forward_reduce, ai_layer_reduce{{}, neutral, operation}, list(in), list(out));
        std::fill_n(static_cast<float*>(expected.array.data), expected.array.size, neutral);
        in.for_each_place([&](Place p) {
          float& folded = broadcast(expected, p);
          folded = operation(folded, in.value(p));
        });
        expect_bits(expected, out, set);
      }
    }
  }
}

}  // namespace
