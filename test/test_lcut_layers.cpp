// SPDX-License-Identifier: MIT
// Float layers: dense, products of matrices, data movement, norms, pooling.
#include "layers/layers_generic_float.h"

#include "layers/layers_norm_generic_float.h"
#include "layers/layers_pool_generic_float.h"
#include "test/fixture.hpp"
#include "test/reference/layers.h"

using nnlib::list;

namespace {

// Nine values to five, at 2 x 2 positions.
template <size_t Count>
void check_dense(lcut_case* tc, ai_tensor& weights, ai_tensor* bias,
                 const float (&reference)[Count], Site site = CALLING_SITE) {
  TENSOR(dense_in, dense_in_data, 1, 9, 2, 2);
  output_tensor<float, 1, 5, 2, 2> dense_out;
  const nnlib::layer_chain dense_layer_chain(list(dense_in), list(dense_out), list(weights, bias));
  ai_layer dense_layer = nnlib::layer(AI_LAYER_TYPE_DENSE, forward_dense, dense_layer_chain);
  check_layer(tc, dense_layer, reference, kFloatEpsilon, site);
}

// Weights as indices and their table; with 4 bits, half a byte is left over in each row of nine.
constinit nnlib::tensor dense_dict8_weights(AI_ARRAY_FORMAT_LUT8_FLOAT, {9, 5, 1, 1},
                                            dense_dict8_weight_data, dense_dict8_table, nullptr);
constinit nnlib::tensor dense_dict4_weights(AI_ARRAY_FORMAT_LUT4_FLOAT, {9, 5, 1, 1},
                                            dense_dict4_weight_data, dense_dict4_table, nullptr);
constinit nnlib::tensor dense_bias({1, 5, 1, 1}, dense_bias_data);

}  // namespace

CASE(tc_dense_conformance) {
  TENSOR(dense_weights, dense_weight_data, 9, 5, 1, 1);
  check_dense(tc, dense_weights, &dense_bias, dense_out_reference);
}

CASE(tc_dense_conformance_dict8) {
  check_dense(tc, dense_dict8_weights, nnlib::absent, dense_dict8_out_reference);
}

CASE(tc_dense_conformance_dict4) {
  check_dense(tc, dense_dict4_weights, &dense_bias, dense_dict4_out_reference);
}

CASE(tc_distr_dense_conformance) {
  TENSOR(distr_dense_in, distr_dense_in_data, 1, 3, 2, 4);
  TENSOR(distr_dense_weights, distr_dense_weight_data, 3, 2, 1, 1);
  TENSOR(distr_dense_bias, distr_dense_bias_data, 1, 2, 1, 1);
  OUTPUT(distr_dense_out, 1, 2, 2, 4);
  LAYER(inner, DENSE, forward_dense, list(distr_dense_in), list(distr_dense_out),
        list(distr_dense_weights, distr_dense_bias));
  CHAIN(distr_dense, list(distr_dense_in), list(distr_dense_out));
  RECORD_LAYER(ai_layer_time_distributed, distr_dense, TIME_DISTRIBUTED, forward_time_distributed,
               &inner_layer);
  check_layer(tc, distr_dense_layer, distr_dense_out_reference, kFloatEpsilon);
}

CASE(tc_slice_conformance) {
  static constexpr uint32_t axes[] = {AI_SHAPE_H, AI_SHAPE_C};
  static constexpr int32_t starts[] = {2, 1};
  static constexpr int32_t ends[] = {5, 3};
  TENSOR(slice_axes, axes, 1, 2, 1, 1);
  TENSOR(slice_starts, starts, 1, 2, 1, 1);
  TENSOR(slice_ends, ends, 1, 2, 1, 1);
  TENSOR(slice_in, slice_in_data, 1, 4, 3, 6);
  OUTPUT(slice_out, 1, 2, 3, 3);
  CHAIN(slice, list(slice_in), list(slice_out));
  RECORD_LAYER(ai_layer_slice, slice, SLICE, forward_slice, &slice_axes.array, &slice_starts.array,
               &slice_ends.array);
  check_layer(tc, slice_layer, slice_out_reference, kFloatEpsilon);
}

