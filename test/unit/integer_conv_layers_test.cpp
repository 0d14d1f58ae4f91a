// SPDX-License-Identifier: MIT
// The integer convolution layers: which kernel a geometry gets, scratch of exactly the size asked
// for, fused against separate layers, and where integer layers stop.
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <memory>
#include <vector>

#include "core/ai_declare.h"
#include "kernels/ko_convolve_HWC_reference.h"
#include "kernels/ko_requantize.h"
#include "layers_quantized/conv2d_integer_choice.hpp"
#include "layers_quantized/layers_conv2d_quarn_integer.h"
#include "layers_quantized/layers_nl_quarn_fixed.h"
#include "layers_quantized/layers_nl_quarn_integer.h"
#include "layers_quantized/layers_pool_quarn_integer.h"
#include "test/unit/cpu_limit.hpp"
#include "test/unit/integer_data.hpp"

namespace {

// --- choice of kernels ----------------------------------------------------------------------

using nnlib::ConvGeometry;
using nnlib::IntegerConvShape;
using nnlib::IntegerForm;

TEST(IntegerConvChoice, GoesByTheFirstConditionThatHolds) {
  // in W H C, out C, kernel x y, pad x y, stride x y, out W H
  const ConvGeometry rgb = {5, 5, 3, 4, 3, 3, 1, 1, 2, 2, 3, 3};
  const ConvGeometry pointwise = {4, 5, 6, 7, 1, 1, 0, 0, 1, 1, 4, 5};
  const auto with = [](ConvGeometry g, uint32_t ConvGeometry::*field, uint32_t value) {
    g.*field = value;
    return g;
  };
  struct {
    ConvGeometry geometry;
    uint32_t groups;
    IntegerConvShape shape;
  } const rows[] = {
      {rgb, 1, IntegerConvShape::kRgb},
      {rgb, 2, IntegerConvShape::kUnsupported},
      {rgb, 0, IntegerConvShape::kUnsupported},
      {{5, 5, 0, 0, 3, 3, 1, 1, 2, 2, 3, 3}, 0, IntegerConvShape::kUnsupported},
      {rgb, 3, IntegerConvShape::kUnsupported},  // four filters for three channels
      {with(rgb, &ConvGeometry::out_channels, 3), 3, IntegerConvShape::kDepthwise},
      {with(rgb, &ConvGeometry::in_channels, 4), 1, IntegerConvShape::kBasic},
      {with(rgb, &ConvGeometry::in_width, 6), 1, IntegerConvShape::kBasic},
      {with(rgb, &ConvGeometry::out_width, 2), 1, IntegerConvShape::kBasic},
      {with(rgb, &ConvGeometry::kernel_width, 2), 1, IntegerConvShape::kBasic},
      {with(rgb, &ConvGeometry::stride_x, 1), 1, IntegerConvShape::kBasic},
      {with(rgb, &ConvGeometry::pad_x, 0), 1, IntegerConvShape::kBasic},
      {pointwise, 1, IntegerConvShape::kPointwise},
      {with(pointwise, &ConvGeometry::kernel_height, 2), 1, IntegerConvShape::kBasic},
      {with(pointwise, &ConvGeometry::pad_y, 1), 1, IntegerConvShape::kBasic},
      {with(pointwise, &ConvGeometry::stride_y, 2), 1, IntegerConvShape::kBasic},
      {{4, 4, 3, 2, 1, 1, 0, 0, 1, 1, 4, 4}, 1, IntegerConvShape::kRgb},
      {{4, 4, 1, 1, 3, 3, 0, 0, 1, 1, 2, 2}, 1, IntegerConvShape::kBasic},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.shape, choose_integer_conv(row.geometry, row.groups, true)) << &row - rows;
  }
  EXPECT_EQ(IntegerConvShape::kBasic, choose_integer_conv(rgb, 1, false));
}

