// SPDX-License-Identifier: MIT
// GRU layers: one weight set, F = 5, U = 2, run with different options.
#include "core/ai_math_helpers.h"
#include "layers/layers_rnn_generic_float.h"
#include "test/fixture.hpp"
#include "test/reference/gru.h"

namespace {

constinit nnlib::tensor gru_kernel({5, 6, 1, 1}, gru_kernel_data);
constinit nnlib::tensor gru_recurrent({2, 6, 1, 1}, gru_recurrent_data);
constinit nnlib::tensor gru_bias({1, 6, 1, 1}, gru_bias_data);

struct GruOptions {
  ai_activation_fn activation = ai_math_tanh;
  ai_activation_fn recurrent_activation = ai_math_hard_sigmoid;
  bool reset_after = false;
  bool go_backwards = false;
  bool reverse = false;
};

// Runs over the first steps of the input, into as many steps as the reference has.
template <uint32_t Steps, size_t Count>
void check_gru(lcut_case* tc, const GruOptions& options, const float (&reference)[Count],
               Site site = CALLING_SITE) {
  static constinit nnlib::tensor gru_in({1, 5, 1, Steps}, gru_in_data);
  output_tensor<float, 1, 2, 1, Count / 2> gru_out;
  const nnlib::layer_chain gru_layer_chain(nnlib::list(gru_in), nnlib::list(gru_out),
                                           nnlib::list(gru_kernel, gru_recurrent, gru_bias));
  const ai_layer base = nnlib::layer(AI_LAYER_TYPE_GRU, forward_gru, gru_layer_chain);
  ai_layer_gru gru_layer = {base,
                            2,
                            options.activation,
                            options.recurrent_activation,
                            options.reset_after,
                            options.go_backwards,
                            options.reverse};
  check_layer(tc, gru_layer, reference, kRecurrentTolerance, site);
}

}  // namespace

CASE(tc_gru_conformance_ts_1) {
  check_gru<1>(tc, {}, gru_ts_1_out_reference);
}

CASE(tc_gru_conformance_ts_3) {
  check_gru<3>(tc, {}, gru_ts_3_out_reference);
}

CASE(tc_gru_conformance_ts_3_go_back) {
  check_gru<3>(tc, {.go_backwards = true}, gru_ts_3_back_out_reference);
}

CASE(tc_gru_conformance_ts_3_rs) {
  check_gru<3>(tc, {}, gru_ts_3_rs_out_reference);
}

CASE(tc_gru_conformance_ts_3_rs_back) {
  check_gru<3>(tc, {.go_backwards = true}, gru_ts_3_rs_back_out_reference);
}

CASE(tc_gru_conformance_ts_3_rs_back_reverse) {
  check_gru<3>(tc, {.go_backwards = true, .reverse = true}, gru_ts_3_rs_back_reverse_out_reference);
}

CASE(tc_gru_linear_activation) {
  check_gru<1>(tc, {.activation = nullptr}, gru_linear_activation_out_reference);
}

CASE(tc_gru_linear_recurrent) {
  check_gru<1>(tc, {.recurrent_activation = nullptr}, gru_linear_recurrent_out_reference);
}

CASE(tc_gru_reset_after) {
  check_gru<3>(tc, {.reset_after = true}, gru_reset_after_out_reference);
}

SUITE(test_lcut_gru, "test_lcut_gru test unit", NAMED("tc_gru 1 step", tc_gru_conformance_ts_1),
      NAMED("tc_gru 3 steps", tc_gru_conformance_ts_3),
      NAMED("tc_gru 3 steps, go backwards", tc_gru_conformance_ts_3_go_back),
      NAMED("tc_gru 3 steps, return sequences", tc_gru_conformance_ts_3_rs),
      NAMED("tc_gru 3 steps, return sequences, go back", tc_gru_conformance_ts_3_rs_back),
      NAMED("tc_gru 3 steps, return sequences, go back and reverse",
            tc_gru_conformance_ts_3_rs_back_reverse),
      NAMED("tc_gru 1 step, linear activations", tc_gru_linear_activation),
      NAMED("tc_gru 1 step, linear recurrent", tc_gru_linear_recurrent),
      NAMED("tc_gru reset_after", tc_gru_reset_after))
