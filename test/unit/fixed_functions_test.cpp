// SPDX-License-Identifier: MIT
// Fixed-point pooling of large windows, softmax and activations.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "core/ai_tensor.h"
#include "kernels/arm_nntables.h"
#include "kernels/arm_softmax.h"
#include "kernels/ko_fxp_nl.h"
#include "layers_quantized/layers_nl_quarn_fixed.h"
#include "layers_quantized/layers_pool_quarn_fixed.h"
#include "layers_quantized/layers_sm_quarn_fixed.h"
#include "test/unit/fixed_convolution.hpp"

namespace {

// A sum beyond 32 bits in one channel, and its negative in the other.
TEST(FixedPool, AveragesLargeWindows) {
  constexpr uint16_t kSide = 300;
  Values<q15_t> in(size_t{2} * kSide * kSide, 32767), out(2);
  for (size_t i = 1; i < in.size(); i += 2) {
    in[i] = -32768;
  }
  ai_array from = {AI_ARRAY_FORMAT_S16, static_cast<ai_size>(in.size()), in.data(), in.data()};
  ai_array to = {AI_ARRAY_FORMAT_S16, 2, out.data(), out.data()};
  pool_func_ap_array_fixed(&from, kSide, kSide, 2, kSide, kSide, 0, 0, 1, 1, 1, 1, &to);
  EXPECT_EQ(out, (Values<q15_t>{32767, -32768}));
  pool_func_ap_array_fixed(&from, 257, 255, 2, 257, 255, 0, 0, 1, 1, 1, 1, &to);  // 65535 cells
  EXPECT_EQ(out, (Values<q15_t>{32767, -32768}));
}

TEST(FixedSoftmax, ValuesHold) {
  const struct {
    Values<q15_t> in, q7, q15;
  } cases[] = {
      {{0}, {127}, {32767}},
      {{1, 2, 3, 4}, {8, 17, 34, 68}, {2184, 4369, 8738, 17476}},
      {{3, 3, 2}, {51, 51, 25}, {13107, 13107, 6553}},
      {{0, -8}, {127, 0}, {32640, 127}},
      {{0, -7}, {127, 0}, {32513, 254}},
      {{127, -128, 120, 119}, {127, 0, 0, 0}, {32388, 0, 253, 126}},
      {{7, 7, 7, 7}, {32, 32, 32, 32}, {8192, 8192, 8192, 8192}},
  };
  for (const auto& c : cases) {
    Values<q7_t> q7(c.in.begin(), c.in.end());
    Values<q15_t> q15 = c.in;
    arm_softmax_q7(q7.data(), u16(static_cast<uint32_t>(q7.size())), q7.data());
    arm_softmax_q15(q15.data(), u16(static_cast<uint32_t>(q15.size())), q15.data());
    EXPECT_EQ(Values<q15_t>(q7.begin(), q7.end()), c.q7);
    EXPECT_EQ(q15, c.q15);
    // As a function of a convolution, all of the elements are one group.
    Values<q15_t> group = c.in;
    ai_array array = {AI_ARRAY_FORMAT_S16, 99, group.data(), group.data()};
    sm_func_sm_array_fixed(&array, &array, static_cast<ai_size>(group.size()), nullptr);
    EXPECT_EQ(group, c.q15);
  }
  arm_softmax_q7(nullptr, 0, nullptr);
}

// Every number of every format, in and out of place, as near to the real function as the table is.
template <class T>
void check_activation(ai_nl_func kernel, double (*function)(double), int fraction_bits) {
  constexpr int kBits = 8 * sizeof(T);
  const double one = std::ldexp(1.0, kBits - 1);
  Values<T> in(size_t{1} << kBits), out(in.size());
  for (size_t i = 0; i < in.size(); ++i) {
    in[i] = static_cast<T>(i);
  }
  const ai_array_format format = AI_ARRAY_FORMAT_MAKE_Q(kBits, fraction_bits);
  ai_array from = {format, static_cast<ai_size>(in.size()), in.data(), in.data()};
  ai_array to = {format, from.size, out.data(), out.data()};
  kernel(&to, &from, from.size, nullptr);
  for (size_t i = 0; i < in.size(); ++i) {
    const double x = std::ldexp(static_cast<double>(in[i]), -fraction_bits);
    // The Q7 table is read at the next sixteenth below; the Q15 one is flat just below zero.
    const bool flat = sizeof(T) == 1 || (x > -0.0625 && x < 0);
    const double at = sizeof(T) == 1 ? std::floor(16 * x) / 16 : flat ? -0.0625 : x;
    ASSERT_NEAR(out[i] / one, function(at), sizeof(T) == 1 ? 1.01 / one : 6e-4) << x;
  }
  kernel(&from, &from, from.size, nullptr);
  EXPECT_EQ(in, out);
}

TEST(FixedActivation, EveryTypeButZeroIsTanh) {
  for (const uint16_t type : {0, 1, 2, 256, 65535}) {
    q7_t q7[] = {88, -40, 127};
    q15_t q15[] = {11 * 256, -5 * 256, 32767};
    ko_fxp_nn_activations_direct_q7(q7, 2, 0, type);
    ko_fxp_nn_activations_direct_q15(q15, 2, 3, type);
    const q7_t* table_q7 = type == 0 ? sigmoidTable_q7 : tanhTable_q7;
    const q15_t* table_q15 = type == 0 ? sigmoidTable_q15 : tanhTable_q15;
    EXPECT_EQ(Values<q7_t>(q7, q7 + 3), (Values<q7_t>{table_q7[11], table_q7[256 - 5], 127}));
    EXPECT_EQ(Values<q15_t>(q15, q15 + 3),
              (Values<q15_t>{table_q15[11], table_q15[256 - 5], 32767}));
  }
}

TEST(FixedActivation, EveryNumberOfEveryFormat) {
  const auto sigmoid = [](double x) { return 1 / (1 + std::exp(-x)); };
  const auto tanh = [](double x) { return std::tanh(x); };
  for (const int fraction_bits : {-3, 2, 3, 4, 5, 6, 7, 9}) {
    check_activation<q7_t>(nl_func_tanh_array_fixed, tanh, fraction_bits);
    check_activation<q7_t>(nl_func_sigmoid_array_fixed, sigmoid, fraction_bits);
  }
  for (const int fraction_bits : {-1, 9, 11, 12, 13, 15}) {
    check_activation<q15_t>(nl_func_tanh_array_fixed, tanh, fraction_bits);
    check_activation<q15_t>(nl_func_sigmoid_array_fixed, sigmoid, fraction_bits);
  }
}

}  // namespace