// Channels with entries of their own, and the shapes of columns, are matters of the arguments.
TEST(IntegerConvChoice, EveryTypesWordHasItsOwnKernels) {
  std::vector<void (*)(const nnlib::IntegerConvolution&)> runs;
  for (uint32_t form : {0, 2, 4}) {
    const auto kernel = [form](IntegerConvShape shape, uint32_t channels = 0) {
      return integer_conv_kernel(static_cast<IntegerForm>(form + channels), shape);
    };
    for (auto shape : {IntegerConvShape::kBasic, IntegerConvShape::kDepthwise}) {
      ASSERT_NE(nullptr, kernel(shape));
      EXPECT_EQ(0, std::count(runs.begin(), runs.end(), kernel(shape)->run));
      EXPECT_EQ(kernel(shape), kernel(shape, 1));
      runs.push_back(kernel(shape)->run);
    }
    for (auto shape :
         {IntegerConvShape::kRgb, IntegerConvShape::kPointwise, static_cast<IntegerConvShape>(4)}) {
      EXPECT_EQ(kernel(IntegerConvShape::kBasic)->run, kernel(shape)->run);
    }
  }
  EXPECT_EQ(nullptr, integer_conv_kernel(IntegerForm::kNone, IntegerConvShape::kBasic));
  EXPECT_EQ(nullptr, integer_conv_kernel(IntegerForm::kUint8, IntegerConvShape::kUnsupported));
}

// --- convolution ----------------------------------------------------------------------------

// A convolution layer of activations T and weights W. Its kernel's scratch is the last one of its
// chain; `extra` is in front of it or, when it is not fused, behind it.
template <class T, class W>
struct ConvLayer {
  ConvLayer(const ConvGeometry& geometry, uint32_t group_count, bool channels, bool is_fused)
      : g(geometry),
        fused(is_fused),
        in_data(random_vector<T>(size_t{g.in_width} * g.in_height * g.in_channels)),
        weight_data(random_vector<W>(size_t{g.column_length()} * g.out_channels)),
        bias_data(random_vector<int32_t>(g.out_channels)),
        weight_scales(channels ? g.out_channels : 1),
        weight_zeropoints(random_vector<W>(weight_scales.size())),
        out_data(size_t{g.pixels()} * g.out_channels),
        in_info{&in_scale, &in_zeropoint},
        weight_info{weight_scales.data(), weight_zeropoints.data()},
        out_info{&out_scale, &out_zeropoint},
        weight_list{static_cast<uint32_t>(weight_scales.size()) << 16, &weight_info},
        in({1, g.in_channels, g.in_width, g.in_height}, in_data.data(), 0, &in_list),
        weights({group_count == 1 ? g.in_channels : g.out_channels, g.kernel_width, g.kernel_height,
                 group_count == 1 ? g.out_channels : 1},
                weight_data.data(), 0, &weight_list),
        bias({1, g.out_channels, 1, 1}, bias_data.data()),
        out({1, g.out_channels, g.out_width, g.out_height}, out_data.data(), 0, &out_list) {
    for (int32_t& value : bias_data) {
      value = value % 20000;
    }
    for (float& scale : weight_scales) {
      scale = 0.001f + static_cast<float>(random_bits() % 100) * 0.0001f;
    }
    if (std::is_signed_v<W>) {
      std::fill(weight_zeropoints.begin(), weight_zeropoints.end(), W{0});
    }
    record.groups = group_count;
    record.filter_stride[0] = g.stride_x | 0x30000;  // the low 16 bits count
    record.filter_stride[1] = g.stride_y | 0x50000;
    record.filter_pad = {AI_DIMS_WORD(AI_SHAPE_TYPE, AI_SHAPE_DIMS), pad};
  }

