// SPDX-License-Identifier: MIT
#include "layers/layers_concat_generic_float.h"
#include "layers/layers_dense_generic_float.h"
#include "layers/layers_eltwise_generic_float.h"
#include "layers/layers_time_delay_generic_float.h"
#include "layers/layers_time_distributed_generic_float.h"
#include "layers/layers_transpose_generic_float.h"
#include "test/fixture.hpp"
#include "test/reference/layers_ext.h"

namespace {

template <uint32_t C, uint32_t W, uint32_t H, uint32_t N, size_t Count>
void check_transpose(lcut_case* tc, const uint32_t (&perm)[AI_SHAPE_DIMS],
                     const float (&reference)[Count], Site site = CALLING_SITE) {
  TENSOR(transpose_in, transpose_in_data, 1, 2, 3, 4);
  output_tensor<float, N, C, W, H> transpose_out;
  const nnlib::layer_chain transpose_layer_chain(nnlib::list(transpose_in),
                                                 nnlib::list(transpose_out));
  ai_layer_transpose transpose_layer = {
      nnlib::layer(AI_LAYER_TYPE_TRANSPOSE, forward_transpose, transpose_layer_chain), perm};
  check_layer(tc, transpose_layer, reference, kFloatEpsilon, site);
}

}  // namespace

CASE(tc_transpose_inv_conformance) {
  check_transpose<3, 2, 1, 4>(tc, {AI_SHAPE_H, AI_SHAPE_W, AI_SHAPE_C, AI_SHAPE_N},
                              transpose_inv_out_reference);
}

CASE(tc_transpose_swap_conformance) {
  check_transpose<2, 4, 3, 1>(tc, {AI_SHAPE_N, AI_SHAPE_C, AI_SHAPE_H, AI_SHAPE_W},
                              transpose_swap_out_reference);
}

CASE(tc_transpose_swap2_conformance) {
  check_transpose<3, 4, 2, 1>(tc, {AI_SHAPE_N, AI_SHAPE_W, AI_SHAPE_H, AI_SHAPE_C},
                              transpose_swap2_out_reference);
}

CASE(tc_concat_conformance) {
  TENSOR(concat_in0, concat_in0_data, 1, 2, 2, 3);
  TENSOR(concat_in1, concat_in1_data, 1, 1, 2, 3);
  TENSOR(concat_in2, concat_in2_data, 1, 3, 2, 3);
  TENSOR(concat_in3, concat_in3_data, 1, 2, 2, 1);
  OUTPUT(concat_channels_out, 1, 6, 2, 3);
  OUTPUT(concat_height_out, 1, 2, 2, 7);
  CHAIN(concat_channels, nnlib::list(concat_in0, concat_in1, concat_in2),
        nnlib::list(concat_channels_out));
  CHAIN(concat_height, nnlib::list(concat_in3, concat_in0, concat_in0),
        nnlib::list(concat_height_out));
  RECORD_LAYER(ai_layer_concat, concat_channels, CONCAT, forward_concat, AI_SHAPE_C);
  RECORD_LAYER(ai_layer_concat, concat_height, CONCAT, forward_concat, AI_SHAPE_H);
  check_layer(tc, concat_channels_layer, concat_channels_out_reference, kFloatEpsilon);
  check_layer(tc, concat_height_layer, concat_height_out_reference, kFloatEpsilon);
}

CASE(tc_time_delay_conformance) {
  TENSOR(time_delay_in, time_delay_in_data, 1, 3, 1, 13);
  TENSOR(time_delay_weights, time_delay_weight_data, 3, 4, 1, 2);
  TENSOR(time_delay_bias, time_delay_bias_data, 1, 2, 1, 1);
  TENSOR(time_delay_delays, time_delay_delay_data, 1, 4, 1, 1);
  OUTPUT(time_delay_out, 1, 2, 1, 9);
  CHAIN(time_delay, nnlib::list(time_delay_in), nnlib::list(time_delay_out),
        nnlib::list(time_delay_weights, time_delay_bias));
  RECORD_LAYER(ai_layer_time_delay, time_delay, TIME_DELAY, forward_time_delay,
               &time_delay_delays.array);
  check_layer(tc, time_delay_layer, time_delay_out_reference, kFloatEpsilon);
}

// A dense layer and a scaling of its outputs, run on each of four steps. The inner layers name the
// whole sequences where the steps are put in.
CASE(tc_time_distributed_conformance) {
  TENSOR(time_distributed_in, time_distributed_in_data, 1, 3, 1, 4);
  TENSOR(time_distributed_weights, time_distributed_weight_data, 3, 2, 1, 1);
  TENSOR(time_distributed_bias, time_distributed_bias_data, 1, 2, 1, 1);
  TENSOR(time_distributed_scale, time_distributed_scale_data, 1, 2, 1, 1);
  OUTPUT(between, 1, 2, 1, 1);
  OUTPUT(time_distributed_out, 1, 2, 1, 4);
  CHAIN(dense, nnlib::list(time_distributed_in), nnlib::list(between),
        nnlib::list(time_distributed_weights, time_distributed_bias));
  CHAIN(scale, nnlib::list(between, time_distributed_scale), nnlib::list(time_distributed_out));
  CHAIN(time_distributed, nnlib::list(time_distributed_in), nnlib::list(time_distributed_out));
  RECORD_LAYER(ai_layer_eltwise, scale, ELTWISE, forward_eltwise, ai_mul);
  static constinit ai_layer dense_layer =
      nnlib::layer(AI_LAYER_TYPE_DENSE, forward_dense, dense_layer_chain, &scale_layer.base);
  RECORD_LAYER(ai_layer_time_distributed, time_distributed, TIME_DISTRIBUTED,
               forward_time_distributed, &dense_layer);
  check_layer(tc, time_distributed_layer, time_distributed_out_reference, kFloatEpsilon);
}

SUITE(test_lcut_layers_ext, "test_lcut_layers_ext test unit", ENTRY(tc_transpose_inv_conformance),
      ENTRY(tc_transpose_swap_conformance), ENTRY(tc_transpose_swap2_conformance),
      ENTRY(tc_concat_conformance), ENTRY(tc_time_delay_conformance),
      ENTRY(tc_time_distributed_conformance))
