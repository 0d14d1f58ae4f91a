// SPDX-License-Identifier: MIT
// Tensor lists and chains.
#include "test/fixture.hpp"

namespace {

constinit nnlib::tensor chain_in(AI_ARRAY_FORMAT_FLOAT, {1, 3, 1, 1}, nullptr);
constinit nnlib::tensor chain_out(AI_ARRAY_FORMAT_FLOAT, {1, 2, 1, 1}, nullptr);
constinit ai_tensor* const chain_entries[] = {&chain_out, &chain_in, nullptr, &chain_out};
constexpr ai_tensor_list kEmpty = {0, chain_entries, nullptr};
constexpr ai_tensor_list kFour = {4, chain_entries, nullptr};

}  // namespace

CASE(tc_tensor_chain_list_null) {
  const ai_tensor_list without_entries = {3, nullptr, nullptr};
  check_equal(tc, {0, 0}, {ai_tensor_list_count(&without_entries), ai_tensor_list_count(nullptr)});
  LCUT_TRUE(tc, ai_tensor_list_get(&without_entries, 0) == nullptr);
}

CASE(tc_tensor_chain_list_empty) {
  LCUT_INT_EQUAL(tc, 0, ai_tensor_list_count(&kEmpty));
  LCUT_TRUE(tc, ai_tensor_list_get(&kEmpty, 0) == nullptr);
}

CASE(tc_tensor_chain_list) {
  // A walk ends at the absent tensor; the one behind it is still there.
  LCUT_INT_EQUAL(tc, 2, ai_tensor_list_count(&kFour));
  for (uint32_t i = 0; i < 4; ++i) {
    LCUT_TRUE(tc, ai_tensor_list_get(&kFour, i) == chain_entries[i]);
  }
  LCUT_TRUE(tc, ai_tensor_list_get(&kFour, 4) == nullptr);
}

CASE(tc_tensor_chain_empty) {
  const ai_tensor_list lists[] = {kEmpty, kEmpty, kEmpty, kEmpty};
  const ai_tensor_chain empty_lists = {4, lists};
  const ai_tensor_chain null_lists = {4, nullptr};
  for (uint32_t list = 0; list < 4; ++list) {
    LCUT_INT_EQUAL(tc, 0, ai_tensor_list_count(ai_tensor_chain_list(&empty_lists, list)));
    LCUT_TRUE(tc, ai_tensor_chain_get(&empty_lists, list, 0) == nullptr);
    LCUT_TRUE(tc, ai_tensor_chain_get(&null_lists, list, 0) == nullptr);
  }
}

CASE(tc_tensor_chain) {
  const ai_tensor_list lists[] = {kEmpty, kFour, kFour, kFour};
  const ai_tensor_chain chain = {2, lists};  // as a network's: inputs and outputs only
  LCUT_TRUE(tc, ai_tensor_chain_list(&chain, 1) == &lists[1]);
  LCUT_TRUE(tc, ai_tensor_chain_list(&chain, 2) == nullptr);
  LCUT_TRUE(tc, ai_tensor_chain_output(&chain, 1) == &chain_in);
  LCUT_TRUE(tc, ai_tensor_chain_weights(&chain, 0) == nullptr);
}

CASE(tc_tensor_chain_getters) {
  static constinit nnlib::layer_chain chain(nnlib::list(chain_in), nnlib::list(chain_out),
                                            nnlib::list(chain_in, chain_out));
  LCUT_INT_EQUAL(tc, 4, chain.size);
  LCUT_TRUE(tc, ai_tensor_chain_input(&chain, 0) == &chain_in);
  LCUT_TRUE(tc, ai_tensor_chain_input(&chain, 1) == nullptr);
  LCUT_TRUE(tc, ai_tensor_chain_output(&chain, 0) == &chain_out);
  LCUT_TRUE(tc, ai_tensor_chain_weights(&chain, 0) == &chain_in);
  LCUT_TRUE(tc, ai_tensor_chain_weights(&chain, 1) == &chain_out);
  LCUT_TRUE(tc, ai_tensor_chain_scratch(&chain, 0) == nullptr);
}

SUITE(test_lcut_tensor_chain, "test_lcut_tensor_chain test unit", ENTRY(tc_tensor_chain_list_null),
      ENTRY(tc_tensor_chain_list_empty), ENTRY(tc_tensor_chain_list), ENTRY(tc_tensor_chain_empty),
      ENTRY(tc_tensor_chain), ENTRY(tc_tensor_chain_getters))
