// SPDX-License-Identifier: MIT
// The fixed-point kernels against one naive loop, the choice between them, and the layers on them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <limits>
#include <random>
#include <vector>

#include "core/ai_declare.h"
#include "kernels/arm_convolve_1x1_HWC_q7_fast_nonsquare.h"
#include "kernels/arm_convolve_HWC_q15.h"
#include "kernels/arm_convolve_HWC_q7_RGB.h"
#include "kernels/arm_convolve_HWC_q7_basic_nonsquare.h"
#include "kernels/arm_depthwise_separable_conv_HWC_q7_nonsquare.h"
#include "kernels/arm_fully_connected.h"
#include "kernels/arm_nn_mat_mult_kernel.h"
#include "kernels/arm_nntables.h"
#include "kernels/arm_q7_to_q15_reordered_no_shift.h"
#include "kernels/arm_softmax.h"
#include "kernels/ko_fxp_convolve_HWC_q15_nonsquare.h"
#include "kernels/ko_fxp_convolve_HWC_q7_fast_nonsquare.h"
#include "kernels/ko_fxp_dense.h"
#include "kernels/ko_fxp_depthwise_conv_HWC_q7_nonsquare.h"
#include "kernels/ko_fxp_nl.h"
#include "kernels/vector.hpp"
#include "layers_quantized/conv2d_fixed_choice.hpp"
#include "layers_quantized/layers_conv2d_quarn_fixed.h"
#include "layers_quantized/layers_dense_quarn_fixed.h"
#include "layers_quantized/layers_nl_quarn_fixed.h"
#include "layers_quantized/layers_pool_quarn_fixed.h"
#include "layers_quantized/layers_sm_quarn_fixed.h"
#include "test/unit/cpu_limit.hpp"

namespace {

using nnlib::ConvGeometry;
template <class T>
using Values = std::vector<T>;

template <class T>
Values<T> random_values(size_t count, uint32_t seed) {
  std::mt19937 random(seed);
  Values<T> values(count);
  for (T& value : values) {
    value = static_cast<T>(random());
  }
  return values;
}

// (a * i + b) modulo 256 or 4096, centred.
template <class T>
Values<T> anchor_values(size_t count, int a, int b) {
  const int span = sizeof(T) == 1 ? 256 : 4096;
  Values<T> values(count);
  for (size_t i = 0; i < count; ++i) {
    values[i] = static_cast<T>((a * static_cast<int>(i) + b) % span - span / 2);
  }
  return values;
}

uint16_t u16(uint32_t size) {
  return static_cast<uint16_t>(size);
}

template <class T>
using AnyShape = arm_status(const T*, uint16_t, uint16_t, uint16_t, const T*, uint16_t, uint16_t,
                            uint16_t, uint16_t, uint16_t, uint16_t, uint16_t, const T*, uint16_t,
                            uint16_t, T*, uint16_t, uint16_t, q15_t*, q7_t*);
template <class T>
using Square = arm_status(const T*, uint16_t, uint16_t, const T*, uint16_t, uint16_t, uint16_t,
                          uint16_t, const T*, uint16_t, uint16_t, T*, uint16_t, q15_t*, q7_t*);
template <class T, class W>
using Dense = arm_status(const T*, const W*, uint16_t, uint16_t, uint16_t, uint16_t, const W*, T*,
                         q15_t*);

// A convolution of maps of T with weights of W. A 1x1 map makes it a dense layer.
template <class T, class W = T>
struct Convolution {
  ConvGeometry g;
  uint16_t out_shift = sizeof(T) == 1 ? 9 : 16;
  bool depthwise = false;
  uint16_t bias_shift = 3;
  Values<T> in = random_values<T>(size_t{g.in_width} * g.in_height * g.in_channels, 1);
  Values<W> weights = random_values<W>(
      size_t{g.kernel_width} * g.kernel_height * g.out_channels * (depthwise ? 1 : g.in_channels),
      2);
  Values<W> bias = random_values<W>(g.out_channels, 3);

