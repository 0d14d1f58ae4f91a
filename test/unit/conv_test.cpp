// SPDX-License-Identifier: MIT
// Convolution in all its forms against loops straight from the formula, bit by bit.
#include <algorithm>
#include <cstdlib>
#include <optional>
#include <sstream>

#include "core/ai_declare.h"
#include "layers/layers_conv2d_generic_float.h"
#include "test/unit/float_sweep.hpp"

namespace {

volatile size_t allocations = 0;

}  // namespace

extern "C" {
void* __real_malloc(size_t size);
void* __wrap_malloc(size_t size) {
  allocations = allocations + 1;
  return __real_malloc(size);
}
}

namespace {

struct Direction {
  uint32_t in, taps, stride, dilation, pad_before, pad_after;

  uint32_t extent() const { return (taps - 1) * dilation + 1; }
  uint32_t convolved() const {
    const uint32_t padded = in + pad_before + pad_after;
    return padded < extent() ? 0 : (padded - extent()) / stride + 1;
  }
  uint32_t transposed() const {
    const uint32_t full = (in - 1) * stride + extent();
    return full > pad_before + pad_after ? full - pad_before - pad_after : 1;
  }
  // The input position of a tap; none when it lies outside.
  std::optional<uint32_t> input(uint32_t out, uint32_t tap) const {
    const int64_t at = int64_t{out} * stride + int64_t{tap} * dilation - pad_before;
    return at >= 0 && at < in ? std::optional(static_cast<uint32_t>(at)) : std::nullopt;
  }
  // The tap through which input i reaches an output of the transpose.
  std::optional<uint32_t> tap(uint32_t out, uint32_t i) const {
    const int64_t distance = int64_t{out} + pad_before - int64_t{i} * stride;
    const bool reached = distance >= 0 && distance % dilation == 0 && distance / dilation < taps;
    return reached ? std::optional(static_cast<uint32_t>(distance / dilation)) : std::nullopt;
  }
};

struct Shape {
  uint32_t channels, filters, groups;
  bool bias, depthwise;
  Direction x, y;

