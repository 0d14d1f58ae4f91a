// SPDX-License-Identifier: MIT
// The requantization pair of a factor.
#include "kernels/ko_requantize.h"
#include "test/fixture.hpp"

namespace {

// The multiplier of 1 would be 2^31.
CASE(tc_align_factor_saturate) {
  uint16_t shift = 0xFFFF;
  const int32_t multiplier = align_factor(1.0f, &shift);
  check_equal(tc, {0x7FFFFFFF, 0}, {multiplier, shift});
}

}  // namespace

SUITE(test_lcut_conv_lowlevel, "test_lcut_conv low-level test unit",
      ENTRY(tc_align_factor_saturate))