CASE(tc_topK_conformance) {
  TENSOR(topk_in, topk_in_data, 1, 2, 2, 5);
  OUTPUT(topk_out, 1, 2, 2, 3);
  static constinit output_tensor<uint32_t, 1, 2, 2, 3> topk_indices;
  CHAIN(topk, list(topk_in), list(topk_out, topk_indices));
  RECORD_LAYER(ai_layer_topk, topk, GENERIC, forward_topK, AI_SHAPE_H, 3);
  check_layer(tc, topk_layer, topk_out_reference, kFloatEpsilon);
  check_near_int(tc, topk_indices.storage, topk_index_reference, 0);
}

CASE(tc_tile_conformance) {
  static constexpr uint16_t repeats[] = {2, 3, 4};
  TENSOR(tile_in, tile_in_data, 1, 2, 3, 2);
  OUTPUT(tile_out, 1, 8, 9, 4);
  CHAIN(tile, list(tile_in), list(tile_out));
  RECORD_LAYER(ai_layer_tile, tile, TILE, forward_tile, repeats);
  check_layer(tc, tile_layer, tile_out_reference, kFloatEpsilon);
}

namespace {

// Pads the map of height 3, width 4 and 2 channels to the given size.
template <uint32_t Width, uint32_t Height, size_t Count>
void check_pad(lcut_case* tc, uint32_t mode, uint32_t top, uint32_t left, float value,
               const float (&reference)[Count], float tolerance, Site site = CALLING_SITE) {
  TENSOR(pad_in, pad_in_data, 1, 2, 4, 3);
  output_tensor<float, 1, 2, Width, Height> pad_out;
  const nnlib::layer_chain pad_layer_chain(list(pad_in), list(pad_out));
  const uint32_t pads[] = {top, left};
  const nnlib::tensor constant({1, 1, 1, 1}, &value);
  ai_layer_pad pad_layer = {nnlib::layer(AI_LAYER_TYPE_PAD, forward_pad, pad_layer_chain), mode,
                            pads, &constant.array};
  check_layer(tc, pad_layer, reference, tolerance, site);
}

}  // namespace

CASE(tc_pad_reflect_conformance) {
  check_pad<8, 6>(tc, AI_PAD_REFLECT, 2, 1, 0.0f, pad_reflect_out_reference, kFloatEpsilon);
}

CASE(tc_pad_constant_conformance) {
  constexpr float value = -0.75f;
  check_pad<7, 6>(tc, AI_PAD_CONSTANT, 1, 2, value, pad_constant_out_reference,
                  -value * kFloatEpsilon);
}

CASE(tc_pad_edge_conformance) {
  check_pad<8, 6>(tc, AI_PAD_EDGE, 2, 1, 0.0f, pad_edge_out_reference, kFloatEpsilon);
}

namespace {

// Enlarges the map of height 3, width 2 and 2 channels.
template <uint32_t Height, size_t Count>
void check_upsample(lcut_case* tc, uint32_t mode, bool center, const float (&scales)[2],
                    const float (&reference)[Count], float tolerance, Site site = CALLING_SITE) {
  TENSOR(upsample_in, upsample_in_data, 1, 2, 2, 3);
  output_tensor<float, 1, 2, 6, Height> upsample_out;
  const nnlib::layer_chain upsample_layer_chain(list(upsample_in), list(upsample_out));
  const nnlib::tensor upsample_scales({1, 2, 1, 1}, scales);
  ai_layer_upsample upsample_layer = {
      nnlib::layer(AI_LAYER_TYPE_UPSAMPLE, forward_upsample, upsample_layer_chain), mode, center,
      &upsample_scales.array};
  check_layer(tc, upsample_layer, reference, tolerance, site);
}

}  // namespace