  nnlib::dims in() const { return {1, channels, x.in, y.in}; }
  nnlib::dims weights() const {
    return {depthwise ? channels : channels / groups, x.taps, y.taps, depthwise ? 1 : filters};
  }
  size_t weight(uint32_t filter, uint32_t ky, uint32_t kx, uint32_t channel) const {
    const uint32_t tap = ky * x.taps + kx;
    return depthwise ? size_t{tap} * channels + filter
                     : (size_t{filter} * y.taps * x.taps + tap) * (channels / groups) + channel;
  }
  friend void PrintTo(const Shape& s, std::ostream* to) {
    *to << "channels " << s.channels << " filters " << s.filters << " groups " << s.groups
        << " bias " << s.bias << " depthwise " << s.depthwise;
    for (const Direction& d : {s.x, s.y}) {
      *to << "; in " << d.in << " taps " << d.taps << " stride " << d.stride << " dilation "
          << d.dilation << " pads " << d.pad_before << ' ' << d.pad_after;
    }
  }
};

Direction random_direction(Random& random) {
  Direction d = {1 + random.below(9),
                 random.pick({1, 2, 3, 4, 7}),
                 1 + random.below(3),
                 random.pick({1, 1, 1, 2, 3}),
                 0,
                 0};
  d.pad_before = random.pick({0, 0, 1, 2, d.extent() + 2});
  d.pad_after = random.pick({0, 0, 1, 2, d.extent() + 2});
  return d;
}

// As many outputs as inputs, the pads before, behind or around.
Direction same_size(Random& random) {
  Direction d = random_direction(random);
  d.stride = 1;
  const uint32_t pads = d.extent() - 1;
  d.pad_before = random.pick({0, pads / 2, pads});
  d.pad_after = pads - d.pad_before;
  return d;
}

Shape random_shape(Random& random) {
  Shape s = {boundary_size(random),    boundary_size(random),   1, random.below(4) != 0, false,
             random_direction(random), random_direction(random)};
  switch (random.below(5)) {
    case 0:
      s.groups = random.pick({2, 3, 5});
      s.channels = s.groups * random.pick({1, 2, 3, 5, 8});
      s.filters = s.groups * random.pick({1, 2, 3, 9, 17});
      break;
    case 1:
      s.groups = s.filters = s.channels;
      s.depthwise = s.channels > 1;
      break;
    case 2:
      s.channels = random.pick({s.channels, s.channels, 129, 150});  // more than a tile is deep
      break;
    case 3:
      s.x = same_size(random);
      s.y = same_size(random);
      break;
    default:  // pointwise: rows may run into one another
      s.x = {s.x.in, 1, 1, 1, s.x.pad_before % 2, s.x.pad_after % 3};
      s.y = {s.y.in, 1, 1, 1, s.y.pad_before % 2, 0};
      break;
  }
  return s;
}

struct Data {
  explicit Data(const Shape& s, Random& random)
      : in(random.floats(s.in().elements())),
        weights(random.floats(s.weights().elements())),
        bias(random.floats(s.filters)) {}
  std::vector<float> in, weights, bias;
};

// Adds the products of one tap and input pixel, in the order of the group's channels.
float add_tap(float sum, const Shape& s, const Data& data, uint32_t filter, uint32_t ky,
              uint32_t kx, uint32_t iy, uint32_t ix) {
  const uint32_t count = s.channels / s.groups;
  const uint32_t first = filter / (s.filters / s.groups) * count;
  for (uint32_t c = 0; c < count; ++c) {
    sum = plus_product(sum, data.in[(size_t{iy} * s.x.in + ix) * s.channels + first + c],
                       data.weights[s.weight(filter, ky, kx, c)]);
  }
  return sum;
}

float naive_output(const Shape& s, const Data& data, uint32_t y, uint32_t x, uint32_t filter) {
  float sum = s.bias ? data.bias[filter] : 0.0f;
  for (uint32_t ky = 0; ky < s.y.taps; ++ky) {
    for (uint32_t kx = 0; kx < s.x.taps; ++kx) {
      const auto iy = s.y.input(y, ky), ix = s.x.input(x, kx);
      sum = iy && ix ? add_tap(sum, s, data, filter, ky, kx, *iy, *ix) : sum;
    }
  }
  return sum;
}

float naive_transposed_output(const Shape& s, const Data& data, uint32_t y, uint32_t x,
                              uint32_t filter) {
  float sum = s.bias ? data.bias[filter] : 0.0f;
  for (uint32_t iy = 0; iy < s.y.in; ++iy) {
    for (uint32_t ix = 0; ix < s.x.in; ++ix) {
      const auto ky = s.y.tap(y, iy), kx = s.x.tap(x, ix);
      sum = ky && kx ? add_tap(sum, s, data, filter, *ky, *kx, iy, ix) : sum;
    }
  }
  return sum;
}

template <class Output>
std::vector<float> naive_map(const Shape& s, const Data& data, uint32_t height, uint32_t width,
                             Output output) {
  std::vector<float> map;
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      for (uint32_t filter = 0; filter < s.filters; ++filter) {
        map.push_back(output(s, data, y, x, filter));
      }
    }
  }
  return map;
}

ai_shape pads_of(uint32_t (&pads)[4]) {
  return {AI_DIMS_WORD(AI_SHAPE_TYPE, AI_SHAPE_DIMS), pads};
}

float* not_null(std::vector<float>& values) {
  values.reserve(1);
  return values.data();
}

// A layer over buffers of exactly the size that it is to touch.
struct Layer {
  Layer(ai_layer_forward forward, const Shape& s, Data& data, uint32_t width, uint32_t height,
        ai_nl_func nl = nullptr)
      : out_data(size_t{s.filters} * width * height, -1.0f),
        in(s.in(), data.in.data()),
        weights(s.weights(), data.weights.data()),
        bias({1, s.filters, 1, 1}, data.bias.data()),
        out({1, s.filters, width, height}, out_data.data()),
        chain(nnlib::list(in), nnlib::list(out), nnlib::list(weights, s.bias ? &bias : nullptr)),
        pads{s.y.pad_before, s.x.pad_before, s.y.pad_after, s.x.pad_after},
        record{nnlib::layer(AI_LAYER_TYPE_CONV2D, forward, chain),
               s.groups,
               nullptr,
               nl,
               {s.x.stride | 0x10000u, s.y.stride},  // the low 16 bits count
               {s.x.dilation, s.y.dilation | 0x10000u},
               pads_of(pads)} {
    out.array.data = out.array.data_start = not_null(out_data);
  }

