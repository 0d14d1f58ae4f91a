// SPDX-License-Identifier: MIT
// The platform API but for running networks: type signatures, errors, the report.
#include <iterator>

#include "test/fixture.hpp"
#include "test/reference/network.h"

namespace {

constinit ai_network api_net = {};
constinit ai_layer idle_layer = {};

// One batch of height x width x channels elements at data.
void check_described(lcut_case* tc, const ai_buffer& buffer, uint32_t format, int32_t height,
                     int32_t width, int32_t channels, const void* data, Site site = CALLING_SITE) {
  check_equal(tc, {format, 1, height, width, channels, true},
              {buffer.format, buffer.n_batches, buffer.height, buffer.width, buffer.channels,
               buffer.data == data},
              site);
}

}  // namespace

CASE(tc_types_signatures) {
  const uint32_t signatures[] = {0x84048403, 0x84048402, 0x84048503};
  check_equal(tc, {true, false, false, false},
              {ai_check_custom_types(&signatures[0]), ai_check_custom_types(&signatures[1]),
               ai_check_custom_types(&signatures[2]), ai_check_custom_types(nullptr)});
  uint32_t valid = 0;
  for (uint32_t type = 9990; type < 10040; ++type) {
    valid += ai_layer_type_is_valid(type) ? 1u : 0u;
  }
  LCUT_INT_EQUAL(tc, 26, valid);
  for (uint32_t i = 0; i < std::size(layer_type_names); ++i) {
    LCUT_STR_EQUAL(tc, layer_type_names[i], ai_layer_type_name(10000 + i));
    LCUT_STR_EQUAL(tc, "", ai_layer_type_name(0x10000 + 10000 + i));
  }
}

CASE(tc_empty_net_not_die) {
  api_net.signature = 0xDEADCAFE;
  api_net.current_layer = &idle_layer;
  ai_layers_forward_all(&api_net);
  LCUT_INT_EQUAL(tc, 0xDEADCAFE, api_net.signature);
  LCUT_TRUE(tc, api_net.current_layer == &idle_layer);
}

CASE(tc_api_no_error) {
  api_net.magic = 0xA1C00100;
  ai_platform_network_set_error(&api_net, 0, 0);
  LCUT_INT_EQUAL(tc, 0, ai_error_type(ai_platform_network_get_error(&api_net)));
  LCUT_TRUE(tc, ai_platform_network_destroy(&api_net) == nullptr);
  check_equal(tc, {0x104, 0x101, 0x301},
              {ai_platform_runtime_get_version(), ai_platform_api_get_version(),
               ai_platform_interface_api_get_version()});
}

CASE(tc_api_get_set_error) {
  api_net.magic = 0xA1C00100;
  LCUT_TRUE(tc, ai_platform_network_set_error(&api_net, 18, 23));
  LCUT_FALSE(tc, ai_platform_network_set_error(&api_net, 1, 0));
  const ai_error error = ai_platform_network_get_error(&api_net);
  check_equal(tc, {18, 0x1700}, {error & 255u, error & ~255u});
  LCUT_INT_EQUAL(tc, 0, ai_platform_network_get_error(&api_net));
  LCUT_INT_EQUAL(tc, 0x1010, ai_platform_network_get_error(nullptr));
}

CASE(tc_api_get_network_info) {
  static constinit float in_data[3][24] = {};
  static constinit uint8_t out_data[2][6] = {};
  static constinit nnlib::tensor in_0({1, 4, 3, 2}, in_data[0]);
  static constinit nnlib::tensor in_1({1, 4, 3, 2}, in_data[1], nnlib::copied);
  static constinit nnlib::tensor in_2({1, 4, 3, 2}, in_data[2]);
  static constinit nnlib::tensor out_0({1, 3, 2, 1}, out_data[0]);
  static constinit nnlib::tensor out_1({1, 3, 2, 1}, out_data[1]);
  static constinit nnlib::layer_chain chain(nnlib::list(in_0), nnlib::list(out_0));
  static constinit ai_layer last = nnlib::layer(AI_LAYER_TYPE_NL, nullptr, chain, &last);
  static constinit ai_layer first = nnlib::layer(AI_LAYER_TYPE_NL, nullptr, chain, &last);
  static constinit nnlib::network net(nnlib::list(in_0, in_1, in_2), nnlib::list(out_0, out_1),
                                      first);
  ai_platform_context_release(&net);
  net.signature = 0x12345678;
  net.params.channels = 11;
  net.activations.channels = 13;
  ai_network_report report = {};
  LCUT_TRUE(tc, ai_platform_api_get_network_report(&net, &report));
  check_equal(tc, {2, 0x12345678, 11, 13, 3, 2},
              {report.n_nodes, report.signature, report.params.channels,
               report.activations.channels, report.n_inputs, report.n_outputs});
  LCUT_INT_EQUAL(tc, 0, std::strncmp("(rev-", report.runtime_revision, 5));
  const uint32_t copied = AI_BUFFER_FORMAT_FLOAT | AI_FORMAT_FLAG_COPY;
  check_described(tc, report.inputs[0], AI_BUFFER_FORMAT_FLOAT, 2, 3, 4, in_data[0]);
  check_described(tc, report.inputs[1], copied, 2, 3, 4, in_data[1]);
  check_described(tc, report.inputs[2], AI_BUFFER_FORMAT_FLOAT, 2, 3, 4, in_data[2]);
  check_described(tc, report.outputs[0], AI_BUFFER_FORMAT_U8, 1, 2, 3, out_data[0]);
  check_described(tc, report.outputs[1], AI_BUFFER_FORMAT_U8, 1, 2, 3, out_data[1]);
}

SUITE(test_lcut_network_api, "test_lcut_network_api test unit", ENTRY(tc_types_signatures),
      ENTRY(tc_empty_net_not_die), ENTRY(tc_api_no_error), ENTRY(tc_api_get_set_error),
      ENTRY(tc_api_get_network_info))
