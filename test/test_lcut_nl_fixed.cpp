// SPDX-License-Identifier: MIT
// Fixed-point nonlinearities, compared with the real functions.
#include "layers_quantized/layers_nl_quarn_fixed.h"
#include "test/fixed_fixture.hpp"
#include "test/reference/nl_fixed.h"

namespace {

// A nonlinearity of a map of three by two pixels; its input and output have the given fractional
// bits.
template <class T, size_t Count>
struct Nonlinearity {
  constexpr Nonlinearity(ai_layer_forward forward, const T (&in_data)[Count], int in_fraction_bits,
                         int out_fraction_bits, const ai_array* params = nullptr)
      : in(fixed_format<T>(in_fraction_bits), {1, Count / 6, 3, 2}, in_data),
        out(fixed_format<T>(out_fraction_bits)),
        layer_chain(nnlib::list(in), nnlib::list(out)),
        layer{nnlib::layer(AI_LAYER_TYPE_NL, forward, layer_chain), params} {}

  nnlib::tensor in;
  output_tensor<T, 1, Count / 6, 3, 2> out;
  nnlib::layer_chain<1, 1> layer_chain;
  ai_layer_nl layer;
};

}  // namespace

CASE(tc_relu_q7_conformance) {
  static constinit Nonlinearity relu(forward_relu_fixed, relu_q7_in_data, 5, 5);
  check_fixed_layer<int8_t>(tc, relu.layer.base, relu_q7_out_reference, kQ7Tolerance);
}

CASE(tc_relu6_q15_conformance) {
  static constinit nnlib::tensor relu6_params({1, 1, 1, 1}, relu6_q15_params);
  static constinit Nonlinearity relu6(forward_relu_max_fixed, relu6_q15_in_data, 11, 11,
                                      &relu6_params.array);
  check_fixed_layer<int16_t>(tc, relu6.layer.base, relu6_q15_out_reference, kQ15Tolerance);
}

CASE(tc_sigmoid_q15_conformance) {
  static constinit Nonlinearity sigmoid(forward_sigmoid_fixed, sigmoid_q15_in_data, 11, 15);
  check_fixed_layer<int16_t>(tc, sigmoid.layer.base, sigmoid_q15_out_reference, kQ7Tolerance);
}

CASE(tc_tanh_q7_conformance) {
  static constinit Nonlinearity tanh(forward_tanh_fixed, tanh_q7_in_data, 4, 7);
  check_fixed_layer<int8_t>(tc, tanh.layer.base, tanh_q7_out_reference, kQ7Tolerance);
}

SUITE(test_lcut_nl_fixed, "test_lcut_nl_fixed test unit", ENTRY(tc_relu_q7_conformance),
      ENTRY(tc_relu6_q15_conformance), ENTRY(tc_sigmoid_q15_conformance),
      ENTRY(tc_tanh_q7_conformance))
