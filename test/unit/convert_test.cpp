// SPDX-License-Identifier: MIT
// Conversions, shifts and look-up tables over every number there is.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "core/ai_declare.h"
#include "core/core_convert.h"
#include "kernels/arm_convert.h"
#include "kernels/arm_copy_q7.h"
#include "kernels/arm_fill_q15.h"
#include "kernels/arm_nntables.h"
#include "kernels/arm_q7_to_q15_no_shift.h"
#include "kernels/arm_shift.h"

namespace {

template <class T>
using Values = std::vector<T>;

template <class T>
int saturated(double value) {
  return static_cast<int>(
      std::clamp<double>(value, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
}

template <class T>
Values<T> all_numbers() {
  Values<T> numbers;
  for (int i = std::numeric_limits<T>::min(); i <= std::numeric_limits<T>::max(); ++i) {
    numbers.push_back(static_cast<T>(i));
  }
  return numbers;
}

template <class T>
void check_shift(void (*shift)(const T*, int8_t, T*, uint32_t)) {
  for (int count = -128; count <= 127; ++count) {
    const Values<T> in = all_numbers<T>();
    Values<T> out = in;
    shift(out.data(), static_cast<int8_t>(count), out.data(), static_cast<uint32_t>(out.size()));
    for (size_t i = 0; i < in.size(); i += sizeof(T) == 1 ? 1 : 5) {
      ASSERT_EQ(out[i], saturated<T>(std::floor(std::ldexp(in[i], count))))
          << in[i] << " " << count;
    }
  }
}

TEST(Shift, NumbersByEveryCount) {
  check_shift(arm_shift_q7);
  check_shift(arm_shift_q15);
}

TEST(Conversion, EveryNumberThereAndBack) {
  const Values<q7_t> q7 = all_numbers<q7_t>();
  Values<q15_t> wide(q7.size());
  Values<float> real(q7.size());
  Values<q7_t> back(q7.size());
  arm_q7_to_q15(q7.data(), wide.data(), 256);
  arm_q15_to_q7(wide.data(), back.data(), 256);
  EXPECT_EQ(back, q7);
  arm_q7_to_float(q7.data(), real.data(), 256);
  arm_float_to_q7(real.data(), back.data(), 256);
  EXPECT_EQ(back, q7);
  for (size_t i = 0; i < q7.size(); ++i) {
    EXPECT_EQ(wide[i], 256 * q7[i]);
    EXPECT_EQ(real[i], std::ldexp(static_cast<float>(q7[i]), -7));
  }
  const Values<q15_t> q15 = all_numbers<q15_t>();
  Values<q15_t> back15(q15.size());
  real.resize(q15.size());
  back.resize(q15.size());
  arm_q15_to_float(q15.data(), real.data(), 65536);
  arm_float_to_q15(real.data(), back15.data(), 65536);
  arm_q15_to_q7(q15.data(), back.data(), 65536);
  EXPECT_EQ(back15, q15);
  for (size_t i = 0; i < q15.size(); ++i) {
    EXPECT_EQ(real[i], std::ldexp(static_cast<float>(q15[i]), -15));
    EXPECT_EQ(back[i], std::floor(q15[i] / 256.0));
  }
}

TEST(Conversion, CopiesAsManyAsAsked) {
  const q7_t from[] = {-128, 127, 5, 6};
  Values<q7_t> copy(4, 99);
  arm_copy_q7(from, copy.data(), 3);
  EXPECT_EQ(copy, (Values<q7_t>{-128, 127, 5, 99}));
  Values<q15_t> wide(4, 99);
  arm_q7_to_q15_no_shift(from, wide.data(), 3);
  EXPECT_EQ(wide, (Values<q15_t>{-128, 127, 5, 99}));
  arm_fill_q15(-32768, wide.data(), 2);
  EXPECT_EQ(wide, (Values<q15_t>{-32768, -32768, 5, 99}));
}

TEST(Conversion, FloatsRoundAwayFromZeroAndSaturate) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  const struct {
    float in;
    int q7, q15;
  } cases[] = {
      {0, 0, 0},
      {1 / 256.0f, 1, 128},
      {-1 / 256.0f, -1, -128},
      {3 / 256.0f, 2, 384},
      {-3 / 256.0f, -2, -384},
      {0.9999f, 127, 32765},
      {1, 127, 32767},
      {-1, -128, -32768},
      {0x1.8p-15f, 0, 2},
      {-0x1.8p-15f, 0, -2},
      // The low 16 bits of the Q7 product count.
      {255.99f, 127, 32767},
      {256, -128, 32767},
      {-256, -128, -32768},
      {-257, 127, -32768},
      {512, 0, 32767},
      {0x1p24f, 127, 32767},
      {-0x1p24f, 0, -32768},
      {1e9f, 127, 32767},
      {-1e9f, -128, -32768},
      {kInfinity, 127, 32767},
      {-kInfinity, -128, -32768},
      {std::nanf(""), 0, 0},
  };
  for (const auto& c : cases) {
    q7_t q7 = 99;
    q15_t q15 = 99;
    arm_float_to_q7(&c.in, &q7, 1);
    arm_float_to_q15(&c.in, &q15, 1);
    EXPECT_EQ(q7, c.q7) << c.in;
    EXPECT_EQ(q15, c.q15) << c.in;
  }
}

// Runs a conversion of one row of elements.
void convert(ai_layer_forward forward, ai_tensor& in, ai_tensor& out) {
  nnlib::layer_chain chain(nnlib::list(in), nnlib::list(out));
  ai_layer layer = nnlib::layer(AI_LAYER_TYPE_NL, forward, chain);
  forward(&layer);
}

template <class In, class Out>
void check_fixed(int in_fraction, int out_fraction, Values<In> in, const Values<Out>& expected,
                 const Values<In>& in_after) {
  Values<Out> out(in.size(), 33);
  const uint32_t count = static_cast<uint32_t>(in.size());
  nnlib::tensor from(AI_ARRAY_FORMAT_MAKE_Q(8 * sizeof(In), in_fraction), {1, count, 1, 1}, &in[0]);
  nnlib::tensor to(AI_ARRAY_FORMAT_MAKE_Q(8 * sizeof(Out), out_fraction), {1, 1, 1, 1}, &out[0]);
  convert(node_convert_fixed, from, to);
  EXPECT_EQ(out, expected) << in_fraction << " to " << out_fraction;
  EXPECT_EQ(in, in_after) << in_fraction << " to " << out_fraction;
}

TEST(Conversion, FixedToFixedShiftsWhereItIsStatedTo) {
  const Values<q7_t> q7 = {-128, 100, -3};
  const Values<q15_t> q15 = {-32768, 25700, -300};
  check_fixed<q7_t, q7_t>(3, 3, q7, {33, 33, 33}, q7);
  check_fixed<q7_t, q7_t>(3, 4, q7, {-128, 127, -6}, q7);
  check_fixed<q7_t, q7_t>(4, 3, q7, {-64, 50, -2}, q7);
  check_fixed<q7_t, q15_t>(3, 12, q7, {-32768, 127 * 256, -1536}, {-128, 127, -6});
  check_fixed<q7_t, q15_t>(3, 11, q7, {-32768, 25600, -768}, q7);
  check_fixed<q7_t, q15_t>(3, 10, q7, {-16384, 12800, -384}, q7);
  check_fixed<q15_t, q15_t>(3, 3, q15, {33, 33, 33}, q15);
  check_fixed<q15_t, q15_t>(3, 4, q15, {-32768, 32767, -600}, q15);
  check_fixed<q15_t, q15_t>(4, 3, q15, {-16384, 12850, -150}, q15);
  check_fixed<q15_t, q7_t>(11, 4, q15, {-128, 127, -3}, {-32768, 32767, -600});
  check_fixed<q15_t, q7_t>(11, 3, q15, {-128, 100, -2}, q15);
  check_fixed<q15_t, q7_t>(11, 2, q15, {-64, 50, -1}, q15);
}

// Formats with fewer bits than fractional ones, and more than one for the elements that the
// output's shape has: the input's counts.
template <class T>
void check_float(int fraction_bits, Values<T> expected) {
  const float scale = std::ldexp(1.0f, -fraction_bits);
  Values<float> real = {3 * scale, -2.5f * scale, 100 * scale, 1000000 * scale};
  const Values<float> before = real;
  Values<T> q(4, 33);
  const ai_array_format format = AI_ARRAY_FORMAT_MAKE_Q(8 * sizeof(T), fraction_bits);
  nnlib::tensor floats({1, 4, 1, 1}, real.data()), one_float({1, 1, 1, 1}, real.data());
  nnlib::tensor fixed(format, {1, 4, 1, 1}, q.data()), one_fixed(format, {1, 1, 1, 1}, q.data());
  convert(node_convert, floats, one_fixed);
  EXPECT_EQ(q, expected) << fraction_bits;
  const int integer_bits = static_cast<int>(8 * sizeof(T)) - 1 - fraction_bits;
  for (size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(real[i], std::ldexp(before[i], -integer_bits)) << fraction_bits;
  }
  convert(node_convert, fixed, one_float);
  for (size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(real[i], static_cast<float>(expected[i]) * scale) << fraction_bits;
  }
}

TEST(Conversion, FloatToFixedAndBackWithAnyIntegerBits) {
  for (const int fraction_bits : {-3, 0, 5, 7, 9, 13}) {
    check_float<q7_t>(fraction_bits, {3, -3, 100, 127});
  }
  for (const int fraction_bits : {-2, 11, 15, 18}) {
    check_float<q15_t>(fraction_bits, {3, -3, 100, 32767});
  }
}

// Numbers that another order of the operations rounds to another whole number.
TEST(Conversion, FloatToIntegerInTheStatedOrder) {
  static constexpr float scales[] = {0.024f, 0.159f};
  static constexpr int8_t int8_zero = -20;
  static constexpr uint8_t uint8_zero = 20;
  static constexpr ai_intq_info infos[] = {{&scales[0], &int8_zero}, {&scales[1], &uint8_zero}};
  static constexpr ai_intq_info_list lists[] = {{1u << 16, &infos[0]}, {1u << 16, &infos[1]}};
  float x = 0.756f, y = 35.0595f;
  int8_t of_x = 0;
  uint8_t of_y = 0;
  nnlib::tensor in_x({1, 1, 1, 1}, &x), in_y({1, 1, 1, 1}, &y);
  nnlib::tensor out_x({1, 1, 1, 1}, &of_x, 0, &lists[0]), out_y({1, 1, 1, 1}, &of_y, 0, &lists[1]);
  convert(node_convert, in_x, out_x);
  convert(node_convert, in_y, out_y);
  EXPECT_EQ(of_x, 11);
  EXPECT_EQ(of_y, 241);
}

TEST(Conversion, RecordWithoutEntriesHasScaleZero) {
  static const ai_intq_info_list empty = {0, nullptr};
  float real[] = {1.5f, -1.5f, 0.0f};
  Values<int8_t> q(3, 9);
  nnlib::tensor floats({1, 3, 1, 1}, real), one_float({1, 1, 1, 1}, real);
  nnlib::tensor integers({1, 3, 1, 1}, q.data(), 0, &empty);
  nnlib::tensor one_integer({1, 1, 1, 1}, q.data(), 0, &empty);
  convert(node_convert, floats, one_integer);
  EXPECT_EQ(q, (Values<int8_t>{127, -128, 0}));
  convert(node_convert, integers, one_float);
  EXPECT_EQ(Values<float>(real, real + 3), (Values<float>{0, 0, 0}));
}

TEST(Conversion, IntegersInvertTheTopBitAtEveryLength) {
  for (uint32_t count = 0; count < 10; ++count) {
    Values<uint8_t> in = {1, 128, 254, 3, 200, 127, 0, 255, 9, 77}, out(10, 55), expected = out;
    for (uint32_t i = 0; i < count; ++i) {
      expected[i] = static_cast<uint8_t>(in[i] + 128);
    }
    nnlib::tensor from({1, count, 1, 1}, in.data()), to({1, 1, 1, 1}, out.data());
    convert(node_convert_integer, from, to);
    EXPECT_EQ(out, expected);
  }
}

TEST(Tables, EveryEntryFollowsFromTheFormula) {
  const auto check = [](const auto& table, bool tanh, int steps, size_t first, size_t period) {
    using T = std::remove_cv_t<std::remove_reference_t<decltype(table[0])>>;
    for (size_t i = 0; i < std::size(table); ++i) {
      const size_t position = i + first;
      const double k = static_cast<double>(position) -
                       (position < period / 2 ? 0.0 : static_cast<double>(period));
      const double x = k / steps;
      const double y = tanh ? std::tanh(x) : 1 / (1 + std::exp(-x));
      EXPECT_EQ(table[i], saturated<T>(std::floor(std::ldexp(y, 8 * sizeof(T) - 1) + 0.5))) << i;
    }
  };
  check(tanhTable_q7, true, 16, 0, 256);
  check(sigmoidTable_q7, false, 16, 0, 256);
  check(tanhTable_q15, true, 16, 0, 256);
  check(sigmoidTable_q15, false, 16, 0, 256);
  check(tanhHTable_q15, true, 16, 32, 256);
  check(sigmoidHTable_q15, false, 16, 32, 256);
  check(tanhLTable_q15, true, 32, 0, 128);
  check(sigmoidLTable_q15, false, 32, 0, 128);
}

}  // namespace
