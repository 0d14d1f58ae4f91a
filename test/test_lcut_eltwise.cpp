// SPDX-License-Identifier: MIT
#include <cfloat>

#include "layers/layers_eltwise_generic_float.h"
#include "test/fixture.hpp"
#include "test/reference/eltwise.h"

namespace {

using nnlib::dims;

constexpr uint32_t larger(uint32_t a, uint32_t b) {
  return a > b ? a : b;
}

template <dims A, dims B>
using broadcast_tensor =
    output_tensor<float, larger(A.n, B.n), larger(A.c, B.c), larger(A.w, B.w), larger(A.h, B.h)>;

template <dims A, dims B, const auto& InA, const auto& InB, size_t Count>
void check_eltwise(lcut_case* tc, ai_binary_fn operation, const float (&reference)[Count],
                   Site site) {
  static constinit nnlib::tensor eltwise_in0(A, InA);
  static constinit nnlib::tensor eltwise_in1(B, InB);
  broadcast_tensor<A, B> eltwise_out;
  const nnlib::layer_chain eltwise_layer_chain(nnlib::list(eltwise_in0, eltwise_in1),
                                               nnlib::list(eltwise_out));
  ai_layer_eltwise eltwise_layer = {
      nnlib::layer(AI_LAYER_TYPE_ELTWISE, forward_eltwise, eltwise_layer_chain), operation};
  check_layer(tc, eltwise_layer, reference, kFloatEpsilon, site);
}

// The operands' dimensions stand behind the operation: N, C, W, H.
#define ELTWISE_CASE(function, stem, operation, ...)              \
  CASE(function) {                                                \
    check_eltwise<__VA_ARGS__, stem##_in0_data, stem##_in1_data>( \
        tc, operation, stem##_out_reference, CALLING_SITE);       \
  }

// Of a map of five channels, width 3 and height 2.
template <uint32_t C, uint32_t W, size_t Count>
void check_reduce(lcut_case* tc, ai_binary_fn operation, float neutral_value,
                  const float (&reference)[Count], Site site = CALLING_SITE) {
  static constinit nnlib::tensor reduce_in({1, 5, 3, 2}, reduce_in_data);
  output_tensor<float, 1, C, W, 2> reduce_out;
  const nnlib::layer_chain reduce_layer_chain(nnlib::list(reduce_in), nnlib::list(reduce_out));
  ai_layer_reduce reduce_layer = {
      nnlib::layer(AI_LAYER_TYPE_REDUCE, forward_reduce, reduce_layer_chain), neutral_value,
      operation};
  check_layer(tc, reduce_layer, reference, kFloatEpsilon, site);
}

float custom(float a, float b) {
  return (a + 10.0f) * (b * 0.5f) + 12.5f;
}

}  // namespace

ELTWISE_CASE(tc_sum_tensor_scalar, sum_scalar, ai_sum, dims{1, 3, 4, 2}, dims{1, 1, 1, 1})
ELTWISE_CASE(tc_sum_no_broadcast, sum, ai_sum, dims{1, 3, 4, 2}, dims{1, 3, 4, 2})
ELTWISE_CASE(tc_sum_ch_ch_in, sum_ch_ch_in, ai_sum, dims{2, 3, 1, 1}, dims{1, 3, 1, 1})
ELTWISE_CASE(tc_sum_w_ch, sum_w_ch, ai_sum, dims{1, 3, 4, 1}, dims{1, 1, 4, 1})
ELTWISE_CASE(tc_sum_w_ch_single_ch_in, sum_w_ch_single, ai_sum, dims{1, 3, 4, 1}, dims{1, 3, 1, 1})
ELTWISE_CASE(tc_sum_w_ch_ch_in_custom_func, custom_w_ch_ch_in, custom, dims{2, 3, 4, 1},
             dims{2, 1, 4, 1})
ELTWISE_CASE(tc_mul_h_w_ch_ch_in, mul_h_w_ch_ch_in, ai_mul, dims{2, 3, 4, 2}, dims{2, 1, 1, 1})
ELTWISE_CASE(tc_sum_h_w_ch_ch_in_complex, sum_h_w_ch_ch_in_v1, ai_sum, dims{2, 1, 4, 1},
             dims{1, 3, 1, 5})
