// SPDX-License-Identifier: MIT
// Fixed-point dense layers of five inputs and two outputs.
#include "layers_quantized/layers_dense_quarn_fixed.h"
#include "test/fixed_fixture.hpp"
#include "test/reference/dense_fixed.h"

namespace {

struct FractionBits {
  int in, weights, bias, out;
};

template <class Vector, class Weight>
struct Dense {
  constexpr Dense(const FractionBits& f, const Vector* in_data, const Weight* weight_data,
                  const Weight* bias_data)
      : in(fixed_format<Vector>(f.in), {1, 5, 1, 1}, in_data),
        weights(fixed_format<Weight>(f.weights), {5, 2, 1, 1}, weight_data),
        bias(fixed_format<Weight>(f.bias), {1, 2, 1, 1}, bias_data),
        out(fixed_format<Vector>(f.out)),
        layer_chain(nnlib::list(in), nnlib::list(out), nnlib::list(weights, bias)),
        layer(nnlib::layer(AI_LAYER_TYPE_DENSE, forward_dense_fixed, layer_chain)) {}

  nnlib::tensor in, weights, bias;
  output_tensor<Vector, 1, 2, 1, 1> out;
  nnlib::layer_chain<1, 1, 2> layer_chain;
  ai_layer layer;
};

}  // namespace

CASE(tc_dense_q7_conformance) {
  static constinit Dense<int8_t, int8_t> dense({4, 4, 3, 2}, dense_q7_in_data, dense_q7_weight_data,
                                               dense_q7_bias_data);
  check_fixed_layer<int8_t>(tc, dense.layer, dense_q7_out_reference, kQ7Tolerance);
}

CASE(tc_dense_q15_conformance) {
  static constinit Dense<int16_t, int16_t> dense({11, 12, 11, 11}, dense_q15_in_data,
                                                 dense_q15_weight_data, dense_q15_bias_data);
  check_fixed_layer<int16_t>(tc, dense.layer, dense_q15_out_reference, kQ15Tolerance);
}

CASE(tc_dense_Wq7Aq15_conformance) {
  static constinit Dense<int16_t, int8_t> dense({11, 4, 2, 11}, dense_Wq7Aq15_in_data,
                                                dense_Wq7Aq15_weight_data, dense_Wq7Aq15_bias_data);
  check_fixed_layer<int16_t>(tc, dense.layer, dense_Wq7Aq15_out_reference, kQ15Tolerance);
}

CASE(tc_dense_q7_neg_conformance) {
  static constinit Dense<int8_t, int8_t> dense({1, 1, 1, 3}, dense_q7_neg_in_data,
                                               dense_q7_neg_weight_data, dense_q7_neg_bias_data);
  ai_layers_forward_layer(&dense.layer);
  check_near_int(tc, dense.out.storage, dense_q7_neg_out_reference, 0);
}

SUITE(test_lcut_dense_fixed, "test_lcut_dense_fixed test unit", ENTRY(tc_dense_q7_conformance),
      ENTRY(tc_dense_q15_conformance), ENTRY(tc_dense_Wq7Aq15_conformance),
      ENTRY(tc_dense_q7_neg_conformance))