  // Runs as the base of `layer` with exactly sized scratch.
  template <class Layer, class Size>
  void run(Layer& layer, ai_layer& base, ai_layer_forward forward, Size scratch_size,
           nnlib::dims extra_dims, size_t offset = 0) {
    const Rubbish map(extra_dims.elements());
    nnlib::tensor extra({extra_dims}, reinterpret_cast<T*>(map.data), 0, &out_list);
    nnlib::tensor unsized({1, 1, 1, 1}, map.data);
    const auto chain_with = [&](nnlib::tensor& kernel) {
      return std::make_unique<nnlib::layer_chain<1, 1, 3, 2>>(
          nnlib::list(in), nnlib::list(out), nnlib::list(weights, biases, params),
          nnlib::list(fused ? extra : kernel, fused ? kernel : extra));
    };
    auto chain = chain_with(unsized);
    base.tensor_chain = chain.get();
    const Rubbish kernel(scratch_size(&layer), offset);
    nnlib::tensor sized({1, static_cast<uint32_t>(kernel.size), 1, 1}, kernel.data);
    chain = chain_with(sized);
    base.tensor_chain = chain.get();
    forward(&base);
  }
  void run(ai_layer_forward forward = forward_conv2d_integer, size_t offset = 0) {
    run(record, record.base, forward, ai_conv2d_integer_scratch_size,
        {1, g.out_channels, g.out_width, g.out_height}, offset);
  }

  ConvGeometry g;
  bool fused;
  std::vector<T> in_data;
  std::vector<W> weight_data;
  std::vector<int32_t> bias_data;
  std::vector<float> weight_scales;
  std::vector<W> weight_zeropoints;
  std::vector<T> out_data;
  float in_scale = 0.031f, out_scale = 0.23f;
  T in_zeropoint = static_cast<T>(-77), out_zeropoint = 13;
  ai_intq_info in_info, weight_info, out_info;
  ai_intq_info_list in_list{1u << 16, &in_info}, weight_list, out_list{1u << 16, &out_info};
  nnlib::tensor in, weights, bias, out;
  ai_tensor* biases = &bias;
  ai_tensor* params = nnlib::absent;
  uint32_t pad[AI_SHAPE_DIMS] = {g.pad_y, g.pad_x, 0, 0};
  ai_layer_conv2d record = {};
};

template <class T, class W>
void check_scratch_sizes() {
  const ConvGeometry shapes[] = {{5, 5, 3, 4, 3, 3, 1, 1, 2, 2, 3, 3},
                                 {4, 3, 5, 7, 1, 1, 0, 0, 1, 1, 4, 3},
                                 {6, 4, 9, 9, 3, 3, 1, 1, 1, 1, 6, 4},
                                 {4, 3, 5, 3, 2, 3, 1, 0, 1, 1, 5, 1}};
  for (const ConvGeometry& g : shapes) {
    for (bool channels : {false, true}) {
      ConvLayer<T, W> layer(g, g.in_channels == 9 ? 9 : 1, channels, false);
      layer.run();
      const std::vector<T> first = layer.out_data;
      layer.run();  // other rubbish
      EXPECT_EQ(first, layer.out_data);
      EXPECT_NE(std::vector<T>(first.size(), first[0]), first);
    }
  }
}

TEST(IntegerConvLayer, NeedsTheScratchItAsksForAndNothingInIt) {
  check_scratch_sizes<uint8_t, uint8_t>();
  check_scratch_sizes<uint8_t, int8_t>();
  check_scratch_sizes<int8_t, int8_t>();
}

// The scales in the order that the rounding of their product depends on.
TEST(IntegerConvLayer, PairsOfChannelsAndOfTheLayer) {
  const ConvGeometry g = {4, 3, 5, 6, 2, 2, 1, 0, 1, 2, 4, 2};
  for (const auto& [channels, biased] : {std::pair{false, true}, {true, true}, {true, false}}) {
    ConvLayer<int8_t, int8_t> layer(g, 1, channels, false);
    layer.biases = biased ? &layer.bias : nnlib::absent;
    layer.run();
    std::vector<int32_t> multipliers(6);
    std::vector<int16_t> shifts(6);
    for (size_t i = 0; i < 6; ++i) {
      const float scale = layer.weight_scales[channels ? i : 0];
      uint16_t shift = 0;
      multipliers[i] = align_factor(scale * layer.in_scale / layer.out_scale, &shift);
      shifts[i] = static_cast<int16_t>(shift);
    }
    std::vector<int8_t> want(layer.out_data.size());
    ko_int8_int8symwt_convolve_HWC_reference_CH(
        layer.in_data.data(), 4, 3, 5, layer.weight_data.data(), 6, 2, 2, 1, 0, 1, 2,
        biased ? layer.bias_data.data() : nullptr, multipliers.data(), shifts.data(),
        layer.in_zeropoint, layer.out_zeropoint, want.data(), 4, 2);
    EXPECT_EQ(want, layer.out_data);
  }
}

