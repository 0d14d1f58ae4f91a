// SPDX-License-Identifier: MIT
// Convolution layers, and convolution fused with a nonlinearity and pooling.
#include <algorithm>
#include <cmath>
#include <iterator>

#include "layers/layers_conv2d_generic_float.h"
#include "test/fixture.hpp"
#include "test/reference/conv.h"

namespace {

// Pads are top, left, bottom, right.
struct Options {
  uint32_t groups = 1;
  uint32_t stride[2] = {1, 1};
  uint32_t dilation[2] = {1, 1};
  uint32_t pads[4] = {0, 0, 0, 0};
  ai_nl_func nl = nullptr;
  const ai_array* nl_params = nullptr;
};

struct PoolOptions {
  ai_pool_func function;
  uint32_t size[2];
  uint32_t stride[2];
  uint32_t pads[4];
};

constexpr ai_shape pad_shape(const uint32_t (&pads)[4]) {
  return {AI_DIMS_WORD(AI_SHAPE_TYPE, AI_SHAPE_DIMS), const_cast<uint32_t*>(pads)};
}

constexpr ai_layer_conv2d conv_layer(ai_layer_forward forward, const ai_tensor_chain& chain,
                                     const Options& options, uint16_t type = AI_LAYER_TYPE_CONV2D) {
  return {nnlib::layer(type, forward, chain),
          options.groups,
          options.nl_params,
          options.nl,
          {options.stride[0], options.stride[1]},
          {options.dilation[0], options.dilation[1]},
          pad_shape(options.pads)};
}

constexpr ai_layer_conv2d_nl_pool fused_layer(const ai_tensor_chain& chain, const Options& options,
                                              const PoolOptions& pool) {
  return {conv_layer(forward_conv2d_nl_pool, chain, options, AI_LAYER_TYPE_OPTIMIZED_CONV2D),
          {pool.size[0], pool.size[1]},
          {pool.stride[0], pool.stride[1]},
          pad_shape(pool.pads),
          pool.function};
}

// The scratch tensor has what the layer asks for, and the outputs are near the reference.
template <size_t Count>
void check_fused(lcut_case* tc, ai_layer_conv2d_nl_pool& layer, const float (&reference)[Count],
                 float tolerance, Site site = CALLING_SITE) {
  const ai_tensor* scratch = ai_tensor_chain_scratch(layer.base.base.tensor_chain, 0);
  lcut_int_equal(tc, static_cast<int32_t>(ai_conv2d_nl_pool_scratch_size(&layer)),
                 static_cast<int32_t>(scratch->data->size), site.line, site.function, site.file);
  check_layer(tc, layer.base, reference, tolerance, site);
}

// Two units in the last place of the largest reference value.
template <size_t Count>
float two_ulps(const float (&reference)[Count]) {
  float largest = 0.0f;
  for (const float value : reference) {
    largest = std::max(largest, std::abs(value));
  }
  return 2.0f * kFloatEpsilon * largest;
}

constexpr nnlib::dims map(uint32_t channels, uint32_t width, uint32_t height) {
  return {1, channels, width, height};
}

// The filters of a depthwise kernel are 1.
constexpr nnlib::dims kernel(uint32_t channels, uint32_t width, uint32_t height, uint32_t filters) {
  return {channels, width, height, filters};
}

struct Pair {
  uint32_t x, y;
};
// before: padding on the left and on top, after: on the right and at the bottom.
constexpr PoolOptions pooling(ai_pool_func function, Pair size, Pair stride, Pair before = {0, 0},
                              Pair after = {0, 0}) {
  return {function, {size.x, size.y}, {stride.x, stride.y}, {before.y, before.x, after.y, after.x}};
}

template <nnlib::dims Dims>
using Output = output_tensor<float, Dims.n, Dims.c, Dims.w, Dims.h>;

}  // namespace

// Fixtures, named after a stem.
#define INPUT_AND_BIAS(stem, in)                                                     \
  static constinit nnlib::tensor stem##_in(in, stem##_in_data);                      \
  static constinit nnlib::tensor stem##_bias(map(std::size(stem##_bias_data), 1, 1), \
                                             stem##_bias_data)
#define INPUTS(stem, in, kernel) \
  INPUT_AND_BIAS(stem, in);      \
  static constinit nnlib::tensor stem##_weights(kernel, stem##_weight_data)