CASE(tc_upsample_z_conformance) {
  check_upsample<6>(tc, AI_UPSAMPLE_ZEROS, false, {2, 3}, upsample_z_out_reference, kFloatEpsilon);
}

CASE(tc_upsample_n_conformance) {
  check_upsample<4>(tc, AI_UPSAMPLE_NEAREST, false, {1.5f, 3}, upsample_n_out_reference,
                    kFloatEpsilon);
}

CASE(tc_upsample_b_conformance) {
  check_upsample<6>(tc, AI_UPSAMPLE_BILINEAR, false, {2, 3}, upsample_b_out_reference,
                    kLooseTolerance);
}

CASE(tc_upsample_b_center_conformance) {
  check_upsample<6>(tc, AI_UPSAMPLE_BILINEAR, true, {2, 3}, upsample_b_center_out_reference,
                    kLooseTolerance);
}

CASE(tc_instanceNorm_conformance) {
  TENSOR(instance_norm_in, instance_norm_in_data, 1, 3, 2, 3);
  TENSOR(instance_norm_weights, instance_norm_weight_data, 1, 3, 1, 1);
  TENSOR(instance_norm_bias, instance_norm_bias_data, 1, 3, 1, 1);
  OUTPUT(instance_norm_out, 1, 3, 2, 3);
  CHAIN(instance_norm, list(instance_norm_in), list(instance_norm_out),
        list(instance_norm_weights, instance_norm_bias));
  RECORD_LAYER(ai_layer_instance_norm, instance_norm, INSTANCENORMALIZATION,
               forward_instanceNormalization, 0.125f);
  check_layer(tc, instance_norm_layer, instance_norm_out_reference, kFloatEpsilon);
}

CASE(tc_gemm_conformance) {
  TENSOR(gemm_in, gemm_in_data, 1, 2, 1, 3);
  TENSOR(gemm_weights, gemm_weight_data, 1, 4, 1, 3);
  TENSOR(gemm_bias, gemm_bias_data, 1, 4, 1, 1);
  OUTPUT(gemm_out, 1, 4, 1, 2);
  CHAIN(gemm, list(gemm_in), list(gemm_out), list(gemm_weights, gemm_bias));
  RECORD_LAYER(ai_layer_gemm, gemm, GEMM, forward_gemm, 0.5f, -0.25f, true, false);
  check_layer(tc, gemm_layer, gemm_out_reference, kFloatEpsilon);

  TENSOR(gemm_3_inputs_a, gemm_3_inputs_a_data, 1, 3, 1, 2);
  TENSOR(gemm_3_inputs_b, gemm_3_inputs_b_data, 1, 3, 1, 4);
  TENSOR(gemm_3_inputs_c, gemm_3_inputs_c_data, 1, 1, 1, 2);
  OUTPUT(gemm_3_inputs_out, 1, 4, 1, 2);
  CHAIN(gemm_3_inputs, list(gemm_3_inputs_a, gemm_3_inputs_b, gemm_3_inputs_c),
        list(gemm_3_inputs_out));
  RECORD_LAYER(ai_layer_gemm, gemm_3_inputs, GEMM, forward_gemm, -1.5f, 2.0f, false, true);
  check_layer(tc, gemm_3_inputs_layer, gemm_3_inputs_out_reference, kFloatEpsilon);
}

namespace {

template <uint32_t N, size_t A, size_t B, size_t Count>
void check_matmul(lcut_case* tc, const float (&a_data)[A], const float (&b_data)[B],
                  const float (&reference)[Count], Site site = CALLING_SITE) {
  nnlib::tensor a({N, 2, 3, 2}, a_data), b({N, 2, 4, 3}, b_data);
  output_tensor<float, N, 2, 4, 2> out;
  const nnlib::layer_chain chain(list(a, b), list(out));
  ai_layer layer = nnlib::layer(AI_LAYER_TYPE_GEMM, forward_matmul, chain);
  check_layer(tc, layer, reference, kFloatEpsilon, site);
}

}  // namespace

