// SPDX-License-Identifier: MIT
// The guarded heap and the core utilities.
#include <numeric>

#include "test/fixture.hpp"
#include "test/reference/checksum.h"

CASE(tc_core_mem_manager_sanity) {
  LCUT_TRUE(tc, core_mem_alloc(0) == nullptr && core_mem_alloc(SIZE_MAX - 2) == nullptr);
  LCUT_TRUE(tc, core_mem_free(nullptr) == nullptr);
  void* block = core_mem_alloc(5);
  LCUT_TRUE(tc, block != nullptr);
  std::memset(block, 0xA5, 5);
  LCUT_TRUE(tc, core_mem_free(block) == nullptr);
}

CASE(tc_core_mem_manager_conformance) {
  static uintptr_t foreign[2] = {};
  LCUT_TRUE(tc, core_mem_free(&foreign[1]) == &foreign[1]);
  uint8_t* block = static_cast<uint8_t*>(core_mem_realloc(nullptr, 16));
  void* neighbour = core_mem_alloc(16);  // in the way, so that the block must move
  std::iota(block, block + 16, uint8_t{1});
  block = static_cast<uint8_t*>(core_mem_realloc(block, 1000));
  check_equal(tc, {1, 2, 16}, {block[0], block[1], block[15]});
  block[999] = 1;
  LCUT_TRUE(tc, core_mem_realloc(block, 0) == nullptr);  // the header has moved along
  LCUT_TRUE(tc, core_mem_free(neighbour) == nullptr);
}

CASE(tc_core_crc32_empty) {
  LCUT_INT_EQUAL(tc, 0, core_utils_compute_crc32(nullptr, 0));
  LCUT_INT_EQUAL(tc, 0, core_utils_compute_crc32("x", 1));  // no whole word
}

CASE(tc_core_crc32_conformance) {
  uint8_t ramp[2000];
  std::iota(ramp, ramp + sizeof(ramp), uint8_t{0});
  check_equal(tc, {0xD2082658, noise_checksum[0]},
              {core_utils_compute_crc32(ramp, sizeof(ramp)),
               core_utils_compute_crc32(noise, sizeof(noise))});
}

SUITE(test_lcut_core_mem_manager, "test_lcut_core_mem_manager test unit",
      ENTRY(tc_core_mem_manager_sanity), ENTRY(tc_core_mem_manager_conformance))

SUITE(test_lcut_core_utils, "test_lcut_core_utils test unit", ENTRY(tc_core_crc32_empty),
      ENTRY(tc_core_crc32_conformance))