  const std::vector<float>& run() {
    record.base.forward(&record.base);
    return out_data;
  }

  std::vector<float> out_data;
  nnlib::tensor in, weights, bias, out;
  nnlib::layer_chain<1, 1, 2> chain;
  uint32_t pads[4];
  ai_layer_conv2d record;
};

}  // namespace

TEST(Conv2d, SameBitsAsTheFormula) {
  Random random(1);
  for (int i = 0; i < 1500; ++i) {
    const Shape s = random_shape(random);
    Data data(s, random);
    // Now and then fewer outputs than the pads allow.
    const uint32_t cropped = random.below(4) == 0;
    const uint32_t width = s.x.convolved() - std::min(cropped, s.x.convolved());
    const uint32_t height = s.y.convolved() - std::min(cropped, s.y.convolved());
    const auto expected = naive_map(s, data, height, width, naive_output);
    with_each_instance([&] {
      Layer layer(forward_conv2d, s, data, width, height);
      ASSERT_TRUE(same_floats(expected, layer.run())) << testing::PrintToString(s);
    });
  }
}

TEST(Conv2d, TransposeSameBitsAsTheFormula) {
  Random random(2);
  for (int i = 0; i < 1000; ++i) {
    const Shape s = random_shape(random);
    Data data(s, random);
    const uint32_t width = s.x.transposed(), height = s.y.transposed();
    const auto expected = naive_map(s, data, height, width, naive_transposed_output);
    with_each_instance([&] {
      Layer layer(forward_conv2d_transpose, s, data, width, height);
      ASSERT_TRUE(same_floats(expected, layer.run())) << testing::PrintToString(s);
    });
  }
}

TEST(Conv2d, DepthwiseWeightsInTheOrdinaryOrder) {
  Random random(3);
  Shape s = {9, 9, 9, true, true, {7, 3, 1, 1, 1, 1}, {5, 2, 2, 1, 0, 0}};
  Data data(s, random);
  const auto expected = naive_map(s, data, s.y.convolved(), s.x.convolved(), naive_output);
  const Data depthwise = data;
  for (uint32_t filter = 0; filter < s.filters; ++filter) {
    for (uint32_t tap = 0; tap < 6; ++tap) {
      data.weights[filter * 6 + tap] = depthwise.weights[tap * 9 + filter];
    }
  }
  s.depthwise = false;
  Layer layer(forward_conv2d, s, data, s.x.convolved(), s.y.convolved());
  EXPECT_TRUE(same_floats(expected, layer.run()));
}

