// SPDX-License-Identifier: MIT
// Integer nonlinearities.
#include "layers_quantized/layers_nl_quarn_integer.h"
#include "test/integer_fixture.hpp"
#include "test/reference/nl_integer.h"

namespace {

// A nonlinearity over the data of a stem, a map of four channels and three by two pixels.
#define CHECK_NL(stem, format, forward)                                               \
  static constinit nnlib::tensor stem##_in({1, 4, 3, 2}, stem##_in_data_##format);    \
  static constinit output_tensor<format##_t, 1, 4, 3, 2> stem##_out;                  \
  static constinit nnlib::tensor stem##_nl({1, sizeof(stem##_params_##format), 1, 1}, \
                                           stem##_params_##format);                   \
  static constinit nnlib::layer_chain stem##_layer_chain(nnlib::list(stem##_in),      \
                                                         nnlib::list(stem##_out));    \
  static constinit ai_layer_nl stem##_layer = {                                       \
      nnlib::layer(AI_LAYER_TYPE_NL, forward, stem##_layer_chain), &stem##_nl.array}; \
  check_exact_layer(tc, stem##_layer, stem##_out_reference_##format)

CASE(tc_tanh_conformance_uint8) {
  CHECK_NL(tanh, uint8, forward_nl_integer);
}
CASE(tc_relu6_conformance_uint8) {
  CHECK_NL(relu6, uint8, forward_clip_integer);
}
CASE(tc_sigmoid_conformance_uint8) {
  CHECK_NL(sigmoid, uint8, forward_nl_integer);
}
CASE(tc_tanh_conformance_int8) {
  CHECK_NL(tanh, int8, forward_nl_integer);
}
CASE(tc_relu_conformance_uint8) {
  CHECK_NL(relu, uint8, forward_relu_integer);
}
CASE(tc_clip_conformance_uint8) {
  CHECK_NL(clip, uint8, forward_clip_integer);
}

}  // namespace

SUITE(test_lcut_nl_integer, "test_lcut_nl_integer test unit", ENTRY(tc_tanh_conformance_uint8),
      ENTRY(tc_relu6_conformance_uint8), ENTRY(tc_sigmoid_conformance_uint8),
      ENTRY(tc_tanh_conformance_int8), ENTRY(tc_relu_conformance_uint8),
      ENTRY(tc_clip_conformance_uint8))
