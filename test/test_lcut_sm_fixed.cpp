// SPDX-License-Identifier: MIT
// Fixed-point softmax of a map of five channels, width 2 and height 3.
#include "layers_quantized/layers_sm_quarn_fixed.h"
#include "test/fixed_fixture.hpp"
#include "test/reference/sm_fixed.h"

namespace {

template <class T>
struct Softmax {
  constexpr Softmax(const T (&in_data)[30], int fraction_bits)
      : in(fixed_format<T>(fraction_bits), {1, 5, 2, 3}, in_data),
        out(fixed_format<T>(8 * sizeof(T) - 1)),
        layer_chain(nnlib::list(in), nnlib::list(out)),
        layer(nnlib::layer(AI_LAYER_TYPE_SM, forward_sm_fixed, layer_chain)) {}

  nnlib::tensor in;
  output_tensor<T, 1, 5, 2, 3> out;
  nnlib::layer_chain<1, 1> layer_chain;
  ai_layer layer;
};

}  // namespace

CASE(tc_soft_max_q7_conformance) {
  static constinit Softmax soft_max(soft_max_q7_in_data, 2);
  check_fixed_layer<int8_t>(tc, soft_max.layer, soft_max_q7_out_reference, kQ7Tolerance);
}

CASE(tc_soft_max_q15_conformance) {
  static constinit Softmax soft_max(soft_max_q15_in_data, 11);
  check_fixed_layer<int16_t>(tc, soft_max.layer, soft_max_q15_out_reference, kQ15Tolerance);
}

SUITE(test_lcut_sm_fixed, "test_lcut_sm_fixed test unit", ENTRY(tc_soft_max_q7_conformance),
      ENTRY(tc_soft_max_q15_conformance))