// Weights that are indices, and scratch for the expanded ones.
#define INDEX_INPUTS(stem, bits, in, kernel)                                                \
  INPUT_AND_BIAS(stem, in);                                                                 \
  static constinit nnlib::tensor stem##_weights(AI_ARRAY_FORMAT_LUT##bits##_FLOAT, kernel,  \
                                                stem##_weight_data, stem##_table, nullptr); \
  static constinit Output<kernel> stem##_expanded

// The chain and the layer over inputs declared before; the convolution's options follow.
#define CONVOLUTION_CHAIN(stem, out, weights, scratch)    \
  static constinit Output<out> stem##_out;                \
  static constinit nnlib::layer_chain stem##_layer_chain( \
      nnlib::list(stem##_in), nnlib::list(stem##_out), weights, scratch)
#define CONVOLUTION_OVER(stem, forward, out, weights, scratch, ...) \
  CONVOLUTION_CHAIN(stem, out, weights, scratch);                   \
  static constexpr Options stem##_options = {__VA_ARGS__};          \
  static constinit ai_layer_conv2d stem##_layer =                   \
      conv_layer(forward, stem##_layer_chain, stem##_options)
#define WEIGHTS(stem) nnlib::list(stem##_weights, stem##_bias)
#define CONVOLUTION(stem, forward, out, ...) \
  CONVOLUTION_OVER(stem, forward, out, WEIGHTS(stem), nnlib::list(), __VA_ARGS__)

// rows is the window of convolved rows, pool the pooling's options in parentheses.
#define FUSED_OVER(stem, rows, out, scratch, pool, ...)    \
  static constinit Output<rows> stem##_scratch;            \
  CONVOLUTION_CHAIN(stem, out, WEIGHTS(stem), scratch);    \
  static constexpr Options stem##_options = {__VA_ARGS__}; \
  static constexpr PoolOptions stem##_pool = pool;         \
  static constinit ai_layer_conv2d_nl_pool stem##_layer =  \
      fused_layer(stem##_layer_chain, stem##_options, stem##_pool)
#define FUSED(stem, rows, out, pool, ...) \
  FUSED_OVER(stem, rows, out, nnlib::list(stem##_scratch), pool, __VA_ARGS__)
#define FUSED_INDEX(stem, rows, out, pool, ...) \
  FUSED_OVER(stem, rows, out, nnlib::list(stem##_scratch, stem##_expanded), pool, __VA_ARGS__)

CASE(tc_conv2d_dw_5x1_kernel) {
  INPUTS(conv_dw_5x1, map(3, 9, 2), kernel(3, 5, 1, 1));
  CONVOLUTION(conv_dw_5x1, forward_conv2d, map(3, 4, 2), .groups = 3, .stride = {2, 1},
              .pads = {0, 2, 0, 1});
  check_layer(tc, conv_dw_5x1_layer, conv_dw_5x1_out_reference, kFloatEpsilon);
}

CASE(tc_conv2D_1x1_conformance) {
  INPUTS(conv_1x1, map(5, 3, 2), kernel(5, 1, 1, 9));
  CONVOLUTION(conv_1x1, forward_conv2d, map(9, 3, 2));
  check_layer(tc, conv_1x1_layer, conv_1x1_out_reference, kFloatEpsilon);
}

CASE(tc_conv2D_k_conformance) {
  INPUTS(conv_k, map(3, 6, 4), kernel(3, 2, 3, 5));
  CONVOLUTION(conv_k, forward_conv2d, map(5, 5, 2));
  check_layer(tc, conv_k_layer, conv_k_out_reference, kFloatEpsilon);
}

CASE(tc_conv2D_flat_conformance) {
  INPUTS(conv_flat, map(3, 7, 1), kernel(3, 3, 1, 4));
  CONVOLUTION(conv_flat, forward_conv2d, map(4, 5, 1));
  check_layer(tc, conv_flat_layer, conv_flat_out_reference, kFloatEpsilon);
}

CASE(tc_conv2D_flat_dict8_conformance) {
  INDEX_INPUTS(conv_flat_dict8, 8, map(3, 7, 1), kernel(3, 3, 1, 4));
  CONVOLUTION_OVER(conv_flat_dict8, forward_conv2d, map(4, 5, 1), WEIGHTS(conv_flat_dict8),
                   nnlib::list(conv_flat_dict8_expanded));
  check_layer(tc, conv_flat_dict8_layer, conv_flat_dict8_out_reference, kFloatEpsilon);
}

CASE(tc_conv2D_flat_dict4_conformance) {
  INDEX_INPUTS(conv_flat_dict4, 4, map(3, 7, 1), kernel(3, 3, 1, 4));
  CONVOLUTION_OVER(conv_flat_dict4, forward_conv2d, map(4, 5, 1), WEIGHTS(conv_flat_dict4),
                   nnlib::list(conv_flat_dict4_expanded));
  check_layer(tc, conv_flat_dict4_layer, conv_flat_dict4_out_reference, kFloatEpsilon);
}

CASE(tc_conv2D_dilation_conformance) {
  INPUTS(conv_dilation, map(2, 8, 6), kernel(2, 3, 2, 3));
  CONVOLUTION(conv_dilation, forward_conv2d, map(3, 4, 4), .dilation = {2, 2});
  check_layer(tc, conv_dilation_layer, conv_dilation_out_reference, kFloatEpsilon);
}

CASE(tc_conv2D_dilation_pad_conformance) {
  INPUTS(conv_dilation_pad, map(2, 5, 4), kernel(2, 3, 2, 3));
  CONVOLUTION(conv_dilation_pad, forward_conv2d, map(3, 3, 4), .dilation = {2, 2},
              .pads = {1, 1, 1, 1});
  check_layer(tc, conv_dilation_pad_layer, conv_dilation_pad_out_reference, kFloatEpsilon);
}

CASE(tc_conv2D_dilation_pad_b_conformance) {
  INPUTS(conv_dilation_pad_b, map(2, 5, 4), kernel(2, 2, 3, 3));
  CONVOLUTION(conv_dilation_pad_b, forward_conv2d, map(3, 4, 1), .dilation = {2, 2},
              .pads = {0, 1, 1, 0});
  check_layer(tc, conv_dilation_pad_b_layer, conv_dilation_pad_b_out_reference, kFloatEpsilon);
}

CASE(tc_conv2D_dilation_2pad_conformance) {
  INPUTS(conv_dilation_2pad, map(2, 4, 3), kernel(2, 3, 2, 3));
  CONVOLUTION(conv_dilation_2pad, forward_conv2d, map(3, 4, 5), .dilation = {2, 2},
              .pads = {2, 2, 2, 2});
  check_layer(tc, conv_dilation_2pad_layer, conv_dilation_2pad_out_reference, kFloatEpsilon);
}

CASE(tc_conv2D_dilation_3pad_conformance) {
  INPUTS(conv_dilation_3pad, map(2, 4, 3), kernel(2, 2, 3, 3));
  CONVOLUTION(conv_dilation_3pad, forward_conv2d, map(3, 8, 5), .dilation = {2, 2},
              .pads = {3, 3, 3, 3});
  check_layer(tc, conv_dilation_3pad_layer, conv_dilation_3pad_out_reference, kFloatEpsilon);
}

CASE(tc_conv2D_asim_dilation_conformance) {
  INPUTS(conv_asim_dilation, map(3, 8, 5), kernel(3, 3, 2, 2));
  CONVOLUTION(conv_asim_dilation, forward_conv2d, map(2, 5, 4), .dilation = {3, 2},
              .pads = {1, 2, 0, 1});
  check_layer(tc, conv_asim_dilation_layer, conv_asim_dilation_out_reference, kFloatEpsilon);
}

CASE(tc_conv2D_group_conformance) {
  INPUTS(conv_group, map(6, 5, 4), kernel(2, 3, 2, 9));
  CONVOLUTION(conv_group, forward_conv2d, map(9, 4, 3), .groups = 3, .stride = {1, 2},
              .pads = {1, 0, 1, 1});
  check_layer(tc, conv_group_layer, conv_group_out_reference, kFloatEpsilon);
}

CASE(tc_conv2D_depthwise_conformance) {
  INPUTS(conv_depthwise, map(5, 6, 4), kernel(5, 3, 2, 1));
  CONVOLUTION(conv_depthwise, forward_conv2d, map(5, 6, 4), .groups = 5, .pads = {1, 1, 0, 1});
  check_layer(tc, conv_depthwise_layer, conv_depthwise_out_reference, kFloatEpsilon);
}

CASE(tc_conv2D_no_bias_conformance) {
  static constinit nnlib::tensor conv_no_bias_in(map(4, 4, 3), conv_no_bias_in_data);
  static constinit nnlib::tensor conv_no_bias_weights(kernel(4, 2, 2, 3), conv_no_bias_weight_data);
  CONVOLUTION_OVER(conv_no_bias, forward_conv2d, map(3, 3, 2), nnlib::list(conv_no_bias_weights),
                   nnlib::list());
  check_layer(tc, conv_no_bias_layer, conv_no_bias_out_reference, kFloatEpsilon);
}

CASE(tc_conv2D_pad_conformance) {
  INPUTS(conv_pad, map(3, 4, 3), kernel(3, 3, 4, 4));
  CONVOLUTION(conv_pad, forward_conv2d, map(4, 5, 3), .pads = {2, 1, 1, 2});
  check_layer(tc, conv_pad_layer, conv_pad_out_reference, kFloatEpsilon);
}

CASE(tc_convTranspose_conformance) {
  INPUTS(conv_transpose, map(3, 3, 2), kernel(3, 2, 3, 4));
  CONVOLUTION(conv_transpose, forward_conv2d_transpose, map(4, 4, 4));
  check_layer(tc, conv_transpose_layer, conv_transpose_out_reference, kFloatEpsilon);
}

CASE(tc_convTranspose_stride_conformance) {
  INPUTS(conv_transpose_stride, map(2, 3, 2), kernel(2, 3, 2, 3));
  CONVOLUTION(conv_transpose_stride, forward_conv2d_transpose, map(3, 7, 5), .stride = {2, 3});
  check_layer(tc, conv_transpose_stride_layer, conv_transpose_stride_out_reference, kFloatEpsilon);
}

CASE(tc_convTranspose_stride_pad_conformance) {
  INPUTS(conv_transpose_stride_pad, map(4, 4, 3), kernel(2, 3, 4, 6));
  CONVOLUTION(conv_transpose_stride_pad, forward_conv2d_transpose, map(6, 10, 7), .groups = 2,
              .stride = {2, 3}, .dilation = {2, 1}, .pads = {2, 1, 1, 0});
  check_layer(tc, conv_transpose_stride_pad_layer, conv_transpose_stride_pad_out_reference,
              kFloatEpsilon);
}

CASE(tc_conv2D_stride_conformance) {
  INPUTS(conv_stride, map(3, 7, 6), kernel(3, 3, 2, 4));
  CONVOLUTION(conv_stride, forward_conv2d, map(4, 3, 3), .stride = {3, 2}, .pads = {1, 1, 0, 1});
  check_layer(tc, conv_stride_layer, conv_stride_out_reference, kFloatEpsilon);
}

CASE(tc_conv2D_prelu_conformance) {
  INPUTS(conv_prelu, map(3, 4, 3), kernel(3, 2, 2, 4));
  static constinit nnlib::tensor conv_prelu_slopes(map(4, 3, 1), conv_prelu_slope_data);
  CONVOLUTION_OVER(conv_prelu, forward_conv2d, map(4, 3, 2),
                   nnlib::list(conv_prelu_weights, conv_prelu_bias, conv_prelu_slopes),
                   nnlib::list(), .nl = nl_func_prelu_array_f32);
  check_layer(tc, conv_prelu_layer, conv_prelu_out_reference, kFloatEpsilon);
}

CASE(tc_conv2D_pad_sigmoid_max_pooling_conformance) {
  INPUTS(conv_pad_sigmoid_max_pool, map(3, 6, 4), kernel(3, 3, 3, 5));
  FUSED(conv_pad_sigmoid_max_pool, map(5, 6, 2), map(5, 3, 2),
        pooling(pool_func_mp_array_f32, {2, 2}, {2, 2}), .pads = {1, 1, 1, 1},
        .nl = nl_func_sigmoid_array_f32);
  check_fused(tc, conv_pad_sigmoid_max_pool_layer, conv_pad_sigmoid_max_pool_out_reference,
              two_ulps(conv_pad_sigmoid_max_pool_out_reference));
}

CASE(tc_conv2D_pad_sigmoid_max_pooling_dict8_conformance) {
  INDEX_INPUTS(conv_pad_sigmoid_max_pool_dict8, 8, map(3, 6, 4), kernel(3, 3, 3, 5));
  FUSED_INDEX(conv_pad_sigmoid_max_pool_dict8, map(5, 6, 2), map(5, 3, 2),
              pooling(pool_func_mp_array_f32, {2, 2}, {2, 2}), .pads = {1, 1, 1, 1},
              .nl = nl_func_sigmoid_array_f32);
  check_fused(tc, conv_pad_sigmoid_max_pool_dict8_layer,
              conv_pad_sigmoid_max_pool_dict8_out_reference, kFloatEpsilon);
}

CASE(tc_conv2D_pad_sigmoid_max_pooling_dict4_conformance) {
  INDEX_INPUTS(conv_pad_sigmoid_max_pool_dict4, 4, map(4, 6, 4), kernel(4, 3, 3, 5));
  FUSED_INDEX(conv_pad_sigmoid_max_pool_dict4, map(5, 6, 2), map(5, 3, 2),
              pooling(pool_func_mp_array_f32, {2, 2}, {2, 2}), .pads = {1, 1, 1, 1},
              .nl = nl_func_sigmoid_array_f32);
  check_fused(tc, conv_pad_sigmoid_max_pool_dict4_layer,
              conv_pad_sigmoid_max_pool_dict4_out_reference, kFloatEpsilon);
}

CASE(tc_conv2D_depthwise_maxpool_conformance) {
  INPUTS(conv_depthwise_max_pool, map(5, 6, 5), kernel(5, 3, 2, 1));
  FUSED(conv_depthwise_max_pool, map(5, 6, 2), map(5, 2, 2),
        pooling(pool_func_mp_array_f32, {3, 2}, {3, 2}), .groups = 5, .pads = {0, 1, 0, 1});
  check_fused(tc, conv_depthwise_max_pool_layer, conv_depthwise_max_pool_out_reference,
              kFloatEpsilon);
}

CASE(tc_conv2D_avg_pool_strided_conformance) {
  INPUTS(conv_avg_pool_strided, map(2, 8, 7), kernel(2, 2, 3, 3));
  FUSED(conv_avg_pool_strided, map(3, 7, 2), map(3, 3, 2),
        pooling(pool_func_ap_array_f32, {3, 2}, {2, 1}), .stride = {1, 2});
  check_fused(tc, conv_avg_pool_strided_layer, conv_avg_pool_strided_out_reference, kFloatEpsilon);
}

CASE(tc_conv2D_avg_pool_large_stride_conformance) {
  INPUTS(conv_avg_pool_large_stride, map(2, 8, 9), kernel(2, 2, 2, 3));
  FUSED(conv_avg_pool_large_stride, map(3, 7, 2), map(3, 2, 3),
        pooling(pool_func_ap_array_f32, {2, 2}, {3, 3}));
  check_fused(tc, conv_avg_pool_large_stride_layer, conv_avg_pool_large_stride_out_reference,
              kFloatEpsilon);
}

CASE(tc_conv2D_avg_pool_small_stride_conformance) {
  INPUTS(conv_avg_pool_small_stride, map(2, 6, 8), kernel(2, 2, 2, 3));
  FUSED(conv_avg_pool_small_stride, map(3, 5, 4), map(3, 4, 4),
        pooling(pool_func_ap_array_f32, {2, 4}, {1, 1}));
  check_fused(tc, conv_avg_pool_small_stride_layer, conv_avg_pool_small_stride_out_reference,
              kFloatEpsilon);
}

CASE(tc_conv2D_max_pool_pool_pad_conformance) {
  INPUTS(conv_max_pool_pool_pad, map(2, 6, 5), kernel(2, 2, 2, 3));
  FUSED(conv_max_pool_pool_pad, map(3, 5, 3), map(3, 3, 2),
        pooling(pool_func_mp_array_f32, {3, 3}, {2, 2}, {1, 1}, {1, 1}));
  check_fused(tc, conv_max_pool_pool_pad_layer, conv_max_pool_pool_pad_out_reference,
              kLooseTolerance);
}

CASE(tc_conv2D_max_pool_miniyolo_conformance) {
  static constexpr float leaky_params[] = {0.0f, 0.125f, -1.0f};
  static constinit nnlib::tensor conv_max_pool_miniyolo_params(map(3, 1, 1), leaky_params);
  INPUTS(conv_max_pool_miniyolo, map(3, 6, 6), kernel(3, 3, 3, 16));
  FUSED(conv_max_pool_miniyolo, map(16, 6, 2), map(16, 3, 3),
        pooling(pool_func_mp_array_f32, {2, 2}, {2, 2}), .pads = {1, 1, 1, 1},
        .nl = nl_func_relu_generic_array_f32, .nl_params = &conv_max_pool_miniyolo_params.array);
  check_fused(tc, conv_max_pool_miniyolo_layer, conv_max_pool_miniyolo_out_reference,
              kFloatEpsilon);
}

CASE(tc_conv2D_pad_tanh_avg_pooling_conformance) {
  INPUTS(conv_pad_tanh_avg_pool, map(2, 5, 4), kernel(2, 3, 2, 3));
  FUSED(conv_pad_tanh_avg_pool, map(3, 5, 3), map(3, 3, 4),
        pooling(pool_func_ap_array_f32, {2, 3}, {2, 1}, {1, 2}), .pads = {1, 1, 0, 1},
        .nl = nl_func_tanh_array_f32);
  check_fused(tc, conv_pad_tanh_avg_pool_layer, conv_pad_tanh_avg_pool_out_reference,
              two_ulps(conv_pad_tanh_avg_pool_out_reference));
}

CASE(tc_conv2D_1x1_sm_conformance) {
  INPUTS(conv_1x1_sm, map(4, 3, 2), kernel(4, 1, 1, 5));
  CONVOLUTION(conv_1x1_sm, forward_conv2d, map(5, 3, 2), .nl = nl_func_sm_group_array_f32);
  check_layer(tc, conv_1x1_sm_layer, conv_1x1_sm_out_reference,
              two_ulps(conv_1x1_sm_out_reference));
}

SUITE(test_lcut_conv, "test_lcut_conv test unit", ENTRY(tc_conv2d_dw_5x1_kernel),
      ENTRY(tc_conv2D_1x1_conformance), ENTRY(tc_conv2D_k_conformance),
      ENTRY(tc_conv2D_flat_conformance), ENTRY(tc_conv2D_flat_dict8_conformance),
      ENTRY(tc_conv2D_flat_dict4_conformance), ENTRY(tc_conv2D_dilation_conformance),
      ENTRY(tc_conv2D_dilation_pad_conformance), ENTRY(tc_conv2D_dilation_pad_b_conformance),
      ENTRY(tc_conv2D_dilation_2pad_conformance), ENTRY(tc_conv2D_dilation_3pad_conformance),
      ENTRY(tc_conv2D_asim_dilation_conformance), ENTRY(tc_conv2D_group_conformance),
      ENTRY(tc_conv2D_depthwise_conformance), ENTRY(tc_conv2D_no_bias_conformance),
      ENTRY(tc_conv2D_pad_conformance), ENTRY(tc_convTranspose_conformance),
      ENTRY(tc_convTranspose_stride_conformance), ENTRY(tc_convTranspose_stride_pad_conformance),
      ENTRY(tc_conv2D_stride_conformance), ENTRY(tc_conv2D_prelu_conformance),
      ENTRY(tc_conv2D_pad_sigmoid_max_pooling_conformance),
      ENTRY(tc_conv2D_pad_sigmoid_max_pooling_dict8_conformance),
      ENTRY(tc_conv2D_pad_sigmoid_max_pooling_dict4_conformance),
      ENTRY(tc_conv2D_depthwise_maxpool_conformance), ENTRY(tc_conv2D_avg_pool_strided_conformance),
      ENTRY(tc_conv2D_avg_pool_large_stride_conformance),
      ENTRY(tc_conv2D_avg_pool_small_stride_conformance),
      ENTRY(tc_conv2D_max_pool_pool_pad_conformance),
      ENTRY(tc_conv2D_max_pool_miniyolo_conformance),
      ENTRY(tc_conv2D_pad_tanh_avg_pooling_conformance), ENTRY(tc_conv2D_1x1_sm_conformance))