CASE(tc_matmul_conformance) {
  check_matmul<2>(tc, matmul_a_data, matmul_b_data, matmul_out_reference);
  check_matmul<1>(tc, matmul_1_a_data, matmul_1_b_data, matmul_1_out_reference);
}

CASE(tc_batch_norm_conformance) {
  TENSOR(batch_norm_in, batch_norm_in_data, 1, 3, 3, 2);
  TENSOR(batch_norm_weights, batch_norm_weight_data, 1, 3, 1, 1);
  TENSOR(batch_norm_bias, batch_norm_bias_data, 1, 3, 1, 1);
  OUTPUT(batch_norm_out, 1, 3, 3, 2);
  LAYER(batch_norm, BN, forward_bn, list(batch_norm_in), list(batch_norm_out),
        list(batch_norm_weights, batch_norm_bias));
  check_layer(tc, batch_norm_layer, batch_norm_out_reference, kFloatEpsilon);
  LAYER(no_bias, BN, forward_bn, list(batch_norm_in), list(batch_norm_out),
        list(batch_norm_weights));
  check_layer(tc, no_bias_layer, batch_norm_no_bias_out_reference, kFloatEpsilon);
}

CASE(tc_lrn_conformance) {
  TENSOR(lrn_in, lrn_in_data, 1, 7, 2, 1);
  OUTPUT(lrn_out, 1, 7, 2, 1);
  CHAIN(lrn, list(lrn_in), list(lrn_out));
  RECORD_LAYER(ai_layer_lrn, lrn, LRN, forward_lrn, 4, 1.25f, 0.5f, 0.75f);  // a window of 5
  check_layer(tc, lrn_layer, lrn_out_reference, kFloatEpsilon);
}

CASE(tc_norm_conformance) {
  TENSOR(norm_in, norm_in_data, 1, 5, 2, 2);
  OUTPUT(norm_out, 1, 5, 2, 2);
  CHAIN(norm, list(norm_in), list(norm_out));
  RECORD_LAYER(ai_layer_norm, norm, NORM, forward_norm, AI_SHAPE_C, 2.0f, false);
  check_layer(tc, norm_layer, norm_out_reference, kFloatEpsilon);
}

CASE(tc_norm_zero_conformance) {
  TENSOR(norm_zero_in, norm_zero_in_data, 1, 3, 2, 1);
  OUTPUT(norm_zero_out, 1, 3, 2, 1);
  CHAIN(norm_zero, list(norm_zero_in), list(norm_zero_out));
  RECORD_LAYER(ai_layer_norm, norm_zero, NORM, forward_norm, AI_SHAPE_C, 2.0f, false);
  check_layer(tc, norm_zero_layer, norm_zero_out_reference, kFloatEpsilon);

  OUTPUT(norm_zero_sum_out, 1, 3, 2, 1);  // any exponent but 2 has another path
  CHAIN(norm_zero_sum, list(norm_zero_in), list(norm_zero_sum_out));
  RECORD_LAYER(ai_layer_norm, norm_zero_sum, NORM, forward_norm, AI_SHAPE_C, 1.0f, false);
  check_layer(tc, norm_zero_sum_layer, norm_zero_sum_out_reference, kFloatEpsilon);
}

CASE(tc_lpNorm_height_conformance) {
  TENSOR(lp_norm_in, lp_norm_height_in_data, 1, 2, 3, 4);
  OUTPUT(lp_norm_out, 1, 2, 3, 4);
  CHAIN(lp_norm, list(lp_norm_in), list(lp_norm_out));
  RECORD_LAYER(ai_layer_norm, lp_norm, NORM, forward_norm, AI_SHAPE_H, 3.0f, false);
  check_layer(tc, lp_norm_layer, lp_norm_height_out_reference, kFloatEpsilon);
}