  int64_t sum(uint32_t y, uint32_t x, uint32_t o) const {
    int64_t total = 0;
    for (uint32_t tap = 0; tap < g.kernel_width * g.kernel_height; ++tap) {
      const uint32_t row = y * g.stride_y + tap / g.kernel_width - g.pad_y;  // above: very large
      const uint32_t column = x * g.stride_x + tap % g.kernel_width - g.pad_x;
      if (row >= g.in_height || column >= g.in_width) {
        continue;
      }
      const T* pixel = &in[(row * g.in_width + column) * g.in_channels];
      if (depthwise) {
        total += pixel[o / (g.out_channels / g.in_channels)] * weights[tap * g.out_channels + o];
        continue;
      }
      const W* filter = &weights[(o * g.kernel_width * g.kernel_height + tap) * g.in_channels];
      for (uint32_t l = 0; l < g.in_channels; ++l) {
        total += int64_t{pixel[l]} * filter[l];
      }
    }
    return total;
  }
  T output(uint32_t y, uint32_t x, uint32_t o) const {
    const int64_t start = (bias.empty() ? 0 : bias[o]) * (int64_t{1} << bias_shift);
    const int64_t total = start + sum(y, x, o) + (out_shift > 0 ? 1 << (out_shift - 1) : 0);
    const int32_t shifted = static_cast<int32_t>(static_cast<uint32_t>(total)) >> out_shift;
    return static_cast<T>(
        std::clamp<int32_t>(shifted, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
  }
  Values<T> naive() const {
    Values<T> out;
    for (uint32_t pixel = 0; pixel < g.pixels(); ++pixel) {
      for (uint32_t o = 0; o < g.out_channels; ++o) {
        out.push_back(output(pixel / g.out_width, pixel % g.out_width, o));
      }
    }
    return out;
  }

  // Of a layer whose input has 8 fractional bits, the weights 4 and the biases 6.
  Values<T> of_layer(int out_bits) const {
    Convolution layer = *this;
    layer.bias_shift = 12 - 6;
    layer.out_shift = u16(static_cast<uint32_t>(std::max(12 - out_bits, 0)));
    Values<T> out = layer.naive();
    for (T& value : out) {
      const int scaled = value * (1 << std::max(out_bits - 12, 0));
      value = static_cast<T>(
          std::clamp<int>(scaled, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
    }
    return out;
  }

  const W* bias_data() const { return bias.empty() ? nullptr : bias.data(); }
  arm_status call(AnyShape<T>* kernel, T* out, q15_t* scratch) const {
    return kernel(in.data(), u16(g.in_width), u16(g.in_height), u16(g.in_channels), weights.data(),
                  u16(g.out_channels), u16(g.kernel_width), u16(g.kernel_height), u16(g.pad_x),
                  u16(g.pad_y), u16(g.stride_x), u16(g.stride_y), bias_data(), bias_shift,
                  out_shift, out, u16(g.out_width), u16(g.out_height), scratch, nullptr);
  }
  arm_status call(Square<T>* kernel, T* out, q15_t* scratch) const {
    return kernel(in.data(), u16(g.in_width), u16(g.in_channels), weights.data(),
                  u16(g.out_channels), u16(g.kernel_width), u16(g.pad_x), u16(g.stride_x),
                  bias_data(), bias_shift, out_shift, out, u16(g.out_width), scratch, nullptr);
  }
  arm_status call(Dense<T, W>* kernel, T* out, q15_t* scratch) const {
    return kernel(in.data(), weights.data(), u16(g.in_channels), u16(g.out_channels), bias_shift,
                  out_shift, bias_data(), out, scratch);
  }
  // The kernel's output is the naive loop's, or untouched if the kernel refuses, with and without
  // wide vectors. Its scratch of `columns` columns has just that size and holds rubbish.
  template <class Kernel>
  void check(Kernel* kernel, uint32_t columns, bool refused = false) const {
    const Values<T> untouched(size_t{g.pixels()} * g.out_channels, T{77});
    const Values<T> expected = refused ? untouched : naive();
    for (const bool wide : {false, true}) {
      nnlib::vector_allow_wide(wide);
      Values<T> out = untouched;
      Values<q15_t> scratch = random_values<q15_t>(columns * g.column_length(), 4);
      EXPECT_EQ(call(kernel, out.data(), scratch.data()),
                refused ? ARM_MATH_SIZE_MISMATCH : ARM_MATH_SUCCESS);
      EXPECT_EQ(out, expected) << g.in_width << "x" << g.in_height << "x" << g.in_channels;
    }
  }
};

// Width, height, channels of the input, channels of the output, kernel, padding, strides, width and
// height of the output: odd pixel and channel counts, windows that hang over on every side, whole
// groups of vector lanes with all kinds of rests.
constexpr ConvGeometry kShapes[] = {
    {1, 1, 1, 1, 1, 1, 0, 0, 1, 1, 1, 1},     {5, 4, 3, 2, 3, 2, 1, 0, 2, 1, 3, 3},
    {6, 5, 4, 2, 3, 3, 1, 1, 1, 1, 6, 5},     {6, 5, 4, 6, 1, 1, 0, 0, 1, 1, 6, 5},
    {3, 3, 16, 8, 1, 1, 0, 0, 1, 1, 3, 3},    {4, 3, 20, 5, 2, 3, 1, 2, 1, 1, 5, 5},
    {9, 2, 7, 9, 5, 1, 4, 0, 3, 1, 5, 2},     {4, 4, 8, 4, 2, 2, 0, 0, 1, 1, 5, 6},
    {3, 2, 13, 17, 2, 2, 5, 4, 2, 3, 7, 3},   {7, 7, 36, 12, 1, 1, 0, 0, 1, 1, 7, 7},
    {130, 1, 4, 2, 3, 1, 1, 0, 1, 1, 130, 1}, {5, 5, 3, 7, 3, 3, 1, 1, 2, 2, 3, 3},
    {4, 4, 3, 4, 4, 4, 2, 2, 1, 1, 5, 5},     {3, 3, 33, 3, 3, 3, 1, 1, 1, 1, 3, 3},
    {7, 5, 5, 35, 1, 3, 0, 1, 1, 1, 7, 5},
};
constexpr uint16_t kOutShifts[] = {0, 1, 9, 15};

bool square(const ConvGeometry& g) {
  return g.in_width == g.in_height && g.out_width == g.out_height &&
         g.kernel_width == g.kernel_height && g.pad_x == g.pad_y && g.stride_x == g.stride_y;
}

TEST(FixedConvolution, Q7KernelsAreTheNaiveLoop) {
  for (const ConvGeometry& g : kShapes) {
    for (const uint16_t out_shift : kOutShifts) {
      Convolution<q7_t> c{g, out_shift};
      if (out_shift == 1) {
        c.bias = {};  // absent
      }
      const bool fast = g.in_channels % 4 == 0 && g.out_channels % 2 == 0;
      c.check(arm_convolve_HWC_q7_basic_nonsquare, 2);
      c.check(ko_fxp_convolve_HWC_q7_fast_nonsquare, 2, !fast);
      c.check(arm_convolve_1x1_HWC_q7_fast_nonsquare, 2,
              !fast || g.kernel_width * g.kernel_height != 1);
      if (square(g)) {
        c.check(arm_convolve_HWC_q7_RGB, 2, g.in_channels != 3);
      }
    }
  }
}

TEST(FixedConvolution, Q15KernelsAreTheNaiveLoopAndWrap) {
  for (const ConvGeometry& g : kShapes) {
    for (const uint16_t out_shift : kOutShifts) {
      Convolution<q15_t> c{g, out_shift};
      if (out_shift == 1) {
        c.bias = {};
      }
      c.check(ko_fxp_convolve_HWC_q15_nonsquare, 2);
      if (square(g)) {
        c.check(arm_convolve_HWC_q15_basic, 1);
        c.check(arm_convolve_HWC_q15_fast, 2, (g.in_channels | g.out_channels) % 2 != 0);
      }
    }
  }
}

TEST(FixedConvolution, DepthwiseKernelsAreTheNaiveLoop) {
  for (ConvGeometry g : kShapes) {
    for (const uint32_t multiplier : {1u, 2u, 3u}) {
      g.out_channels = g.in_channels * multiplier;
      Convolution<q7_t> c{g, 7, true}, unbiased = c;
      unbiased.bias = {};
      for (const auto* layer : {&c, &unbiased}) {
        layer->check(ko_fxp_depthwise_conv_HWC_q7_nonsquare, 0);
        layer->check(arm_depthwise_separable_conv_HWC_q7_nonsquare, 0, multiplier != 1);
      }
    }
  }
  const Convolution<q7_t> none{{3, 2, 0, 0, 2, 2, 0, 0, 1, 1, 2, 1}, 7, true};
  none.check(arm_depthwise_separable_conv_HWC_q7_nonsquare, 0);
}

TEST(FixedProducts, DenseAndMatrixKernelsAreTheNaiveLoop) {
  for (const uint32_t rows : {1u, 2u, 3u, 4u, 5u, 9u}) {
    for (uint32_t length = 1; length < 70; ++length) {
      const ConvGeometry vector = {1, 1, length, rows, 1, 1, 0, 0, 1, 1, 1, 1};
      const auto with_and_without_bias = [](auto dense, auto* kernel, uint32_t columns) {
        dense.check(kernel, columns);
        dense.bias = {};
        dense.check(kernel, columns);
      };
      for (const uint32_t columns : {0u, 1u}) {
        with_and_without_bias(Convolution<q7_t>{vector}, ko_fxp_fully_connected_q7, columns);
      }
      with_and_without_bias(Convolution<q15_t, q7_t>{vector, 10},
                            arm_fully_connected_mat_q7_vec_q15, 0);
      with_and_without_bias(Convolution<q15_t>{vector, 17}, arm_fully_connected_q15, 0);

      const Convolution<q7_t> two{{2, 1, length, rows, 1, 1, 0, 0, 1, 1, 2, 1}};
      const Values<q15_t> columns(two.in.begin(), two.in.end());
      Values<q15_t> reordered(columns.size());
      arm_q7_to_q15_reordered_no_shift(two.in.data(), reordered.data(), length);
      arm_q7_to_q15_reordered_no_shift(&two.in[length], &reordered[length], length);
      Values<q7_t> out(size_t{2} * rows), out_reordered = out;
      const auto run = [&](auto kernel, const Values<q15_t>& pair, Values<q7_t>& to) {
        EXPECT_EQ(kernel(two.weights.data(), pair.data(), u16(rows), u16(length), two.bias_shift,
                         two.out_shift, two.bias.data(), to.data()),
                  to.data() + to.size());
        EXPECT_EQ(to, two.naive());
      };
      run(arm_nn_mat_mult_kernel_q7_q15, columns, out);
      run(arm_nn_mat_mult_kernel_q7_q15_reordered, reordered, out_reordered);
    }
  }
}

// Values computed elsewhere, so that loop and kernels do not share a mistake.
TEST(FixedConvolution, AnchorsHold) {
  Convolution<q7_t> q7{{5, 4, 3, 2, 3, 2, 1, 0, 2, 1, 3, 3}};
  q7.in = anchor_values<q7_t>(q7.in.size(), 37, 11);
  q7.weights = anchor_values<q7_t>(q7.weights.size(), 53, 7);
  q7.bias = anchor_values<q7_t>(2, 29, 3);
  EXPECT_EQ(q7.naive(), (Values<q7_t>{-23, -24, -31, -55, 15, -58, -26, 3, -42, 26, -38, -25, -25,
                                      67, -7, 62, -38, 60}));
  Convolution<q15_t> q15{{3, 3, 2, 2, 2, 2, 0, 0, 1, 1, 2, 2}, 12};
  q15.bias_shift = 4;
  q15.in = anchor_values<q15_t>(q15.in.size(), 1237, 101);
  q15.weights = anchor_values<q15_t>(q15.weights.size(), 797, 55);
  q15.bias = anchor_values<q15_t>(2, 611, 9);
  EXPECT_EQ(q15.naive(), (Values<q15_t>{903, -599, 427, -689, 1244, -913, -538, -492}));
  Values<q15_t> order(10);
  arm_q7_to_q15_reordered_no_shift(Values<q7_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}.data(), order.data(),
                                   10);
  EXPECT_EQ(order, (Values<q15_t>{1, 3, 2, 4, 5, 7, 6, 8, 9, 10}));
}

TEST(FixedConvolution, KernelIsChosenBySizes) {
  using K = nnlib::FixedConvKernel;
  using G = ConvGeometry;
  const G map = {5, 4, 8, 2, 3, 2, 1, 0, 1, 1, 5, 3};
  const G point = {5, 4, 8, 2, 1, 1, 0, 0, 1, 1, 5, 4};
  const G rgb = {5, 5, 3, 2, 3, 3, 1, 1, 1, 1, 5, 5};
  const struct {
    uint32_t bits, groups;
    G geometry;
    uint32_t G::*changed;
    uint32_t value;
    K whole, by_rows;
  } cases[] = {
      {8, 1, map, &G::pad_x, 1, K::kFastQ7, K::kFastQ7},
      {8, 1, map, &G::in_channels, 6, K::kBasicQ7, K::kBasicQ7},
      {8, 1, map, &G::out_channels, 3, K::kBasicQ7, K::kBasicQ7},
      {8, 1, point, &G::pad_x, 0, K::kPointwiseQ7, K::kPointwiseQ7},
      {8, 1, point, &G::stride_y, 2, K::kFastQ7, K::kFastQ7},
      {8, 1, point, &G::pad_x, 1, K::kFastQ7, K::kFastQ7},
      {8, 1, point, &G::in_channels, 2, K::kBasicQ7, K::kBasicQ7},
      {8, 1, rgb, &G::pad_x, 1, K::kRgbQ7, K::kBasicQ7},
      {8, 1, rgb, &G::in_height, 6, K::kBasicQ7, K::kBasicQ7},
      {8, 1, rgb, &G::out_width, 4, K::kBasicQ7, K::kBasicQ7},
      {8, 1, rgb, &G::kernel_width, 2, K::kBasicQ7, K::kBasicQ7},
      {8, 1, rgb, &G::stride_x, 2, K::kBasicQ7, K::kBasicQ7},
      {8, 1, rgb, &G::pad_y, 0, K::kBasicQ7, K::kBasicQ7},
      {8, 8, map, &G::out_channels, 8, K::kDepthwiseQ7, K::kDepthwiseQ7},
      {8, 3, rgb, &G::out_channels, 3, K::kDepthwiseMultiplierQ7, K::kDepthwiseMultiplierQ7},
      {8, 8, map, &G::out_channels, 16, K::kDepthwiseMultiplierQ7, K::kDepthwiseMultiplierQ7},
      {8, 8, map, &G::out_channels, 2, K::kUnsupported, K::kUnsupported},
      {8, 2, map, &G::pad_x, 1, K::kUnsupported, K::kUnsupported},
      {8, 0, map, &G::in_channels, 0, K::kUnsupported, K::kUnsupported},
      {16, 1, rgb, &G::pad_x, 1, K::kSquareQ15, K::kRowsQ15},
      {16, 1, rgb, &G::pad_x, 0, K::kUnsupported, K::kUnsupported},
      {16, 3, rgb, &G::out_channels, 3, K::kUnsupported, K::kUnsupported},
      {32, 1, rgb, &G::pad_x, 1, K::kUnsupported, K::kUnsupported},
  };
  for (const auto& c : cases) {
    G geometry = c.geometry;
    geometry.*c.changed = c.value;
    EXPECT_EQ(nnlib::choose_fixed_conv({c.bits, c.groups, geometry}, false), c.whole) << &c - cases;
    EXPECT_EQ(nnlib::choose_fixed_conv({c.bits, c.groups, geometry}, true), c.by_rows)
        << &c - cases;
  }
}

struct Pooling {
  uint32_t size[2], stride[2];
  uint32_t pad[4];
  uint32_t out_width, out_height;
};

// A fused layer gives the bytes of convolution, nonlinearity and pooling in sequence. Its scratch
// has the least size. The greatest value of a limited relu is in the record or, before that, in the
// third tensor of the weights.
template <class T>
void check_fused(const Convolution<T>& c, int out_bits, Pooling p, ai_nl_func nl,
                 ai_pool_func pool) {
  const ConvGeometry& g = c.g;
  const auto q = [](int bits) { return AI_ARRAY_FORMAT_MAKE_Q(8 * sizeof(T), bits); };
  const uint32_t groups = c.depthwise ? g.in_channels : 1;
  const uint32_t below = (g.out_height - 1) * g.stride_y + g.kernel_height - g.in_height - g.pad_y;
  uint32_t pad[4] = {g.pad_y, g.pad_x, below, 0};
  const nnlib::dims whole = {1, g.out_channels, g.out_width, g.out_height};
  const nnlib::dims pooled = {1, g.out_channels, p.out_width, p.out_height};
  Values<T> map(whole.elements()), result(pooled.elements()), expected = result;
  Values<T> rows(size_t{g.out_width} * g.out_channels * p.size[1]);
  nnlib::tensor in(q(8), {1, g.in_channels, g.in_width, g.in_height}, c.in.data());
  nnlib::tensor weights(q(4), {g.in_channels, g.kernel_width, g.kernel_height, g.out_channels},
                        c.weights.data());
  nnlib::tensor bias(q(6), {1, g.out_channels, 1, 1}, c.bias.data());
  nnlib::tensor middle(q(out_bits), whole, map.data());
  nnlib::tensor out(q(out_bits), pooled, result.data());
  // of bytes, whatever the elements
  nnlib::tensor window(AI_ARRAY_FORMAT_S8,
                       {1, g.out_channels, g.out_width, uint32_t{sizeof(T)} * p.size[1]},
                       rows.data());
  nnlib::tensor columns(AI_ARRAY_FORMAT_S16, {1, 1, 1, 1}, nullptr);
  const bool from_weights = g.in_channels % 2 == 0;
  const T limits[] = {20, 9};
  nnlib::tensor limit({1, 1, 1, 1}, &limits[0]), other({1, 1, 1, 1}, &limits[1]);
  const auto all_weights = nnlib::list(weights, c.bias.empty() ? nnlib::absent : &bias,
                                       from_weights ? &limit : nnlib::absent);
  nnlib::layer_chain plain_chain(nnlib::list(in), nnlib::list(middle), all_weights,
                                 nnlib::list(columns));
  nnlib::layer_chain fused_chain(nnlib::list(in), nnlib::list(out), all_weights,
                                 nnlib::list(window, columns));
  ai_layer_conv2d plain = {nnlib::layer(AI_LAYER_TYPE_CONV2D, forward_conv2d_fixed, plain_chain),
                           groups,
                           from_weights ? &other.array : &limit.array,
                           nl,
                           {g.stride_x | 0x30000, g.stride_y | 0x50000},  // the low 16 bits count
                           {1, 1},
                           {AI_DIMS_WORD(AI_SHAPE_TYPE, 4), pad}};
  ai_layer_conv2d_nl_pool fused = {plain,
                                   {p.size[0], p.size[1]},
                                   {p.stride[0], p.stride[1]},
                                   {AI_DIMS_WORD(AI_SHAPE_TYPE, 4), p.pad},
                                   pool};
  fused.base.base.tensor_chain = &fused_chain;
  Values<uint8_t> scratch(ai_conv2d_fixed_scratch_size(&plain));
  columns.array.data = scratch.data();
  forward_conv2d_fixed(&plain.base);
  if (nl == nullptr || nl == nl_func_relu_max_array_fixed) {
    expected = c.of_layer(out_bits);
    for (T& value : expected) {
      value = nl == nullptr ? value : std::clamp<T>(value, 0, limits[0]);
    }
    EXPECT_EQ(map, expected);
  }
  pool(&middle.array, u16(g.out_width), u16(g.out_height), u16(g.out_channels), u16(p.size[0]),
       u16(p.size[1]), u16(p.pad[1]), u16(p.pad[0]), u16(p.stride[0]), u16(p.stride[1]),
       u16(p.out_width), u16(p.out_height), &out.array);
  expected = result;
  std::fill(result.begin(), result.end(), T{55});
  scratch = Values<uint8_t>(ai_conv2d_nl_pool_fixed_scratch_size(&fused), 0xA5);
  columns.array.data = scratch.data();
  forward_conv2d_nl_pool_fixed(&fused.base.base);
  EXPECT_EQ(result, expected) << "out bits " << out_bits;
}

TEST(FixedConvolutionLayer, FusedIsTheSequence) {
  // Overlapping and disjoint windows, rows left out between them, padding, windows off the map.
  const Pooling poolings[] = {{{2, 3}, {1, 1}, {1, 1, 0, 0}, 5, 4},
                              {{3, 2}, {2, 2}, {0, 0, 0, 0}, 2, 2},
                              {{1, 1}, {2, 3}, {0, 1, 0, 0}, 3, 2},
                              {{2, 2}, {1, 1}, {3, 0, 0, 0}, 4, 9}};
  const ConvGeometry map = {6, 5, 4, 2, 3, 2, 1, 1, 1, 1, 6, 6};
  ConvGeometry odd = map;
  odd.in_channels = 3;
  const ConvGeometry strided = {9, 9, 4, 4, 2, 2, 0, 0, 2, 2, 4, 4};
  const ConvGeometry rgb = {7, 7, 3, 4, 2, 2, 0, 0, 1, 1, 6, 6};
  const ConvGeometry multiplied = {6, 5, 3, 6, 3, 2, 1, 1, 1, 1, 6, 6};
  const ConvGeometry pointwise = {6, 6, 4, 2, 1, 1, 0, 0, 1, 1, 6, 6};
  const ConvGeometry too_tall = {6, 3, 4, 2, 3, 7, 1, 1, 1, 1, 6, 0};  // no row of it fits
  Convolution<q7_t> unbiased{{7, 6, 4, 2, 3, 2, 1, 0, 2, 1, 3, 5}};
  unbiased.bias = {};
  const ConvGeometry q15 = {5, 5, 3, 2, 2, 2, 1, 1, 1, 1, 6, 6};
  const ConvGeometry q15_even = {6, 6, 4, 2, 2, 2, 1, 1, 1, 1, 7, 7};
  for (const Pooling& p : poolings) {
    for (const int out_bits : {3, 12, 14}) {
      check_fused<q7_t>({map}, out_bits, p, nullptr, pool_func_ap_array_fixed);
      check_fused<q7_t>(unbiased, out_bits, p, nullptr, pool_func_ap_array_fixed);
      check_fused<q7_t>({odd}, out_bits, p, nl_func_relu_array_fixed, pool_func_mp_array_fixed);
      check_fused<q7_t>({rgb}, out_bits, p, nullptr, pool_func_mp_array_fixed);
      check_fused<q7_t>({multiplied, 9, true}, out_bits, p, nullptr, pool_func_mp_array_fixed);
      check_fused<q7_t>({pointwise}, out_bits, p, nullptr, pool_func_ap_array_fixed);
      for (const ConvGeometry& g : {map, odd, too_tall}) {
        check_fused<q7_t>({g}, out_bits, p, nl_func_relu_max_array_fixed, pool_func_mp_array_fixed);
      }
      check_fused<q7_t>({strided}, out_bits, p, nl_func_tanh_array_fixed, pool_func_ap_array_fixed);
      check_fused<q7_t>({strided, 9, true}, out_bits, p, sm_func_sm_array_fixed,
                        pool_func_mp_array_fixed);
    }
    check_fused<q15_t>({q15}, 10, p, nullptr, pool_func_ap_array_fixed);
    check_fused<q15_t>({q15}, 14, p, nl_func_sigmoid_array_fixed, pool_func_mp_array_fixed);
    check_fused<q15_t>({q15_even}, 10, p, nullptr, pool_func_mp_array_fixed);
  }
}

// One convolved row needs no stride.
TEST(FixedConvolutionLayer, FusedOfOneRowTakesStrideZero) {
  const ConvGeometry one_row = {6, 2, 4, 2, 3, 2, 1, 0, 1, 0, 6, 1};
  check_fused<q7_t>({one_row}, 3, {{2, 1}, {1, 1}, {0, 0, 0, 0}, 5, 1}, nullptr,
                    pool_func_mp_array_fixed);
}

// Even when there is no row to make.
TEST(FixedConvolutionLayer, UnsupportedFusedHangs) {
  const auto run = [](uint32_t groups) {
    static constinit int8_t data[64] = {};
    static uint32_t pad[4] = {};
    const ai_shape pads = {AI_DIMS_WORD(AI_SHAPE_TYPE, 4), pad};
    nnlib::tensor in({1, 4, 2, 2}, data), weights({4, 1, 1, 4}, data), out({1, 4, 2, 0}, data);
    nnlib::layer_chain chain(nnlib::list(in), nnlib::list(out), nnlib::list(weights),
                             nnlib::list(in, in));
    ai_layer_conv2d_nl_pool layer = {};
    layer.base.base =
        nnlib::layer(AI_LAYER_TYPE_OPTIMIZED_CONV2D, forward_conv2d_nl_pool_fixed, chain);
    layer.base.groups = groups;
    layer.base.filter_pad = layer.pool_pad = pads;
    layer.pool_func = pool_func_mp_array_fixed;
    limit_cpu_time();
    forward_conv2d_nl_pool_fixed(&layer.base.base);
    std::exit(0);
  };
  EXPECT_EXIT(run(1), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(run(2), testing::KilledBySignal(SIGVTALRM), "");
}

TEST(FixedConvolutionLayer, UnsupportedHangs) {
  const auto run = [](uint32_t groups, const ai_array_format(&formats)[4]) {
    static constinit int16_t data[64] = {};
    const nnlib::dims map = {1, 4, 2, 2};
    nnlib::tensor in(formats[0], map, data), weights(formats[1], {4, 1, 1, 4}, data);
    nnlib::tensor bias(formats[2], {1, 4, 1, 1}, data), out(formats[3], map, data);
    nnlib::layer_chain chain(nnlib::list(in), nnlib::list(out), nnlib::list(weights, bias),
                             nnlib::list(in));
    static uint32_t pad[4] = {};
    ai_layer_conv2d layer = {nnlib::layer(AI_LAYER_TYPE_CONV2D, forward_conv2d_fixed, chain),
                             groups,
                             nullptr,
                             nullptr,
                             {1, 1},
                             {1, 1},
                             {AI_DIMS_WORD(AI_SHAPE_TYPE, 4), pad}};
    limit_cpu_time();
    forward_conv2d_fixed(&layer.base);
    std::exit(0);
  };
  constexpr ai_array_format q7 = AI_ARRAY_FORMAT_S8, q15 = AI_ARRAY_FORMAT_S16;
  EXPECT_EXIT(run(4, {q7, q7, q7, q7}), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(run(1, {q15, q15, q15, q15}), testing::ExitedWithCode(0), "");
  EXPECT_EXIT(run(2, {q7, q7, q7, q7}), testing::KilledBySignal(SIGVTALRM), "");
  EXPECT_EXIT(run(1, {q7, q15, q7, q7}), testing::KilledBySignal(SIGVTALRM), "");
  EXPECT_EXIT(run(1, {q15, q7, q15, q15}), testing::KilledBySignal(SIGVTALRM), "");
  EXPECT_EXIT(run(1, {q15, q15, q7, q15}), testing::KilledBySignal(SIGVTALRM), "");
  EXPECT_EXIT(run(1, {q15, q15, q15, q7}), testing::KilledBySignal(SIGVTALRM), "");
}

// A dense layer of five inputs and four outputs over three by two positions.
template <class T, class W>
void check_dense_layer(int out_bits, bool biased, bool with_scratch) {
  Convolution<T, W> c{{3, 2, 5, 4, 1, 1, 0, 0, 1, 1, 3, 2}};
  c.bias = biased ? c.bias : Values<W>{};
  const auto q = [](size_t bytes, int bits) { return AI_ARRAY_FORMAT_MAKE_Q(8 * bytes, bits); };
  Values<T> result(24);
  nnlib::tensor in(q(sizeof(T), 8), {1, 5, 3, 2}, c.in.data());
  nnlib::tensor weights(q(sizeof(W), 4), {5, 4, 1, 1}, c.weights.data());
  nnlib::tensor bias(q(sizeof(W), 6), {1, 4, 1, 1}, c.bias.data());
  nnlib::tensor out(q(sizeof(T), out_bits), {1, 4, 3, 2}, result.data());
  nnlib::tensor scratch(AI_ARRAY_FORMAT_S16, {1, 1, 1, 1}, nullptr);
  nnlib::layer_chain chain(nnlib::list(in), nnlib::list(out),
                           nnlib::list(weights, biased ? &bias : nnlib::absent),
                           nnlib::list(with_scratch ? &scratch : nnlib::absent));
  ai_layer layer = nnlib::layer(AI_LAYER_TYPE_DENSE, forward_dense_fixed, chain);
  EXPECT_EQ(ai_dense_fixed_scratch_size(&layer), sizeof(T) == 1 ? 10u : 0u);
  Values<uint8_t> rubbish(ai_dense_fixed_scratch_size(&layer), 0xA5);
  scratch.array.data = rubbish.data();
  forward_dense_fixed(&layer);
  EXPECT_EQ(result, c.of_layer(out_bits)) << out_bits << biased << with_scratch;
}

TEST(FixedDenseLayer, EveryPosition) {
  for (const int out_bits : {3, 12, 14}) {
    for (const bool biased : {false, true}) {
      for (const bool with_scratch : {false, true}) {
        check_dense_layer<q7_t, q7_t>(out_bits, biased, with_scratch);
        check_dense_layer<q15_t, q7_t>(out_bits, biased, with_scratch);
        check_dense_layer<q15_t, q15_t>(out_bits, biased, with_scratch);
      }
    }
  }
}

// A sum beyond 32 bits in one channel, and its negative in the other.
TEST(FixedPool, AveragesLargeWindows) {
  constexpr uint16_t kSide = 300;
  Values<q15_t> in(size_t{2} * kSide * kSide, 32767), out(2);
  for (size_t i = 1; i < in.size(); i += 2) {
    in[i] = -32768;
  }
  ai_array from = {AI_ARRAY_FORMAT_S16, static_cast<ai_size>(in.size()), in.data(), in.data()};
  ai_array to = {AI_ARRAY_FORMAT_S16, 2, out.data(), out.data()};
  pool_func_ap_array_fixed(&from, kSide, kSide, 2, kSide, kSide, 0, 0, 1, 1, 1, 1, &to);
  EXPECT_EQ(out, (Values<q15_t>{32767, -32768}));
  pool_func_ap_array_fixed(&from, 257, 255, 2, 257, 255, 0, 0, 1, 1, 1, 1, &to);  // 65535 cells
  EXPECT_EQ(out, (Values<q15_t>{32767, -32768}));
}

TEST(FixedSoftmax, ValuesHold) {
  const struct {
    Values<q15_t> in, q7, q15;
  } cases[] = {
      {{0}, {127}, {32767}},
      {{1, 2, 3, 4}, {8, 17, 34, 68}, {2184, 4369, 8738, 17476}},
      {{3, 3, 2}, {51, 51, 25}, {13107, 13107, 6553}},
      {{0, -8}, {127, 0}, {32640, 127}},
      {{0, -7}, {127, 0}, {32513, 254}},
      {{127, -128, 120, 119}, {127, 0, 0, 0}, {32388, 0, 253, 126}},
      {{7, 7, 7, 7}, {32, 32, 32, 32}, {8192, 8192, 8192, 8192}},
  };
  for (const auto& c : cases) {
    Values<q7_t> q7(c.in.begin(), c.in.end());
    Values<q15_t> q15 = c.in;
    arm_softmax_q7(q7.data(), u16(static_cast<uint32_t>(q7.size())), q7.data());
    arm_softmax_q15(q15.data(), u16(static_cast<uint32_t>(q15.size())), q15.data());
    EXPECT_EQ(Values<q15_t>(q7.begin(), q7.end()), c.q7);
    EXPECT_EQ(q15, c.q15);
    // As a function of a convolution, all of the elements are one group.
    Values<q15_t> group = c.in;
    ai_array array = {AI_ARRAY_FORMAT_S16, 99, group.data(), group.data()};
    sm_func_sm_array_fixed(&array, &array, static_cast<ai_size>(group.size()), nullptr);
    EXPECT_EQ(group, c.q15);
  }
  arm_softmax_q7(nullptr, 0, nullptr);
}

// Every number of every format, in and out of place, as near to the real function as the table is.
template <class T>
void check_activation(ai_nl_func kernel, double (*function)(double), int fraction_bits) {
  constexpr int kBits = 8 * sizeof(T);
  const double one = std::ldexp(1.0, kBits - 1);
  Values<T> in(size_t{1} << kBits), out(in.size());
  for (size_t i = 0; i < in.size(); ++i) {
    in[i] = static_cast<T>(i);
  }
  const ai_array_format format = AI_ARRAY_FORMAT_MAKE_Q(kBits, fraction_bits);
  ai_array from = {format, static_cast<ai_size>(in.size()), in.data(), in.data()};
  ai_array to = {format, from.size, out.data(), out.data()};
  kernel(&to, &from, from.size, nullptr);
  for (size_t i = 0; i < in.size(); ++i) {
    const double x = std::ldexp(static_cast<double>(in[i]), -fraction_bits);
    // The Q7 table is read at the next sixteenth below; the Q15 one is flat just below zero.
    const bool flat = sizeof(T) == 1 || (x > -0.0625 && x < 0);
    const double at = sizeof(T) == 1 ? std::floor(16 * x) / 16 : flat ? -0.0625 : x;
    ASSERT_NEAR(out[i] / one, function(at), sizeof(T) == 1 ? 1.01 / one : 6e-4) << x;
  }
  kernel(&from, &from, from.size, nullptr);
  EXPECT_EQ(in, out);
}

TEST(FixedActivation, EveryTypeButZeroIsTanh) {
  for (const uint16_t type : {0, 1, 2, 256, 65535}) {
    q7_t q7[] = {88, -40, 127};
    q15_t q15[] = {11 * 256, -5 * 256, 32767};
    ko_fxp_nn_activations_direct_q7(q7, 2, 0, type);
    ko_fxp_nn_activations_direct_q15(q15, 2, 3, type);
    const q7_t* table_q7 = type == 0 ? sigmoidTable_q7 : tanhTable_q7;
    const q15_t* table_q15 = type == 0 ? sigmoidTable_q15 : tanhTable_q15;
    EXPECT_EQ(Values<q7_t>(q7, q7 + 3), (Values<q7_t>{table_q7[11], table_q7[256 - 5], 127}));
    EXPECT_EQ(Values<q15_t>(q15, q15 + 3),
              (Values<q15_t>{table_q15[11], table_q15[256 - 5], 32767}));
  }
}

TEST(FixedActivation, EveryNumberOfEveryFormat) {
  const auto sigmoid = [](double x) { return 1 / (1 + std::exp(-x)); };
  const auto tanh = [](double x) { return std::tanh(x); };
  for (const int fraction_bits : {-3, 2, 3, 4, 5, 6, 7, 9}) {
    check_activation<q7_t>(nl_func_tanh_array_fixed, tanh, fraction_bits);
    check_activation<q7_t>(nl_func_sigmoid_array_fixed, sigmoid, fraction_bits);
  }
  for (const int fraction_bits : {-1, 9, 11, 12, 13, 15}) {
    check_activation<q15_t>(nl_func_tanh_array_fixed, tanh, fraction_bits);
    check_activation<q15_t>(nl_func_sigmoid_array_fixed, sigmoid, fraction_bits);
  }
}

}  // namespace
