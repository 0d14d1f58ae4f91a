// SPDX-License-Identifier: MIT
#include "test/suites.h"

// In run order. A suite is one line here and one source file.
#define SUITES(X)                 \
  X(test_lcut_conv)               \
  X(test_lcut_dlists)             \
  X(test_lcut_eltwise)            \
  X(test_lcut_formats)            \
  X(test_lcut_gru)                \
  X(test_lcut_layers)             \
  X(test_lcut_layers_ext)         \
  X(test_lcut_lstm)               \
  X(test_lcut_network)            \
  X(test_lcut_network_api)        \
  X(test_lcut_nl)                 \
  X(test_lcut_platform_interface) \
  X(test_lcut_tensor_chain)       \
  X(test_lcut_core_convert)       \
  X(test_lcut_core_mem_manager)   \
  X(test_lcut_core_utils)         \
  X(test_lcut_core_ring_buffer)   \
  X(test_lcut_conv_fixed)         \
  X(test_lcut_dense_fixed)        \
  X(test_lcut_nl_fixed)           \
  X(test_lcut_pool_fixed)         \
  X(test_lcut_sm_fixed)           \
  X(test_lcut_conv_integer)       \
  X(test_lcut_conv_lowlevel)      \
  X(test_lcut_pool_integer)       \
  X(test_lcut_nl_integer)         \
  X(test_lcut_eltwise_integer)

#define DECLARE(suite) void suite(lcut_test* test);
#define ENTRY(suite) suite,

extern "C" {
SUITES(DECLARE)
}

const suite_registration suite_registrations[] = {SUITES(ENTRY)};
const size_t suite_registration_count = sizeof(suite_registrations) / sizeof(*suite_registrations);