// --- fused with a function and pooling --------------------------------------------------------

struct Pooling {
  uint32_t width, height, pad_x, pad_y, stride_x, stride_y, out_width, out_height;
};

// The convolution g, relu and pooling, once as one layer and once one after the other. The limit of
// the relu is in the record or, before that, in the third tensor of the weights.
template <class T, class W>
void check_fused(const ConvGeometry& g, uint32_t groups, const Pooling& p, ai_pool_func pool_func,
                 uint32_t rows) {
  ConvLayer<T, W> layer(g, groups, true, true);
  const T least = layer.out_zeropoint, greatest = std::numeric_limits<T>::max();
  nnlib::tensor params({1, 1, 1, 1}, &least), other({1, 1, 1, 1}, &greatest);
  // Padding below such that the convolved map has the height of g.
  const uint32_t covered = (g.out_height - 1) * g.stride_y + g.kernel_height;
  const bool hangs_over = g.out_height != 0 && covered > g.in_height + g.pad_y;
  layer.pad[2] = hangs_over ? covered - g.in_height - g.pad_y : 0;
  layer.fused = false;
  layer.run();
  std::vector<T> rectified = layer.out_data;
  for (T& value : rectified) {
    value = std::max(value, least);
  }
  layer.record.nl_func = nl_func_relu_array_integer;
  for (const bool from_weights : {groups != 1, groups == 1}) {
    layer.params = from_weights ? &params : nnlib::absent;
    layer.record.nl_params = from_weights ? &other.array : &params.array;
    layer.run();
    EXPECT_EQ(rectified, layer.out_data);
  }
  const auto u16 = [](uint32_t value) { return static_cast<uint16_t>(value); };
  std::vector<T> want(size_t{p.out_width} * p.out_height * g.out_channels);
  ai_array map = layer.out.array;
  ai_array pooled = {map.format, 0, want.data(), want.data()};
  pool_func(&map, u16(g.out_width), u16(g.out_height), u16(g.out_channels), u16(p.width),
            u16(p.height), u16(p.pad_x), u16(p.pad_y), u16(p.stride_x), u16(p.stride_y),
            u16(p.out_width), u16(p.out_height), &pooled);

  layer.fused = true;
  std::vector<T> got(want.size());
  nnlib::tensor out({1, g.out_channels, p.out_width, p.out_height}, got.data(), 0, &layer.out_list);
  layer.out.shape = out.shape;
  layer.out.data = &out.array;
  uint32_t pool_pad[AI_SHAPE_DIMS] = {p.pad_y, p.pad_x, 0, 0};
  ai_layer_conv2d_nl_pool fused = {layer.record,
                                   {p.width, p.height},
                                   {p.stride_x, p.stride_y},
                                   {AI_DIMS_WORD(AI_SHAPE_TYPE, AI_SHAPE_DIMS), pool_pad},
                                   pool_func};
  layer.run(fused, fused.base.base, forward_conv2d_nl_pool_integer,
            ai_conv2d_nl_pool_integer_scratch_size, {1, g.out_channels, g.out_width, rows});
  EXPECT_EQ(want, got) << g.out_height << " rows pooled " << p.height << "/" << p.stride_y;
}

