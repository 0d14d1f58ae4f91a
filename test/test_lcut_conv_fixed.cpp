// SPDX-License-Identifier: MIT
// Fixed-point convolution layers, alone and with pooling.
#include "layers_quantized/layers_conv2d_quarn_fixed.h"
#include "layers_quantized/layers_nl_quarn_fixed.h"
#include "layers_quantized/layers_pool_quarn_fixed.h"
#include "test/fixed_fixture.hpp"
#include "test/reference/conv_fixed.h"

namespace {

struct Size {
  uint32_t w, h;
};

// What a case is made of besides its data. Depthwise when groups is not 1.
struct Shape {
  Size in;
  uint32_t in_channels;
  Size kernel;
  uint32_t out_channels;
  Size out;  // of the convolution
  Size stride = {1, 1};
  uint32_t pad[4] = {};  // top, left, bottom, right
  uint32_t groups = 1;
};

struct FractionBits {
  int in, weights, bias, out;
};

constexpr nnlib::dims weight_dims(const Shape& s) {
  return s.groups == 1 ? nnlib::dims{s.in_channels, s.kernel.w, s.kernel.h, s.out_channels}
                       : nnlib::dims{s.out_channels, s.kernel.w, s.kernel.h, 1};
}

// A convolution layer with its tensors, or the first stage of a fused one; scratch is filled with
// rubbish.
template <class T, size_t Elements>
struct Convolution {
  constexpr Convolution(const Shape& s, const FractionBits& f, const T* in_data,
                        const T* weight_data, const T* bias_data, nnlib::dims out_dims)
      : in(fixed_format<T>(f.in), {1, s.in_channels, s.in.w, s.in.h}, in_data),
        weights(fixed_format<T>(f.weights), weight_dims(s), weight_data),
        bias(fixed_format<T>(f.bias), {1, s.out_channels, 1, 1}, bias_data),
        out(fixed_format<T>(f.out), out_dims, out_data),
        scratch({1, 256, 1, 1}, scratch_data),
        pad{s.pad[0], s.pad[1], s.pad[2], s.pad[3]} {
    for (T& element : out_data) {
      element = static_cast<T>(0xA5A5);
    }
    for (int16_t& element : scratch_data) {
      element = 0x5A5A;
    }
  }
  constexpr ai_layer_conv2d record(const Shape& s, ai_layer_forward forward,
                                   const ai_tensor_chain& chain, ai_nl_func nl_func) {
    return {nnlib::layer(AI_LAYER_TYPE_CONV2D, forward, chain),
            s.groups,
            nullptr,
            nl_func,
            {s.stride.w, s.stride.h},
            {1, 1},
            {AI_DIMS_WORD(AI_SHAPE_TYPE, 4), pad}};
  }

  T out_data[Elements];
  int16_t scratch_data[256];
  nnlib::tensor in, weights, bias, out, scratch;
  uint32_t pad[4];
};

template <class T, size_t Elements>
struct PlainConvolution : Convolution<T, Elements> {
  constexpr PlainConvolution(const Shape& s, const FractionBits& f, const T* in_data,
                             const T* weight_data, const T* bias_data)
      : Convolution<T, Elements>(s, f, in_data, weight_data, bias_data,
                                 {1, s.out_channels, s.out.w, s.out.h}),
        layer_chain(nnlib::list(this->in), nnlib::list(this->out),
                    nnlib::list(this->weights, this->bias), nnlib::list(this->scratch)),
        layer(this->record(s, forward_conv2d_fixed, layer_chain, nullptr)) {}

