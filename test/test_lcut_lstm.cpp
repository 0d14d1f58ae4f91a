// SPDX-License-Identifier: MIT
// LSTM layers: one weight set with peepholes and biases, F = 5, U = 2.
#include "core/ai_math_helpers.h"
#include "layers/layers_dense_generic_float.h"
#include "layers/layers_rnn_generic_float.h"
#include "test/fixture.hpp"
#include "test/reference/lstm.h"

namespace {

constinit nnlib::tensor lstm_kernel({5, 8, 1, 1}, lstm_kernel_data);
constinit nnlib::tensor lstm_recurrent({2, 8, 1, 1}, lstm_recurrent_data);
constinit nnlib::tensor lstm_peephole({1, 6, 1, 1}, lstm_peephole_data);
constinit nnlib::tensor lstm_bias({1, 8, 1, 1}, lstm_bias_data);

// Runs over the first steps of the input.
template <uint32_t Steps>
void run_lstm(ai_tensor& lstm_out, bool go_backwards,
              ai_activation_fn out_activation = ai_math_tanh) {
  static constinit nnlib::tensor lstm_in({1, 5, 1, Steps}, lstm_in_data);
  const nnlib::layer_chain lstm_layer_chain(
      nnlib::list(lstm_in), nnlib::list(lstm_out),
      nnlib::list(lstm_kernel, lstm_recurrent, lstm_peephole, lstm_bias));
  const ai_layer base = nnlib::layer(AI_LAYER_TYPE_LSTM, forward_lstm, lstm_layer_chain);
  ai_layer_lstm lstm_layer = {
      base, 2, ai_math_tanh, ai_math_hard_sigmoid, out_activation, go_backwards, false};
  ai_layers_forward_layer(&lstm_layer.base);
}

template <uint32_t Steps, size_t Count>
void check_lstm(lcut_case* tc, bool go_backwards, const float (&reference)[Count],
                Site site = CALLING_SITE) {
  output_tensor<float, 1, 2, 1, Count / 2> lstm_out;
  run_lstm<Steps>(lstm_out, go_backwards);
  check_near(tc, lstm_out.storage, reference, kRecurrentTolerance, 1.0f, site);
}

}  // namespace

CASE(tc_lstm_conformance_ts_1) {
  check_lstm<1>(tc, false, lstm_ts_1_out_reference);
}

CASE(tc_lstm_conformance_ts_3) {
  check_lstm<3>(tc, false, lstm_ts_3_out_reference);
}

CASE(tc_lstm_conformance_ts_3_rs) {
  check_lstm<3>(tc, false, lstm_ts_3_rs_out_reference);
}

CASE(tc_lstm_conformance_go_back) {
  check_lstm<3>(tc, true, lstm_ts_3_back_out_reference);
}

CASE(tc_lstm_conformance_go_back_rs) {
  check_lstm<3>(tc, true, lstm_ts_3_back_rs_out_reference);
}

CASE(tc_lstm_dense_conformance) {
  static constinit nnlib::tensor lstm_dense_weights({2, 4, 1, 1}, lstm_dense_weight_data);
  static constinit nnlib::tensor lstm_dense_bias({1, 4, 1, 1}, lstm_dense_bias_data);
  static constinit output_tensor<float, 1, 2, 1, 1> lstm_out;
  static constinit output_tensor<float, 1, 4, 1, 1> lstm_dense_out;
  static constinit nnlib::layer_chain lstm_dense_layer_chain(
      nnlib::list(lstm_out), nnlib::list(lstm_dense_out),
      nnlib::list(lstm_dense_weights, lstm_dense_bias));
  static constinit ai_layer lstm_dense_layer =
      nnlib::layer(AI_LAYER_TYPE_DENSE, forward_dense, lstm_dense_layer_chain);
  run_lstm<3>(lstm_out, false, ai_math_sigmoid);
  check_layer(tc, lstm_dense_layer, lstm_dense_out_reference, kRecurrentTolerance);
}

SUITE(test_lcut_lstm, "test_lcut_lstm test unit",
      NAMED("tc_lstm_timesteps 1", tc_lstm_conformance_ts_1),
      NAMED("tc_lstm_timesteps 3", tc_lstm_conformance_ts_3),
      NAMED("tc_lstm_timesteps 3 Return Sequences", tc_lstm_conformance_ts_3_rs),
      NAMED("tc_lstm_timesteps 3 Go Backwards", tc_lstm_conformance_go_back),
      NAMED("tc_lstm_timesteps 3 Go Backwards - Ret Seq", tc_lstm_conformance_go_back_rs),
      NAMED("tc_lstm_dense", tc_lstm_dense_conformance))
