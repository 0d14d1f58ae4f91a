// SPDX-License-Identifier: MIT
// Whole networks through the platform API.
#include "layers/layers_generic_float.h"
#include "layers/layers_nl_generic_float.h"
#include "layers/layers_norm_generic_float.h"
#include "test/fixture.hpp"
#include "test/reference/network.h"

// Fixtures, named after a stem; layers stand last one first.
// A tensor between two layers, or an input or output of the network, bound to the caller's memory.
#define BLANK(name, ...) OUTPUT(name, __VA_ARGS__)
#define DENSE(stem, inputs, outputs, next, in, out)                   \
  TENSOR(stem##_weights, stem##_weight_data, inputs, outputs, 1, 1);  \
  TENSOR(stem##_bias, stem##_bias_data, 1, outputs, 1, 1);            \
  LINKED_LAYER(stem, DENSE, forward_dense, next, list(in), list(out), \
               list(stem##_weights, stem##_bias))
#define RELU(next, in, out)                                                  \
  static constinit nnlib::layer_chain relu_layer_chain(list(in), list(out)); \
  static constinit ai_layer_nl relu_layer = {                                \
      nnlib::layer(AI_LAYER_TYPE_NL, forward_relu, relu_layer_chain, next), nullptr}

using nnlib::list;

namespace {

ai_buffer buffer_of(const ai_tensor* tensor, const float* data, uint16_t batches) {
  return {AI_BUFFER_FORMAT_FLOAT,
          batches,
          static_cast<uint16_t>(ai_tensor_dim(tensor, AI_SHAPE_H)),
          static_cast<uint16_t>(ai_tensor_dim(tensor, AI_SHAPE_W)),
          ai_tensor_dim(tensor, AI_SHAPE_C),
          const_cast<float*>(data),  // inputs are only read
          nullptr};
}

// The data of one of the network's inputs.
struct Input {
  const float* data;
  uint16_t batches = 1;
};

// Creates, initialises and runs a network of one output.
template <size_t Inputs, size_t Count>
void check_network(lcut_case* tc, ai_network& net, const Input (&inputs)[Inputs],
                   const float (&reference)[Count], uint16_t batches = 1,
                   Site site = CALLING_SITE) {
  rubbish_storage<float, Count> results;
  const ai_buffer output = buffer_of(ai_tensor_chain_output(&net.io, 0), results.storage, batches);
  ai_buffer input[Inputs];
  for (uint32_t i = 0; i < Inputs; ++i) {
    input[i] = buffer_of(ai_tensor_chain_input(&net.io, i), inputs[i].data, inputs[i].batches);
  }
  const ai_network_params params = {};
  ai_handle handle = nullptr;
  ai_platform_network_create(&handle, nullptr, &net, AI_INTERFACE_API_VERSION);
  ai_platform_network_init(handle, &params);
  check_equal(
      tc, {batches, 0, static_cast<int64_t>(Count)},
      {ai_platform_network_process(handle, input, &output), ai_platform_network_get_error(handle),
       output.height * output.width * output.channels * batches},
      site);
  check_near(tc, results.storage, reference, kFloatEpsilon, 1.0f, site);
}

// Two inputs, joined for a dense layer; their and the output's elements are copied or bound.
template <uint32_t CopyFlag, size_t Count>
void check_multi_inputs(lcut_case* tc, const Input (&inputs)[2], const float (&reference)[Count],
                        uint16_t batches, Site site = CALLING_SITE) {
  constexpr ai_array_format format = AI_ARRAY_FORMAT_FLOAT | CopyFlag;
  static constinit output_tensor<float, 1, 3, 1, 1> multi_in_0(format);
  static constinit output_tensor<float, 1, 2, 1, 1> multi_in_1(format);
  static constinit output_tensor<float, 1, 2, 1, 1> multi_out(format);
  BLANK(joined, 1, 5, 1, 1);
  DENSE(multi, 5, 2, nullptr, joined, multi_out);
  static constinit nnlib::layer_chain concat_layer_chain(list(multi_in_0, multi_in_1),
                                                         list(joined));
  static constinit ai_layer_concat concat_layer = {
      nnlib::layer(AI_LAYER_TYPE_CONCAT, forward_concat, concat_layer_chain, &multi_layer),
      AI_SHAPE_C};
  static constinit nnlib::network net(list(multi_in_0, multi_in_1), list(multi_out),
                                      concat_layer.base);
  check_network(tc, net, inputs, reference, batches, site);
  const bool copied = CopyFlag != 0;
  check_equal(
      tc, {copied, copied},
      {multi_in_1.array.data == multi_in_1.storage, multi_out.array.data == multi_out.storage},
      site);
}

}  // namespace

CASE(tc_net_network_conformance) {
  BLANK(net_in, 1, 3, 1, 1);
  BLANK(hidden, 1, 4, 1, 1);
  BLANK(rectified, 1, 4, 1, 1);
  BLANK(net_out, 1, 2, 1, 1);
  DENSE(net_last, 4, 2, nullptr, rectified, net_out);
  RELU(&net_last_layer, hidden, rectified);
  DENSE(net_hidden, 3, 4, &relu_layer.base, net_in, hidden);
  static constinit nnlib::network net(list(net_in), list(net_out), net_hidden_layer);
  check_network(tc, net, {{net_in_data}}, net_out_reference);
}

CASE(tc_net_multi_inputs_network_conformance_copy) {
  check_multi_inputs<nnlib::copied>(tc, {{multi_in_0_data}, {multi_in_1_data}}, multi_out_reference,
                                    1);
}

CASE(tc_net_multi_inputs_network_conformance_no_copy) {
  check_multi_inputs<0>(tc, {{multi_in_0_data}, {multi_in_1_data}}, multi_out_reference, 1);
}

CASE(tc_net_multi_inputs_multi_batches_network_conformance_copy) {
  check_multi_inputs<nnlib::copied>(tc, {{multi_in_0_data, 3}, {multi_in_1_data, 2}},
                                    multi_3_2_out_reference, 3);
}

CASE(tc_net_multi_inputs_multi_batches_network_conformance_no_copy) {
  check_multi_inputs<0>(tc, {{multi_in_0_data, 2}, {multi_in_1_data, 3}}, multi_2_3_out_reference,
                        3);
}

CASE(tc_net_fully_connected_conformance) {
  BLANK(fully_connected_in, 1, 3, 2, 2);
  BLANK(fully_connected_out, 1, 4, 2, 2);
  DENSE(fully_connected, 3, 4, nullptr, fully_connected_in, fully_connected_out);
  static constinit nnlib::network net(list(fully_connected_in), list(fully_connected_out),
                                      fully_connected_layer);
  check_network(tc, net, {{fully_connected_in_data}}, fully_connected_out_reference);
}

CASE(tc_net_batch_norm_conformance) {
  BLANK(net_bn_in, 1, 2, 3, 2);
  BLANK(net_bn_out, 1, 2, 3, 2);
  TENSOR(net_bn_weights, net_bn_weight_data, 1, 2, 1, 1);
  TENSOR(net_bn_bias, net_bn_bias_data, 1, 2, 1, 1);
  LAYER(net_bn, BN, forward_bn, list(net_bn_in), list(net_bn_out),
        list(net_bn_weights, net_bn_bias));
  static constinit nnlib::network net(list(net_bn_in), list(net_bn_out), net_bn_layer);
  check_network(tc, net, {{net_bn_in_data}}, net_bn_out_reference);
}

CASE(tc_net_relu_conformance) {
  BLANK(net_relu_in, 1, 3, 1, 1);
  BLANK(scores, 1, 3, 1, 1);
  BLANK(net_relu_out, 1, 3, 1, 1);
  RELU(nullptr, scores, net_relu_out);
  DENSE(net_relu, 3, 3, &relu_layer.base, net_relu_in, scores);
  static constinit nnlib::network net(list(net_relu_in), list(net_relu_out), net_relu_layer);
  check_network(tc, net, {{net_relu_in_data}}, {16.0f, 23.0f, 0.0f});
}

CASE(tc_net_soft_max_conformance) {
  BLANK(net_sm_in, 1, 3, 2, 1);
  BLANK(scores, 1, 4, 2, 1);
  BLANK(net_sm_out, 1, 4, 2, 1);
  LAYER(softmax, SM, forward_sm, list(scores), list(net_sm_out));
  DENSE(net_sm, 3, 4, &softmax_layer, net_sm_in, scores);
  static constinit nnlib::network net(list(net_sm_in), list(net_sm_out), net_sm_layer);
  check_network(tc, net, {{net_sm_in_data}}, net_sm_out_reference);
}

SUITE(test_lcut_network, "test_lcut_network test unit", ENTRY(tc_net_network_conformance),
      ENTRY(tc_net_multi_inputs_network_conformance_copy),
      ENTRY(tc_net_multi_inputs_network_conformance_no_copy),
      ENTRY(tc_net_multi_inputs_multi_batches_network_conformance_copy),
      ENTRY(tc_net_multi_inputs_multi_batches_network_conformance_no_copy),
      ENTRY(tc_net_fully_connected_conformance), ENTRY(tc_net_batch_norm_conformance),
      ENTRY(tc_net_relu_conformance), ENTRY(tc_net_soft_max_conformance))