  nnlib::layer_chain<1, 1, 2, 1> layer_chain;
  ai_layer_conv2d layer;
};

struct Pooling {
  Size size, stride, out;
  uint32_t pad[4] = {};
};

// The window has exactly the rows that the pooling needs.
template <class T, size_t Elements, size_t WindowElements>
struct PooledConvolution : Convolution<T, Elements> {
  constexpr PooledConvolution(const Shape& s, const FractionBits& f, const Pooling& p,
                              ai_nl_func nl_func, ai_pool_func pool_func, const T* in_data,
                              const T* weight_data, const T* bias_data)
      : Convolution<T, Elements>(s, f, in_data, weight_data, bias_data,
                                 {1, s.out_channels, p.out.w, p.out.h}),
        window(fixed_format<T>(f.out), {1, s.out_channels, s.out.w, p.size.h}, window_data),
        layer_chain(nnlib::list(this->in), nnlib::list(this->out),
                    nnlib::list(this->weights, this->bias), nnlib::list(window, this->scratch)),
        pool_pad{p.pad[0], p.pad[1], p.pad[2], p.pad[3]},
        layer{this->record(s, forward_conv2d_nl_pool_fixed, layer_chain, nl_func),
              {p.size.w, p.size.h},
              {p.stride.w, p.stride.h},
              {AI_DIMS_WORD(AI_SHAPE_TYPE, 4), pool_pad},
              pool_func} {}

  T window_data[WindowElements] = {};
  nnlib::tensor window;
  nnlib::layer_chain<1, 1, 2, 2> layer_chain;
  uint32_t pool_pad[4];
  ai_layer_conv2d_nl_pool layer;
};

}  // namespace

CASE(tc_conv2D_1x1_conformance_q7) {
  constexpr Shape shape = {
      .in = {2, 3}, .in_channels = 4, .kernel = {1, 1}, .out_channels = 6, .out = {2, 3}};
  static constinit PlainConvolution<int8_t, 36> conv1x1(
      shape, {4, 5, 3, 0}, conv1x1_q7_in_data, conv1x1_q7_weight_data, conv1x1_q7_bias_data);
  check_fixed_layer<int8_t>(tc, conv1x1.layer.base, conv1x1_q7_out_reference, kQ7ConvTolerance);
}

CASE(tc_conv2D_1x1_neg_conformance) {
  constexpr Shape shape = {
      .in = {1, 1}, .in_channels = 4, .kernel = {1, 1}, .out_channels = 2, .out = {1, 1}};
  static constinit PlainConvolution<int8_t, 2> conv1x1_neg(
      shape, {1, 1, 1, 3}, conv1x1_neg_in_data, conv1x1_neg_weight_data, conv1x1_neg_bias_data);
  forward_conv2d_fixed(&conv1x1_neg.layer.base);
  check_near_int(tc, conv1x1_neg.out_data, conv1x1_neg_out_reference, 0);
}

CASE(tc_conv2D_2x2_conformance_q7) {
  constexpr Shape shape = {.in = {5, 5},
                           .in_channels = 3,
                           .kernel = {2, 2},
                           .out_channels = 4,
                           .out = {3, 3},
                           .stride = {2, 2},
                           .pad = {1, 1, 1, 1}};
  static constinit PlainConvolution<int8_t, 36> conv2x2(
      shape, {4, 5, 2, 1}, conv2x2_q7_in_data, conv2x2_q7_weight_data, conv2x2_q7_bias_data);
  check_fixed_layer<int8_t>(tc, conv2x2.layer.base, conv2x2_q7_out_reference, kQ7ConvTolerance);
}

CASE(tc_conv2D_flat_conformance_q7) {
  constexpr Shape shape = {.in = {7, 1},
                           .in_channels = 2,
                           .kernel = {3, 1},
                           .out_channels = 3,
                           .out = {4, 1},
                           .stride = {2, 1},
                           .pad = {0, 1, 0, 1}};
  static constinit PlainConvolution<int8_t, 12> conv_flat(
      shape, {4, 5, 3, 1}, conv_flat_q7_in_data, conv_flat_q7_weight_data, conv_flat_q7_bias_data);
  check_fixed_layer<int8_t>(tc, conv_flat.layer.base, conv_flat_q7_out_reference, kQ7ConvTolerance);
}