// Dictionary weights: every row of a tap's channels starts on a byte of its own.
TEST(Conv2d, ExpandsIndicesOnEveryCall) {
  Random random(4);
  for (const uint32_t bits : {4u, 8u}) {
    for (const uint32_t channels : {1u, 2u, 5u, 8u}) {
      const Shape s = {2 * channels, 6, 2, true, false, {4, 2, 1, 1, 0, 0}, {3, 3, 1, 1, 1, 0}};
      Data data(s, random);
      const size_t rows = s.weights().elements() / channels;
      const size_t row_bytes = bits == 4 ? (channels + 1) / 2 : channels;
      const std::vector<uint8_t> indices = random.bytes(rows * row_bytes);
      const std::vector<float> table = random.floats(size_t{1} << bits);
      for (size_t i = 0; i < data.weights.size(); ++i) {
        const size_t at = i % channels;
        const uint8_t* row = indices.data() + i / channels * row_bytes;
        data.weights[i] = table[bits == 8 ? row[at] : row[at / 2] >> (at % 2 == 0 ? 4 : 0) & 15];
      }
      std::vector<float> expanded(data.weights.size() + 1, 77.0f);  // the last is not ours
      const nnlib::tensor weights(
          bits == 4 ? AI_ARRAY_FORMAT_LUT4_FLOAT : AI_ARRAY_FORMAT_LUT8_FLOAT, s.weights(),
          indices.data(), table.data(), nullptr);
      nnlib::tensor scratch({1, static_cast<uint32_t>(data.weights.size()), 1, 1}, expanded.data());
      const auto check = [&](ai_layer_forward forward, uint32_t width, uint32_t height,
                             const std::vector<float>& expected) {
        Layer layer(forward, s, data, width, height);
        layer.weights.array = weights.array;
        const nnlib::layer_chain chain(nnlib::list(layer.in), nnlib::list(layer.out),
                                       nnlib::list(layer.weights, layer.bias),
                                       nnlib::list(scratch));
        layer.record.base.tensor_chain = &chain;
        EXPECT_EQ(ai_conv2d_scratch_size(&layer.record), data.weights.size());
        EXPECT_TRUE(same_floats(expected, layer.run())) << bits << " bits, channels " << channels;
        EXPECT_EQ(expanded.back(), 77.0f);
      };
      uint32_t width = s.x.convolved(), height = s.y.convolved();
      check(forward_conv2d, width, height, naive_map(s, data, height, width, naive_output));
      width = s.x.transposed(), height = s.y.transposed();
      check(forward_conv2d_transpose, width, height,
            naive_map(s, data, height, width, naive_transposed_output));
    }
  }
}

namespace {

struct NlCall {
  const void* out;
  ai_size size;
  const void* params;
  bool operator==(const NlCall&) const = default;
};
std::vector<NlCall> nl_calls;

void record_nl(ai_array* out, const ai_array* in, ai_size size, const void* params) {
  EXPECT_EQ(out, in);
  nl_calls.push_back({out->data, size, params});
}

}  // namespace

// The window of each pixel, and parameters that step from pixel to pixel and start again after the
// last one and in each row; with a stride of 0 they stay. In the end the output's data is its
// data_start, wherever it was.
TEST(Conv2d, NonlinearityWindows) {
  Random random(5);
  const Shape s = {2, 3, 1, true, false, {4, 2, 1, 1, 0, 0}, {3, 1, 1, 1, 0, 0}};
  Data data(s, random);
  for (const uint32_t sets : {0u, 1u, 2u, 3u, 9u}) {  // 0: nl_params
    Layer layer(forward_conv2d, s, data, 3, 3, record_nl);
    const std::vector<float> values(27);
    nnlib::tensor params({1, 3, sets, 1}, values.data());
    uint32_t no_strides[AI_SHAPE_DIMS] = {};
    if (sets == 1) {
      params.stride.data = no_strides;
    }
    std::vector<float> rows(27);
    nnlib::tensor window({1, 3, 3, 3}, rows.data());
    const nnlib::layer_chain chain(
        nnlib::list(layer.in), nnlib::list(layer.out),
        nnlib::list(layer.weights, nnlib::absent, sets != 0 ? &params : nullptr),
        nnlib::list(window));
    layer.record.base.tensor_chain = &chain;
    layer.record.nl_params = &params.array;
    std::vector<NlCall> expected;
    for (size_t pixel = 0; pixel < 9; ++pixel) {
      const size_t set = sets != 0 ? pixel % 3 % sets : 0;
      expected.push_back({layer.out_data.data() + pixel * 3, 3, values.data() + set * 3});
    }
    nl_calls.clear();
    float start = 0;
    layer.out.array.data_start = &start;
    layer.run();
    EXPECT_EQ(nl_calls, expected) << sets;
    EXPECT_EQ(layer.out.array.data, &start);

    uint32_t pads[4] = {};
    ai_layer_conv2d_nl_pool fused = {
        layer.record, {1, 1}, {1, 1}, pads_of(pads), pool_func_mp_array_f32};
    layer.out.array = {AI_ARRAY_FORMAT_FLOAT, 27, layer.out_data.data(), layer.out_data.data()};
    for (size_t pixel = 0; pixel < 9; ++pixel) {
      expected[pixel].out = rows.data() + pixel % 3 * 3;  // the window of one row
    }
    nl_calls.clear();
    forward_conv2d_nl_pool(&fused.base.base);
    EXPECT_EQ(nl_calls, expected) << sets << ", fused";
  }
}

