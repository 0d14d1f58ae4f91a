// SPDX-License-Identifier: MIT
// Integer addition layers.
#include "layers_quantized/layers_quarn_integer.h"
#include "test/integer_fixture.hpp"
#include "test/reference/eltwise_integer.h"

namespace {

// A tensor of a stem's data with the generated quantization of its role.
#define QUANTIZED(stem, role, format, dims, elements)                                     \
  static constinit nnlib::intq stem##_##role##_intq(stem##_pscale_##role##_##format,      \
                                                    stem##_pzeropoint_##role##_##format); \
  static constinit nnlib::tensor stem##_##role(dims, elements, 0, &stem##_##role##_intq)

// The sum of the stem's inputs, of the given dimensions, into an output like the first.
#define CHECK_SUM(stem, format, in_dims, in2_dims)                                           \
  static format##_t stem##_out_data[sizeof(stem##_in_data_##format)];                        \
  QUANTIZED(stem, in, format, in_dims, stem##_in_data_##format);                             \
  QUANTIZED(stem, in2, format, in2_dims, stem##_in2_data_##format);                          \
  QUANTIZED(stem, out, format, in_dims, stem##_out_data);                                    \
  static constinit nnlib::layer_chain stem##_layer_chain(nnlib::list(stem##_in, stem##_in2), \
                                                         nnlib::list(stem##_out));           \
  static constinit ai_layer stem##_layer =                                                   \
      nnlib::layer(AI_LAYER_TYPE_ELTWISE, forward_add_integer, stem##_layer_chain);          \
  check_integer_layer(tc, stem##_layer, stem##_out_reference_##format, 0)

constexpr nnlib::dims kScalar = {1, 1, 1, 1};

CASE(tc_sum_tensor_scalar_uint8) {
  constexpr nnlib::dims dims = {1, 5, 3, 2};
  CHECK_SUM(sum_tensor_scalar, uint8, dims, kScalar);
}
CASE(tc_sum_opt_uint8) {
  constexpr nnlib::dims dims = {1, 4, 2, 3};
  CHECK_SUM(sum_opt, uint8, dims, dims);
}
CASE(tc_sum_tensor_scalar_int8) {
  constexpr nnlib::dims dims = {1, 4, 2, 3};
  CHECK_SUM(sum_tensor_scalar, int8, dims, kScalar);
}
CASE(tc_sum_opt_int8) {
  constexpr nnlib::dims dims = {1, 7, 3, 2};
  CHECK_SUM(sum_opt, int8, dims, dims);
}

}  // namespace

SUITE(test_lcut_eltwise_integer, "test_lcut_eltwise_integer add layer test unit",
      NAMED("tc_eltwise_sum_broadcast_scalar_uint8_conformance", tc_sum_tensor_scalar_uint8),
      NAMED("tc_eltwise_sum_opt_uint8_conformance", tc_sum_opt_uint8),
      NAMED("tc_eltwise_sum_broadcast_scalar_int8_conformance", tc_sum_tensor_scalar_int8),
      NAMED("tc_eltwise_sum_opt_int8_conformance", tc_sum_opt_int8))
