// SPDX-License-Identifier: MIT
// The scratch sizes as constants against those that the functions give for a layer.
#include <gtest/gtest.h>

#include <algorithm>

#include "test/check/sample_networks.hpp"

namespace {

constexpr uint32_t kSizes[] = {1, 2, 3, 4, 7};

// Calls visit(channels, filters, kernel width, kernel height).
template <class Visit>
void each_kernel(Visit visit) {
  for (const uint32_t channels : kSizes) {
    for (const uint32_t filters : kSizes) {
      for (const uint32_t width : kSizes) {
        visit(channels, filters, width, 8 - width);
      }
    }
  }
}

TEST(ScratchSize, OfIntegerConvolutions) {
  IntegerNetwork n;
  each_kernel([&n](uint32_t c, uint32_t filters, uint32_t w, uint32_t h) {
    for (const uint32_t scales : {1u, filters}) {
      n.filter_q.flags_size = scales << 16;
      reshape(n.codes, {1, c, 9, 8});
      reshape(n.map, {1, filters, 5, 4});
      reshape(n.conv_weights, {c, w, h, filters});
      n.conv.groups = 1;
      EXPECT_EQ(ai_conv2d_integer_scratch_size(&n.conv),
                AI_CONV2D_INTEGER_SCRATCH_BYTES(c, filters, w, h, scales));
      if (c == filters && c > 1) {
        n.conv.groups = c;
        reshape(n.conv_weights, {c, w, h, 1});
        EXPECT_EQ(ai_conv2d_integer_scratch_size(&n.conv),
                  AI_DEPTHWISE_INTEGER_SCRATCH_BYTES(c, w, h, scales));
      }
    }
  });
}

TEST(ScratchSize, OfFixedPointAndFusedConvolutions) {
  FixedNetwork n;
  each_kernel([&n](uint32_t c, uint32_t filters, uint32_t w, uint32_t h) {
    reshape(n.x, {1, c, 9, 8});
    reshape(n.conv_weights, {c, w, h, filters});
    reshape(n.pooled, {1, filters, 2, 2});
    EXPECT_EQ(ai_conv2d_nl_pool_fixed_scratch_size(&n.conv),
              AI_CONV2D_FIXED_SCRATCH_BYTES(c, w, h));
    n.conv.pool_size[1] = 2;
    EXPECT_EQ(ai_conv2d_nl_pool_scratch_size(&n.conv),
              AI_CONV2D_NL_POOL_SCRATCH_ELEMENTS(filters, 10 - w, std::min(2u, 9 - h)));
    n.conv_weights.array.format = AI_ARRAY_FORMAT_LUT8_FLOAT;
    EXPECT_EQ(ai_conv2d_scratch_size(&n.conv.base), AI_CONV2D_SCRATCH_ELEMENTS(c, w, h, filters));
    n.conv_weights.array.format = FixedNetwork::q(8, 6);
  });
}

TEST(ScratchSize, OfDenseLayers) {
  IntegerNetwork integer;
  FixedNetwork fixed;
  for (const uint32_t in : kSizes) {
    reshape(integer.flat, {1, in, 1, 1});
    reshape(fixed.flat, {1, in, 1, 1});
    for (const uint32_t scales : {1u, 3u}) {
      integer.matrix_q.flags_size = scales << 16;
      EXPECT_EQ(ai_dense_integer_scratch_size(&integer.dense),
                AI_DENSE_INTEGER_SCRATCH_BYTES(in, 3, scales));
    }
    EXPECT_EQ(ai_dense_fixed_scratch_size(&fixed.dense), AI_DENSE_FIXED_SCRATCH_BYTES(in));
  }
}

}  // namespace