// A stride of 0 stays at the first position, with a dilation of 0 all taps are at one; nothing is
// divided by them.
TEST(Conv2d, StrideAndDilationOfZero) {
  Random random(6);
  for (int i = 0; i < 300; ++i) {
    Shape s = random_shape(random);
    for (uint32_t* option : {&s.x.stride, &s.y.stride, &s.x.dilation, &s.y.dilation}) {
      *option = random.pick({0, 0, 1, 2});
    }
    Data data(s, random);
    const uint32_t width = 1 + random.below(4), height = 1 + random.below(4);
    const auto expected = naive_map(s, data, height, width, naive_output);
    with_each_instance([&] {
      Layer layer(forward_conv2d, s, data, width, height);
      ASSERT_TRUE(same_floats(expected, layer.run())) << testing::PrintToString(s);
    });
  }
}

// Where a transposed map has one input or one tap in a direction, and a fused layer one convolved
// row, 0 serves as well as 1.
TEST(Conv2d, ZeroWhereNoStrideOrDilationIsNeeded) {
  Random random(7);
  Shape s = {4, 3, 1, true, false, {1, 3, 1, 1, 1, 0}, {5, 1, 1, 1, 0, 0}};
  Data data(s, random);
  auto expected = naive_map(s, data, 5, 2, naive_transposed_output);
  s.x.stride = s.y.dilation = 0;
  EXPECT_TRUE(same_floats(expected, Layer(forward_conv2d_transpose, s, data, 2, 5).run()));

  s.x = {3, 3, 0, 1, 0, 0};
  s.y = {4, 2, 1, 2, 0, 0};
  data = Data(s, random);
  s.y = {3, 2, 0, 2, 0, 0};
  expected = naive_map(s, data, 1, 1, naive_output);
  Layer layer(forward_conv2d_nl_pool, s, data, 1, 1);
  uint32_t pads[4] = {};
  ai_layer_conv2d_nl_pool fused = {
      layer.record, {1, 1}, {1, 1}, pads_of(pads), pool_func_mp_array_f32};
  EXPECT_EQ(ai_conv2d_nl_pool_scratch_size(&fused), s.filters);
  std::vector<float> row(s.filters);
  nnlib::tensor window({1, s.filters, 1, 1}, row.data());
  const nnlib::layer_chain chain(nnlib::list(layer.in), nnlib::list(layer.out),
                                 nnlib::list(layer.weights, layer.bias), nnlib::list(window));
  fused.base.base.tensor_chain = &chain;
  forward_conv2d_nl_pool(&fused.base.base);
  EXPECT_TRUE(same_floats(expected, layer.out_data));
}

namespace {

// Checks what it is called with, then pools.
struct PoolCalls {
  ai_pool_func function;
  const ai_array* scratch;
  const float* out;
  Shape shape;
  Direction x, y;
  uint32_t rows;
} pool_calls;

void check_pool(ai_array* in, uint16_t in_w, uint16_t in_h, uint16_t channels, uint16_t pool_w,
                uint16_t pool_h, uint16_t pad_x, uint16_t pad_y, uint16_t stride_x,
                uint16_t stride_y, uint16_t out_w, uint16_t out_h, ai_array* out) {
  PoolCalls& c = pool_calls;
  const uint32_t row = c.rows++;
  const uint32_t above = c.y.pad_before > row * c.y.stride ? c.y.pad_before - row * c.y.stride : 0;
  EXPECT_EQ(in, c.scratch);
  const std::vector<uint32_t> sizes = {in_w,  channels, pool_w,   pool_h, pad_x,
                                       pad_y, stride_x, stride_y, out_w,  out_h};
  EXPECT_EQ(sizes, std::vector<uint32_t>({c.shape.x.convolved(), c.shape.filters, c.x.taps,
                                          c.y.taps, c.x.pad_before, above, c.x.stride, c.y.stride,
                                          c.x.convolved(), 1}));
  EXPECT_LE(in_h, c.y.taps);
  EXPECT_EQ(out->data, c.out + size_t{row} * out_w * channels);
  c.function(in, in_w, in_h, channels, pool_w, pool_h, pad_x, pad_y, stride_x, stride_y, out_w,
             out_h, out);
}

}  // namespace

