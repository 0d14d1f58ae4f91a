// SPDX-License-Identifier: MIT
// The fixed-point convolution and dense layers: the choice between kernels, layers against the
// naive loop, fused against separate ones, and what they do not support.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <vector>

#include "core/ai_declare.h"
#include "layers_quantized/conv2d_fixed_choice.hpp"
#include "layers_quantized/layers_conv2d_quarn_fixed.h"
#include "layers_quantized/layers_dense_quarn_fixed.h"
#include "layers_quantized/layers_nl_quarn_fixed.h"
#include "layers_quantized/layers_pool_quarn_fixed.h"
#include "layers_quantized/layers_sm_quarn_fixed.h"
#include "test/unit/cpu_limit.hpp"
#include "test/unit/fixed_convolution.hpp"

namespace {

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

}  // namespace