ELTWISE_CASE(tc_sub_h_w_ch_ch_in_2, sub_h_w_ch_ch_in_v2, ai_sub, dims{1, 3, 1, 2}, dims{2, 3, 4, 1})
ELTWISE_CASE(tc_sum_h_w_ch_ch_in_3, sum_h_w_ch_ch_in_v3, ai_sum, dims{2, 3, 4, 2}, dims{1, 3, 1, 2})

CASE(tc_custom_func_chain) {
  static constinit nnlib::tensor chain_in0({1, 3, 4, 2}, chain_in0_data);
  static constinit nnlib::tensor chain_in1({1, 3, 1, 1}, chain_in1_data);
  static constinit nnlib::tensor chain_in2({1, 1, 4, 2}, chain_in2_data);
  static constinit output_tensor<float, 1, 3, 4, 2> between;
  static constinit output_tensor<float, 1, 3, 4, 2> chain_out;
  static constinit nnlib::layer_chain first_layer_chain(nnlib::list(chain_in0, chain_in1),
                                                        nnlib::list(between));
  static constinit nnlib::layer_chain second_layer_chain(nnlib::list(chain_in2, between),
                                                         nnlib::list(chain_out));
  static constinit ai_layer_eltwise second_layer = {
      nnlib::layer(AI_LAYER_TYPE_ELTWISE, forward_eltwise, second_layer_chain), custom};
  static constinit ai_layer_eltwise first_layer = {
      nnlib::layer(AI_LAYER_TYPE_ELTWISE, forward_eltwise, first_layer_chain, &second_layer.base),
      custom};
  ai_layers_forward_layer(&first_layer.base);
  check_layer(tc, *first_layer.base.next, chain_out_reference, kFloatEpsilon);
}

CASE(tc_reduce_sum) {
  check_reduce<1, 3>(tc, ai_sum, 0.0f, reduce_sum_channels_out_reference);
  check_reduce<5, 1>(tc, ai_sum, 0.0f, reduce_sum_width_out_reference);
  check_reduce<5, 1>(tc, ai_sum, 0.75f, reduce_sum_from_out_reference);
}

CASE(tc_reduce_min) {
  check_reduce<1, 3>(tc, ai_min, FLT_MAX, reduce_min_channels_out_reference);
  check_reduce<5, 1>(tc, ai_min, FLT_MAX, reduce_min_width_out_reference);
  check_reduce<5, 1>(tc, ai_min, -1.25f, reduce_min_from_out_reference);
}

SUITE(test_lcut_eltwise, "test_lcut_elementwise layer test unit",
      NAMED("tc_eltwise_sum_broadcast_scalar_conformance", tc_sum_tensor_scalar),
      NAMED("tc_eltwise_sum_no_broadcast_conformance", tc_sum_no_broadcast),
      NAMED("tc_eltwise_broadcast_CH_CH_IN_conformance", tc_sum_ch_ch_in),
      NAMED("tc_eltwise_broadcast_W_CH_conformance", tc_sum_w_ch),
      NAMED("tc_eltwise_broadcast_W_CH_CH_IN=1_conformance", tc_sum_w_ch_single_ch_in),
      // The blank ends of two names belong to them.
      NAMED("tc_eltwise_broadcast_custom_func_W_CH_CH_IN_conformance ",
            tc_sum_w_ch_ch_in_custom_func),
      NAMED("tc_eltwise_mul_broadcast_H_W_CH_CH_IN_conformance ", tc_mul_h_w_ch_ch_in),
      NAMED("tc_eltwise_sum_broadcast_H_W_CH_CH_IN_v1_conformance", tc_sum_h_w_ch_ch_in_complex),
      NAMED("tc_eltwise_sub_broadcast_H_W_CH_CH_IN_v2_conformance", tc_sub_h_w_ch_ch_in_2),
      NAMED("tc_eltwise_sum_broadcast_H_W_CH_CH_IN_v3_conformance", tc_sum_h_w_ch_ch_in_3),
      NAMED("tc_eltwise_custom_function_chain", tc_custom_func_chain), ENTRY(tc_reduce_sum),
      ENTRY(tc_reduce_min))
