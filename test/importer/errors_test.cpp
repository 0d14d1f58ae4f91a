// SPDX-License-Identifier: MIT
// Differences of tensors, and what quantization costs them.
#include "importer/run/errors.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "importer/graph/text.hpp"

namespace nnlib::importer {
namespace {

TEST(Error, DecibelsAndUlps) {
  Error error;
  EXPECT_EQ(error.decibels(), INFINITY);
  error.add(3, 3);
  error.add(-4, -4.5);  // 25 of signal, 0.25 of noise
  EXPECT_NEAR(error.decibels(), 20, 1e-9);
  EXPECT_EQ(error.largest, 0.5);

  Error around_zero;
  around_zero.add(double{0x1p-149F}, double{-0x1p-149F});
  EXPECT_EQ(around_zero.largest_ulp, 2);
  around_zero.add(1, 1 + 0x1p-20);
  EXPECT_EQ(around_zero.largest_ulp, 8);

  Error no_number;
  no_number.add(NAN, NAN);
  EXPECT_EQ(no_number.largest, 0);
  no_number.add(1, NAN);
  EXPECT_EQ(no_number.largest, INFINITY);
}

// The scale of b is too small for what the second layer gives, which the third one hides.
const char* const kClipping = R"(
  in x: s8[1,3] q(0.5,0)
  const w: s8[2,3] q(0.5,0) = 2 0 0 0 2 -2
  const v: s8[2,2] q(0.25,0) = 4 0 0 4
  const u: s8[1,2] q(0.125,0) = 8 8
  a: s8[1,2] q(0.5,0) = dense(x, w, _) @"exact" (Gemm)
  b: s8[1,2] q(0.125,0) = dense(a, v, _) @"clips" (Gemm)
  c: s8[1,1] q(0.5,0) = dense(b, u, _) @"follows" (Gemm)
  out c
)";

TEST(LossMeter, TellsTheLossOfALayerFromThoseBefore) {
  LossMeter meter(parse_graph(kClipping));
  const Interpreter::Values values = meter.add({{80, 10, 0xFD}});  // 40, 5, -1.5
  // a = {40, 6.5}, b = {40, 6.5} stored as {15.875, 6.5}, c = their sum
  EXPECT_EQ(values[static_cast<size_t>(meter.losses()[1].value)], (Bytes{127, 52}));
  const auto& [exact, clips, follows] =
      std::tie(meter.losses()[0], meter.losses()[1], meter.losses()[2]);
  EXPECT_EQ(exact.own.noise + exact.all.noise, 0);
  EXPECT_DOUBLE_EQ(clips.own.largest, 40 - 15.875);
  EXPECT_EQ(clips.clipped, 1u);
  EXPECT_EQ(clips.elements, 2u);
  EXPECT_DOUBLE_EQ(follows.own.largest, 0.125);  // 22.375 is half way between two quanta
  EXPECT_DOUBLE_EQ(follows.all.largest, 46.5 - 22.5);
  EXPECT_EQ(follows.clipped, 0u);
  meter.add({{2, 0, 0}});  // 1: fits everywhere
  EXPECT_EQ(meter.losses()[1].elements, 4u);
  EXPECT_EQ(meter.losses()[1].clipped, 1u);
}

}  // namespace
}  // namespace nnlib::importer