TEST(IntegerFusedLayer, EqualsItsPartsInSequence) {
  const ConvGeometry basic = {6, 9, 2, 3, 3, 2, 1, 1, 1, 1, 6, 9};
  const ConvGeometry strided = {5, 9, 3, 5, 3, 3, 1, 2, 2, 2, 3, 6};
  const ConvGeometry pointwise = {5, 7, 4, 3, 1, 1, 0, 0, 1, 1, 5, 7};
  const ConvGeometry depthwise = {6, 8, 9, 9, 3, 3, 1, 1, 1, 1, 6, 8};
  const ConvGeometry one_row = {6, 2, 2, 3, 3, 2, 1, 0, 1, 0, 6, 1};  // which needs no stride
  const ConvGeometry square_rgb = {6, 6, 3, 4, 3, 3, 1, 1, 1, 1, 6, 6};
  const ConvGeometry too_tall = {6, 3, 2, 3, 3, 7, 1, 1, 1, 1, 6, 0};  // no row of it fits
  for (ai_pool_func pool : {pool_func_mp_array_integer, pool_func_ap_array_integer}) {
    check_fused<uint8_t, uint8_t>(basic, 1, {2, 2, 0, 0, 2, 2, 3, 4}, pool, 2);
    check_fused<int8_t, int8_t>(basic, 1, {3, 3, 1, 1, 2, 2, 3, 5}, pool, 3);
    check_fused<uint8_t, int8_t>(strided, 1, {2, 3, 1, 2, 1, 1, 4, 8}, pool, 4);
    check_fused<int8_t, int8_t>(pointwise, 1, {1, 2, 0, 0, 2, 3, 3, 2}, pool, 2);  // gaps
    check_fused<uint8_t, uint8_t>(depthwise, 9, {2, 4, 0, 1, 2, 3, 3, 3}, pool, 5);
    check_fused<uint8_t, int8_t>(one_row, 1, {2, 1, 0, 0, 1, 1, 5, 1}, pool, 1);
    check_fused<int8_t, int8_t>(square_rgb, 1, {6, 6, 0, 0, 1, 1, 1, 1}, pool, 6);
    check_fused<uint8_t, int8_t>(too_tall, 1, {2, 2, 0, 0, 2, 2, 3, 2}, pool, 2);
  }
}

// --- where layers stop ------------------------------------------------------------------------

template <class T, class W>
void run_soon_killed(uint32_t groups, size_t offset) {
  ConvLayer<T, W> layer({3, 3, 4, 4, 1, 1, 0, 0, 1, 1, 3, 3}, groups, false, false);
  limit_cpu_time();
  layer.run(forward_conv2d_integer, offset);
  _exit(0);
}

TEST(IntegerLayersDeathTest, HangOnWhatTheyDoNotKnowAndFaultOnBadScratch) {
  EXPECT_EXIT((run_soon_killed<int8_t, int8_t>(4, 0)), testing::ExitedWithCode(0), "");
  EXPECT_EXIT((run_soon_killed<int8_t, int8_t>(2, 0)), testing::KilledBySignal(SIGVTALRM), "");
  EXPECT_EXIT((run_soon_killed<int8_t, uint8_t>(1, 0)), testing::KilledBySignal(SIGVTALRM), "");
  EXPECT_DEATH((run_soon_killed<int8_t, int8_t>(1, 2)), "");  // not aligned
  ConvLayer<int8_t, int8_t> unknown({3, 3, 4, 4, 1, 1, 0, 0, 1, 1, 3, 3}, 2, false, false);
  unknown.run([](ai_layer* layer) {
    EXPECT_EQ(ai_conv2d_integer_scratch_size(reinterpret_cast<ai_layer_conv2d*>(layer)), 0u);
  });
}

// The signal of a fault, which a wild read does not give.
TEST(IntegerLayersDeathTest, FaultWithoutParameters) {
  const auto faults = [](int status) {
    return WIFSIGNALED(status) && (WTERMSIG(status) == SIGILL || WTERMSIG(status) == SIGTRAP);
  };
  const auto run_without_zeropoints = [] {
    ConvLayer<uint8_t, uint8_t> layer({3, 3, 4, 4, 1, 1, 0, 0, 1, 1, 3, 3}, 1, true, false);
    layer.weight_info.zeropoint = nullptr;
    layer.run();
  };
  EXPECT_EXIT(run_without_zeropoints(), faults, "");
  int8_t data[4] = {};
  nnlib::tensor map({1, 4, 1, 1}, data);
  nnlib::layer_chain chain(nnlib::list(map), nnlib::list(map));
  ai_layer_nl relu = {nnlib::layer(AI_LAYER_TYPE_NL, forward_relu_integer, chain), nullptr};
  EXPECT_EXIT(forward_relu_integer(&relu.base), faults, "");
  EXPECT_EXIT(forward_relu_max_fixed(&relu.base), faults, "");
}

}  // namespace
