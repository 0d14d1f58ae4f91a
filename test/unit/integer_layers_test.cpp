// SPDX-License-Identifier: MIT
// The integer layers: which kernel a geometry gets, scratch of exactly the size asked for, fused
// against separate layers, addition and pooling against their formulas, and where layers stop.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <csignal>
#include <memory>
#include <random>
#include <vector>

#include "core/ai_declare.h"
#include "kernels/ko_add.h"
#include "kernels/ko_convolve_HWC_reference.h"
#include "kernels/ko_pool.h"
#include "layers_quantized/conv2d_integer_choice.hpp"
#include "layers_quantized/layers_conv2d_quarn_integer.h"
#include "layers_quantized/layers_nl_quarn_fixed.h"
#include "layers_quantized/layers_nl_quarn_integer.h"
#include "layers_quantized/layers_pool_quarn_integer.h"
#include "layers_quantized/layers_quarn_integer.h"
#include "test/unit/cpu_limit.hpp"

namespace {

std::mt19937 random_bits(20240301);

template <class T>
std::vector<T> random_vector(size_t count) {
  std::vector<T> values(count);
  for (T& value : values) {
    value = static_cast<T>(random_bits());
  }
  return values;
}

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

struct Rubbish {
  explicit Rubbish(size_t bytes, size_t offset = 0)
      : size(bytes), storage(new uint8_t[bytes + offset]), data(storage.get() + offset) {
    for (size_t i = 0; i < bytes; ++i) {
      data[i] = static_cast<uint8_t>(random_bits());
    }
  }
  size_t size;
  std::unique_ptr<uint8_t[]> storage;
  uint8_t* data;
};

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

// --- dense ----------------------------------------------------------------------------------

// Two positions, of which each is what a layer of one position makes of it, and what the reference
// convolution makes of both.
TEST(IntegerDenseLayer, ComputesEveryPosition) {
  const auto in_data = random_vector<uint8_t>(14);
  const auto weight_data = random_vector<int8_t>(21);
  const int32_t bias_data[] = {100, -900, 4000};
  const float scales[] = {0.01f, 0.03f, 0.02f}, in_scale[] = {0.05f}, out_scale[] = {0.9f};
  const int8_t zeros[] = {0, 0, 0};
  const uint8_t in_zeropoint[] = {130}, out_zeropoint[] = {99};
  nnlib::intq in_q(in_scale, in_zeropoint), out_q(out_scale, out_zeropoint);
  nnlib::intq weights_q(scales, zeros);
  std::vector<uint8_t> out_data(6), want(6);
  nnlib::tensor in({1, 7, 2, 1}, in_data.data(), 0, &in_q),
      out({1, 3, 2, 1}, out_data.data(), 0, &out_q);
  nnlib::tensor weights({7, 3, 1, 1}, weight_data.data(), 0, &weights_q);
  nnlib::tensor bias({1, 3, 1, 1}, bias_data);
  const Rubbish scratch(16 + 18);
  nnlib::tensor scratch_tensor({1, 34, 1, 1}, scratch.data);
  for (const bool biased : {true, false}) {
    nnlib::layer_chain chain(nnlib::list(in), nnlib::list(out),
                             nnlib::list(weights, biased ? &bias : nnlib::absent),
                             nnlib::list(scratch_tensor));
    ai_layer layer = nnlib::layer(AI_LAYER_TYPE_DENSE, forward_dense_integer, chain);
    EXPECT_EQ(34u, ai_dense_integer_scratch_size(&layer));
    layer.forward(&layer);
    int32_t multipliers[3];
    int16_t shifts[3];
    align_factor_ch(0.05f, 0.9f, scales, 3, multipliers, shifts);
    ko_int8symwt_convolve_HWC_reference_CH(in_data.data(), 2, 1, 7, weight_data.data(), 3, 1, 1, 0,
                                           0, 1, 1, biased ? bias_data : nullptr, multipliers,
                                           shifts, 130, 99, want.data(), 2, 1);
    EXPECT_EQ(want, out_data);
  }
}

// --- addition -------------------------------------------------------------------------------

// What quantizations have in common.
struct Same {
  bool scales, zeros;
  constexpr bool all() const { return scales && zeros; }
};
constexpr Same kSame[] = {{false, false}, {true, false}, {false, true}, {true, true}};

template <class T>
void check_sum(const nnlib::dims& a_dims, const nnlib::dims& b_dims, Same same) {
  const nnlib::dims loops = {std::max(a_dims.n, b_dims.n), std::max(a_dims.c, b_dims.c),
                             std::max(a_dims.w, b_dims.w), std::max(a_dims.h, b_dims.h)};
  const auto a_data = random_vector<T>(a_dims.elements());
  const auto b_data = random_vector<T>(b_dims.elements());
  std::vector<T> out_data(loops.elements());
  const float scales[3] = {0.05f, same.scales ? 0.05f : 0.031f, same.scales ? 0.05f : 0.077f};
  const T zeros[3] = {10, static_cast<T>(same.zeros ? 10 : 90),
                      static_cast<T>(same.zeros ? 10 : 33)};
  const ai_intq_info infos[3] = {
      {&scales[0], &zeros[0]}, {&scales[1], &zeros[1]}, {&scales[2], &zeros[2]}};
  const ai_intq_info_list q[3] = {
      {1u << 16, &infos[0]}, {1u << 16, &infos[1]}, {1u << 16, &infos[2]}};
  nnlib::tensor a(a_dims, a_data.data(), 0, &q[0]), b(b_dims, b_data.data(), 0, &q[1]);
  nnlib::tensor out(loops, out_data.data(), 0, &q[2]);
  nnlib::layer_chain chain(nnlib::list(a, b), nnlib::list(out));
  ai_layer layer = nnlib::layer(AI_LAYER_TYPE_ELTWISE, forward_add_integer, chain);
  layer.forward(&layer);
  const auto at = [](const nnlib::dims& d, uint32_t n, uint32_t c, uint32_t w, uint32_t h) {
    return (((d.h > 1 ? h : 0) * d.w + (d.w > 1 ? w : 0)) * d.c + (d.c > 1 ? c : 0)) * d.n +
           (d.n > 1 ? n : 0);
  };
  for (uint32_t i = 0; i < loops.elements(); ++i) {
    const uint32_t n = i % loops.n, c = i / loops.n % loops.c, w = i / loops.n / loops.c % loops.w;
    const uint32_t h = i / loops.n / loops.c / loops.w;
    const int x = a_data[at(a_dims, n, c, w, h)] - zeros[0];
    const int y = b_data[at(b_dims, n, c, w, h)] - zeros[1];
    float sum = static_cast<float>(y) * (scales[1] / scales[2]) +
                static_cast<float>(x) * (scales[0] / scales[2]);
    sum += std::is_signed_v<T> ? static_cast<float>(zeros[2]) : static_cast<float>(zeros[2]) + 0.5f;
    if (std::is_signed_v<T>) {
      sum += sum > 0 ? 0.5f : -0.5f;
    }
    const long exact = same.all() ? x + y + zeros[2] : static_cast<long>(sum);
    using Limits = std::numeric_limits<T>;
    ASSERT_EQ(std::clamp<long>(exact, Limits::min(), Limits::max()), out_data[i]) << i;
  }
}

TEST(IntegerAddLayer, BroadcastsEitherInput) {
  const nnlib::dims full = {1, 70, 3, 4};
  const nnlib::dims others[] = {full,         {1, 1, 1, 1},  {1, 70, 1, 1}, {1, 1, 3, 1},
                                {1, 1, 1, 4}, {1, 70, 3, 1}, {1, 70, 1, 4}, {1, 1, 3, 4}};
  for (const nnlib::dims& other : others) {
    for (Same same : kSame) {
      check_sum<uint8_t>(full, other, same);
      check_sum<int8_t>(other, full, same);
    }
  }
  check_sum<int8_t>({1, 5, 1, 2}, {1, 1, 3, 2}, {});  // each stretches the other
  check_sum<uint8_t>({2, 3, 4, 2}, {2, 3, 1, 2}, {});
}

// Any one of the six numbers that differs takes the sum out of the integers.
TEST(IntegerAddLayer, SumsIntegersOnlyOfOneQuantization) {
  const int8_t one = 101, two = 40;
  for (int odd = 0; odd <= 6; ++odd) {
    float scales[] = {0.5f, 0.5f, 0.5f, 0.5f};
    int8_t zeros[] = {20, 20, 20, 20}, sum = 0;
    if (odd < 6) {
      scales[odd < 3 ? odd : 3] = 0.25f;
      zeros[odd < 3 ? 3 : odd % 3] = 30;
    }
    EXPECT_EQ(0, ko_int8_add(&one, &two, &sum, 1, scales[0], zeros[0], scales[1], zeros[1],
                             scales[2], zeros[2]));
    const int wanted[] = {81, 111, 127, 111, 111, 127, 121};
    EXPECT_EQ(wanted[odd], sum) << odd;
  }
}

// Numbers that another order of the operations rounds to another whole number.
TEST(IntegerRounding, KeepsTheOrderOfItsFloats) {
  const uint8_t one = 125, two = 58, cell = 182;
  uint8_t sum = 0, pooled = 0;
  EXPECT_EQ(0, ko_uint8_add(&one, &two, &sum, 1, 0.007f, 100, 0.154f, 100, 0.058f, 207));
  EXPECT_EQ(98, sum);
  ko_uint8_maxpool(&cell, &pooled, 1, 1, 1, 1, 1, 0, 0, 1, 1, 1, 1, 0.03f, 0, 0.04f, 118);
  EXPECT_EQ(255, pooled);
}

// --- pooling --------------------------------------------------------------------------------

// One output from its cells.
template <class T>
T pooled(const std::vector<int>& cells, bool average, float in_scale, T in_zeropoint,
         float out_scale, T out_zeropoint) {
  if (cells.empty()) {
    return out_zeropoint;
  }
  int sum = 0;
  for (int cell : cells) {
    sum += cell;
  }
  const int count = static_cast<int>(cells.size());
  const int maximum = *std::max_element(cells.begin(), cells.end());
  if (in_scale == out_scale && in_zeropoint == out_zeropoint) {
    return static_cast<T>(average ? (sum + count / 2) / count : maximum);
  }
  const float m =
      average ? static_cast<float>(sum) / static_cast<float>(count) : static_cast<float>(maximum);
  const float value = (m - static_cast<float>(in_zeropoint)) * (in_scale / out_scale) +
                      static_cast<float>(out_zeropoint);
  const float rounded = value + (std::is_signed_v<T> && value < 0 ? -0.5f : 0.5f);
  using Limits = std::numeric_limits<T>;
  return static_cast<T>(std::clamp<long>(static_cast<long>(rounded), Limits::min(), Limits::max()));
}

template <class T, class Kernel>
void check_pool(Kernel kernel, bool average, Same same) {
  const uint16_t w = 5, h = 4, channels = 35, pool_w = 3, pool_h = 2, pad_x = 4, pad_y = 1;
  const uint16_t out_w = 5, out_h = 4;
  const auto in = random_vector<T>(size_t{w} * h * channels);
  std::vector<T> out(size_t{out_w} * out_h * channels);
  const float out_scale = same.scales ? 0.05f : 0.037f;
  const T in_zero = static_cast<T>(-60), out_zero = same.zeros ? in_zero : T{21};
  kernel(in.data(), out.data(), w, h, channels, pool_w, pool_h, pad_x, pad_y, uint16_t{2},
         uint16_t{1}, out_w, out_h, 0.05f, in_zero, out_scale, out_zero);
  for (size_t i = 0; i < out.size(); ++i) {
    const int x = static_cast<int>(i / channels % out_w) * 2 - pad_x;
    const int y = static_cast<int>(i / channels / out_w) - pad_y;
    std::vector<int> cells;
    for (int row = std::max(y, 0); row < std::min(y + pool_h, int{h}); ++row) {
      for (int column = std::max(x, 0); column < std::min(x + pool_w, int{w}); ++column) {
        cells.push_back(in[static_cast<size_t>(row * w + column) * channels + i % channels]);
      }
    }
    ASSERT_EQ(pooled(cells, average, 0.05f, in_zero, out_scale, out_zero), out[i]) << i;
  }
}

TEST(IntegerPool, EqualsTheFormula) {
  for (Same same : kSame) {
    check_pool<uint8_t>(ko_uint8_maxpool, false, same);
    check_pool<uint8_t>(ko_uint8_avepool, true, same);
    check_pool<int8_t>(ko_int8_maxpool, false, same);
    check_pool<int8_t>(ko_int8_avepool, true, same);
  }
}

TEST(IntegerPool, OfTheWholeMap) {
  const int8_t in[] = {-3, 100, -4, 50, -4, -20};  // two channels
  int8_t out[2];
  ko_int8_glomaxpool(in, out, 3, 1, 2, 1.0f, 0, 1.0f, 0);
  EXPECT_EQ((std::vector<int>{-3, 100}), std::vector<int>(out, out + 2));
  ko_int8_gloavepool(in, out, 1, 3, 2, 1.0f, 0, 1.0f, 0);
  EXPECT_EQ((std::vector<int>{-3, 43}), std::vector<int>(out, out + 2));  // toward zero
  const uint8_t bytes[] = {10, 200, 11, 100};
  uint8_t average[2];
  ko_uint8_gloavepool(bytes, average, 2, 1, 2, 0.5f, 10, 1.0f, 7);
  EXPECT_EQ((std::vector<int>{7, 77}), std::vector<int>(average, average + 2));
  uint8_t maximum[2];
  ko_uint8_glomaxpool(bytes, maximum, 2, 1, 2, 1.0f, 0, 0.5f, 0);
  EXPECT_EQ((std::vector<int>{22, 255}), std::vector<int>(maximum, maximum + 2));
}

// Sums that, rounded, are a whole multiple of the count, and those one less.
TEST(IntegerPool, AveragesExactly) {
  constexpr uint16_t kChannels = 255;
  const uint16_t sides[][2] = {{7, 1}, {41, 1}, {7, 7}, {301, 99}, {65535, 1}, {256, 256}};
  for (const auto& [width, height] : sides) {
    const size_t count = size_t{width} * height;
    for (const size_t missing : {0, 1}) {
      std::vector<uint8_t> in, out(kChannels), want;
      for (size_t cell = 0; cell < count; ++cell) {
        for (uint32_t c = 0; c < kChannels; ++c) {
          in.push_back(static_cast<uint8_t>(cell < count - count / 2 - missing ? c + 1 : c));
        }
      }
      for (uint32_t c = 0; c < kChannels; ++c) {
        want.push_back(static_cast<uint8_t>(missing == 0 ? c + 1 : c));
      }
      ko_uint8_gloavepool(in.data(), out.data(), width, height, kChannels, 1.0f, 0, 1.0f, 0);
      ASSERT_EQ(want, out) << count;
    }
  }
}

// Means a few float steps from the zero point, stretched to whole numbers; the sums need more than
// 32 bits, and fall on halves between floats or beside them.
template <class T, class Kernel>
void check_large_sums(Kernel kernel, T cell, int32_t step, float stretch) {
  constexpr uint16_t kSide = 4200;
  constexpr size_t kCount = size_t{kSide} * kSide;
  std::vector<T> in(kCount, cell);
  for (size_t other : {0, 128, 129, 256, 257, 384, 385, 768, 769, 1280}) {
    std::fill_n(in.begin(), other, static_cast<T>(cell + step));
    const int64_t sum = static_cast<int64_t>(kCount) * cell + static_cast<int64_t>(other) * step;
    const float mean = static_cast<float>(sum) / static_cast<float>(kCount);
    T out = 0;
    kernel(in.data(), &out, kSide, kSide, 1, stretch, cell, 1.0f, T{100});
    ASSERT_EQ((mean - static_cast<float>(cell)) * stretch + 100.0f, static_cast<float>(out))
        << other;
    kernel(in.data(), &out, kSide, kSide, 1, 1.0f, cell, 1.0f, cell);
    ASSERT_EQ((sum + static_cast<int64_t>(kCount / 2)) / static_cast<int64_t>(kCount), out);
  }
}

TEST(IntegerPool, RoundsLargeSumsOnce) {
  check_large_sums<uint8_t>(ko_uint8_gloavepool, 255, -1, 65536.0f);
  check_large_sums<int8_t>(ko_int8_gloavepool, -128, 1, 131072.0f);
}

// --- functions ------------------------------------------------------------------------------

TEST(IntegerFunctions, CompareByTheFormatsSign) {
  uint8_t every[256], got[256], table[256];
  for (int i = 0; i < 256; ++i) {
    every[i] = static_cast<uint8_t>(i);
    table[i] = static_cast<uint8_t>(i * 7 + 3);
  }
  for (bool is_signed : {false, true}) {
    const ai_array_format format = is_signed ? AI_ARRAY_FORMAT_S8 : AI_ARRAY_FORMAT_U8;
    const ai_array in = {format, 256, every, every};
    ai_array out = {format, 256, got, got};
    const auto value = [is_signed](int byte) {
      return is_signed ? static_cast<int8_t>(byte) : byte;
    };
    const uint8_t limits[] = {0xF0, 0x7A};  // -16 and 122, or 240 and 122
    nl_func_relu_array_integer(&out, &in, 256, limits);
    for (int i = 0; i < 256; ++i) {
      ASSERT_EQ(std::max<int>(value(i), value(0xF0)), value(got[i]));
    }
    nl_func_clip_array_integer(&out, &in, 256, limits);
    for (int i = 0; i < 256; ++i) {
      ASSERT_EQ(std::min<int>(std::max<int>(value(i), value(0xF0)), value(0x7A)), value(got[i]));
    }
    nl_func_array_integer(&out, &in, 255, table);
    for (int i = 0; i < 255; ++i) {
      ASSERT_EQ(table[is_signed ? (i + 128) % 256 : i], got[i]);
    }
  }
}

}  // namespace