// The fused layer gives the bits of its three steps, in scratch of the least size and in more.
TEST(Conv2dNlPool, SameBitsAsTheStepsInSequence) {
  Random random(7);
  for (int i = 0; i < 1500; ++i) {
    Shape s = random_shape(random);
    s.y.in += random.below(6);
    Data data(s, random);
    const uint32_t width = s.x.convolved(), height = s.y.convolved();
    Direction x = random_direction(random), y = random_direction(random);
    x.in = width;
    y.in = height;
    x.dilation = y.dilation = 1;
    const uint32_t out_width = x.convolved(), out_height = y.convolved();
    const ai_pool_func function = random.below(2) ? pool_func_mp_array_f32 : pool_func_ap_array_f32;

    Layer unfused(forward_conv2d, s, data, width, height, nl_func_tanh_array_f32);
    unfused.run();
    std::vector<float> expected(size_t{out_width} * out_height * s.filters);
    ai_array map = {AI_ARRAY_FORMAT_FLOAT, 0, not_null(expected), expected.data()};
    const auto u16 = [](uint32_t value) { return static_cast<uint16_t>(value); };
    function(&unfused.out.array, u16(width), u16(height), u16(s.filters), u16(x.taps), u16(y.taps),
             u16(x.pad_before), u16(y.pad_before), u16(x.stride), u16(y.stride), u16(out_width),
             u16(out_height), &map);

    Layer layer(forward_conv2d_nl_pool, s, data, out_width, out_height, nl_func_tanh_array_f32);
    uint32_t pads[4] = {y.pad_before, x.pad_before, y.pad_after, x.pad_after};
    ai_layer_conv2d_nl_pool fused = {
        layer.record, {x.taps, y.taps}, {x.stride, y.stride}, pads_of(pads), check_pool};
    const ai_size size = ai_conv2d_nl_pool_scratch_size(&fused);
    EXPECT_EQ(size, width * s.filters * std::min(y.taps, height));
    std::vector<float> rows(size + width * s.filters * random.below(3));
    nnlib::tensor scratch({1, s.filters, width, 1}, not_null(rows));
    scratch.array.size = static_cast<ai_size>(rows.size());
    const nnlib::layer_chain chain(nnlib::list(layer.in), nnlib::list(layer.out),
                                   nnlib::list(layer.weights, s.bias ? &layer.bias : nullptr),
                                   nnlib::list(scratch));
    fused.base.base.tensor_chain = &chain;
    pool_calls = {function, &scratch.array, layer.out_data.data(), s, x, y, 0};
    forward_conv2d_nl_pool(&fused.base.base);
    ASSERT_TRUE(same_floats(expected, layer.out_data)) << testing::PrintToString(s);
    EXPECT_EQ(pool_calls.rows, out_height);
    EXPECT_EQ(layer.out.array.data, layer.out_data.data());
    EXPECT_EQ(scratch.array.data, rows.data());
  }
}

TEST(Conv2d, AllocatesNothing) {
  Random random(8);
  const Shape s = {16, 17, 1, true, false, {9, 3, 1, 1, 1, 1}, {8, 3, 2, 1, 1, 1}};
  Data data(s, random);
  Layer layer(forward_conv2d, s, data, s.x.convolved(), s.y.convolved());
  allocations = 0;
  void* volatile block = std::malloc(1);
  std::free(block);
  EXPECT_EQ(allocations, 1u);  // it does count
  layer.run();
  EXPECT_EQ(allocations, 1u);
}