CASE(tc_conv2D_2x2_conformance_q15) {
  constexpr Shape shape = {
      .in = {4, 4}, .in_channels = 3, .kernel = {2, 2}, .out_channels = 2, .out = {3, 3}};
  static constinit PlainConvolution<int16_t, 18> conv2x2(
      shape, {12, 12, 14, 11}, conv2x2_q15_in_data, conv2x2_q15_weight_data, conv2x2_q15_bias_data);
  check_fixed_layer<int16_t>(tc, conv2x2.layer.base, conv2x2_q15_out_reference, kQ15Tolerance);
}

CASE(tc_conv2D_group_conformance_q7) {
  constexpr Shape shape = {.in = {4, 3},
                           .in_channels = 6,
                           .kernel = {3, 2},
                           .out_channels = 6,
                           .out = {3, 2},
                           .pad = {0, 1, 0, 0},
                           .groups = 6};
  static constinit PlainConvolution<int8_t, 36> conv_group(
      shape, {4, 5, 3, 2}, conv_group_q7_in_data, conv_group_q7_weight_data,
      conv_group_q7_bias_data);
  check_fixed_layer<int8_t>(tc, conv_group.layer.base, conv_group_q7_out_reference,
                            kQ7ConvTolerance);
}

CASE(tc_conv2D_pad_avg_pooling_conformance) {
  constexpr Shape shape = {.in = {5, 4},
                           .in_channels = 2,
                           .kernel = {3, 3},
                           .out_channels = 1,
                           .out = {6, 3},
                           .pad = {1, 2, 0, 1}};
  static constinit PooledConvolution<int8_t, 2, 18> conv_pad(
      shape, {4, 5, 3, 1}, {.size = {4, 3}, .stride = {2, 2}, .out = {2, 1}}, nullptr,
      pool_func_ap_array_fixed, conv_pad_avg_pool_in_data, conv_pad_avg_pool_weight_data,
      conv_pad_avg_pool_bias_data);
  forward_conv2d_nl_pool_fixed(&conv_pad.layer.base.base);
  const float* reference = conv_pad_avg_pool_out_reference;
  lcut_float_near(tc, reference[0], static_cast<float>(conv_pad.out_data[0]) * 0.5f, 0.06299208f,
                  __LINE__, __func__, __FILE__);
  lcut_float_near(tc, reference[1], static_cast<float>(conv_pad.out_data[1]) * 0.5f, 0.03125f,
                  __LINE__, __func__, __FILE__);
}

CASE(tc_conv2D_avg_pool_relu_conformance) {
  constexpr Shape shape = {
      .in = {6, 9}, .in_channels = 4, .kernel = {3, 2}, .out_channels = 2, .out = {4, 8}};
  static constinit PooledConvolution<int8_t, 16, 24> conv_relu(
      shape, {4, 5, 3, 0}, {.size = {2, 3}, .stride = {2, 2}, .out = {2, 4}, .pad = {1, 0, 0, 0}},
      nl_func_relu_array_fixed, pool_func_ap_array_fixed, conv_avg_pool_relu_in_data,
      conv_avg_pool_relu_weight_data, conv_avg_pool_relu_bias_data);
  forward_conv2d_nl_pool_fixed(&conv_relu.layer.base.base);
  check_near_int(tc, conv_relu.out_data, conv_avg_pool_relu_out_reference, 0);
}

SUITE(test_lcut_conv_fixed, "test_lcut_conv_fixed test unit", ENTRY(tc_conv2D_1x1_conformance_q7),
      ENTRY(tc_conv2D_1x1_neg_conformance), ENTRY(tc_conv2D_2x2_conformance_q7),
      ENTRY(tc_conv2D_flat_conformance_q7), ENTRY(tc_conv2D_2x2_conformance_q15),
      ENTRY(tc_conv2D_group_conformance_q7), ENTRY(tc_conv2D_pad_avg_pooling_conformance),
      ENTRY(tc_conv2D_avg_pool_relu_conformance))