CASE(tc_lpNorm_width_conformance) {
  TENSOR(lp_norm_in, lp_norm_width_in_data, 1, 2, 3, 2);
  OUTPUT(lp_norm_out, 1, 2, 3, 2);
  CHAIN(lp_norm, list(lp_norm_in), list(lp_norm_out));
  RECORD_LAYER(ai_layer_norm, lp_norm, NORM, forward_norm, AI_SHAPE_W, 1.0f, true);
  check_layer(tc, lp_norm_layer, lp_norm_width_out_reference, kFloatEpsilon);
}

CASE(tc_ap_array_pad) {
  constexpr struct {
    uint16_t x, y;
  } map = {4, 3}, window = {3, 2}, pad = {2, 1}, stride = {2, 2}, pooled = {3, 2};
  constexpr uint16_t channels = 2;
  TENSOR(ap_array_in, ap_array_in_data, 1, channels, map.x, map.y);
  OUTPUT(ap_array_out, 1, channels, pooled.x, pooled.y);
  pool_func_ap_array_f32(&ap_array_in.array, map.x, map.y, channels, window.x, window.y, pad.x,
                         pad.y, stride.x, stride.y, pooled.x, pooled.y, &ap_array_out.array);
  check_near(tc, ap_array_out.storage, ap_array_out_reference, kFloatEpsilon);
}

namespace {

// Windows 3 wide and 2 high over a map of height 3, width 5 and 2 channels, in steps of 2 across
// and 1 down, with a row and two columns before it.
template <size_t Count>
void check_pool(lcut_case* tc, ai_layer_forward forward, bool count_include_pad,
                const float (&reference)[Count], Site site = CALLING_SITE) {
  static constinit uint32_t pads[] = {1, 2, 0, 0};
  TENSOR(pool_in, pool_in_data, 1, 2, 5, 3);
  output_tensor<float, 1, 2, 3, 3> pool_out;
  const nnlib::layer_chain pool_layer_chain(list(pool_in), list(pool_out));
  ai_layer_pool pool_layer = {nnlib::layer(AI_LAYER_TYPE_POOL, forward, pool_layer_chain),
                              {3, 2},
                              {2, 1},
                              {AI_DIMS_WORD(AI_SHAPE_TYPE, 4), pads},
                              count_include_pad};
  check_layer(tc, pool_layer, reference, kFloatEpsilon, site);
}

}  // namespace

CASE(tc_max_pooling_conformance) {
  check_pool(tc, forward_mp, false, pool_max_out_reference);
}

CASE(tc_avg_pooling_conformance) {
  check_pool(tc, forward_ap, false, pool_avg_out_reference);
}

CASE(tc_avg_pooling_count_pad_conformance) {
  check_pool(tc, forward_ap, true, pool_avg_count_pad_out_reference);
}

SUITE(test_lcut_layers, "test_lcut_layers test unit", ENTRY(tc_dense_conformance),
      ENTRY(tc_dense_conformance_dict8), ENTRY(tc_dense_conformance_dict4),
      ENTRY(tc_distr_dense_conformance), ENTRY(tc_slice_conformance), ENTRY(tc_topK_conformance),
      ENTRY(tc_tile_conformance), ENTRY(tc_pad_reflect_conformance),
      ENTRY(tc_pad_constant_conformance), ENTRY(tc_pad_edge_conformance),
      ENTRY(tc_upsample_z_conformance), ENTRY(tc_upsample_n_conformance),
      ENTRY(tc_upsample_b_conformance), ENTRY(tc_upsample_b_center_conformance),
      ENTRY(tc_instanceNorm_conformance), ENTRY(tc_gemm_conformance), ENTRY(tc_matmul_conformance),
      ENTRY(tc_batch_norm_conformance), ENTRY(tc_lrn_conformance), ENTRY(tc_norm_conformance),
      ENTRY(tc_norm_zero_conformance), ENTRY(tc_lpNorm_height_conformance),
      ENTRY(tc_lpNorm_width_conformance), ENTRY(tc_ap_array_pad), ENTRY(tc_max_pooling_conformance),
      ENTRY(tc_avg_pooling_conformance), ENTRY(tc_avg_pooling_count_pad_conformance))
