// SPDX-License-Identifier: MIT
// Element-wise kernels, softmax, hardmax and the scalar helpers at special values, and what they do
// to memory besides.
#include "layers/layers_nl_generic_float.h"

#include <gtest/gtest.h>
#include <math.h>

#include <algorithm>
#include <bit>
#include <limits>
#include <string>
#include <vector>

#include "core/ai_declare.h"
#include "core/ai_math_helpers.h"

namespace {

using Floats = std::vector<float>;

constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

// Zeros, denormals, borders of rounding, of exponentials and of the parameters below, and two
// numbers that tell single from double precision and 0.2 times x from a fifth of x; over and over,
// so that there are blocks of them for the vector code.
Floats specials() {
  Floats values = {
      0.0f,       1e-45f,     1.1754944e-38f, 0.3f,        0.4999999702f, 0.5f,       0.50000006f,
      1.0f,       1.5f,       2.0f,           2.5f,        2.5000002f,    6.0f,       7.0f,
      88.7f,      104.0f,     1.23200011f,    2.48000002f, 4194303.5f,    4194304.5f, 8388606.5f,
      8388607.5f, 8388608.0f, 8388609.0f,     3e9f,        3.4028235e38f, kInf,       kNan};
  for (size_t i = values.size(); i-- > 0;) {
    values.push_back(-values[i]);
  }
  while (values.size() < 144) {
    values.push_back(values[values.size() - 53]);  // not in step with the vectors
  }
  return values;
}

// The same bits, or both NaN.
void expect_same(const Floats& expected, const Floats& actual, const std::string& what) {
  ASSERT_EQ(expected.size(), actual.size()) << what;
  for (size_t i = 0; i < expected.size(); ++i) {
    const bool same = std::bit_cast<uint32_t>(expected[i]) == std::bit_cast<uint32_t>(actual[i]) ||
                      (isnan(expected[i]) && isnan(actual[i]));
    EXPECT_TRUE(same) << what << " [" << i << "]: " << expected[i] << " != " << actual[i];
  }
}

// The elements from `start` on, of a buffer that begins at the first.
ai_array array_of(Floats& values, size_t start = 0) {
  return {AI_ARRAY_FORMAT_FLOAT, static_cast<ai_size>(values.size() - start), values.data() + start,
          values.data()};
}

struct Operation {
  const char* name;
  ai_nl_func kernel;
  ai_layer_forward forward;
  Floats params;
  float (*expected)(float x, const float* p);
};

float in_double(double (*function)(double), float x) {
  return static_cast<float>(function(static_cast<double>(x)));
}
float truncated(float x) {
  return fabsf(x) < 8388608.0f ? truncf(x) : x;
}
float positive(float x) {
  return 0.0f > x ? 0.0f : x;
}
float elu(float x, float alpha) {
  const float e = alpha * (in_double(exp, x) - 1.0f);
  return positive(x) + (e > 0.0f ? 0.0f : e);
}
float clip(float x, const float* p) {
  const float bounded = x > p[0] ? x : p[0];
  return bounded < p[1] ? bounded : p[1];
}
float below(float x, const float* p) {
  return p[0] > x ? (x - p[0]) * p[1] : x;
}

#define OPERATION(name, forward, params, y)                                                  \
  Operation {                                                                                \
#name, nl_func_##name##_array_f32, forward, params,                                      \
        []([[maybe_unused]] float x, [[maybe_unused]] const float* p) -> float { return y; } \
  }
#define PLAIN(name, y) OPERATION(name, forward_##name, {}, y)
#define WITH(name, y, ...) OPERATION(name, forward_##name, (Floats{__VA_ARGS__}), y)
#define GENERIC_RELU(y, ...) OPERATION(relu_generic, forward_relu, (Floats{__VA_ARGS__}), y)

const Operation kOperations[] = {
    PLAIN(acos, acosf(x)),
    PLAIN(acosh, acoshf(x)),
    PLAIN(asin, asinf(x)),
    PLAIN(asinh, asinhf(x)),
    PLAIN(atan, atanf(x)),
    PLAIN(atanh, atanhf(x)),
    PLAIN(cos, cosf(x)),
    PLAIN(cosh, in_double(cosh, x)),
    PLAIN(erf, erff(x)),
    PLAIN(log, logf(x)),
    PLAIN(rsqrt, 1.0f / sqrtf(x)),
    PLAIN(sin, sinf(x)),
    PLAIN(sinh, in_double(sinh, x)),
    PLAIN(tan, tanf(x)),
    PLAIN(abs, signbit(x) ? -x : x),
    PLAIN(ceil, copysignf(x > truncated(x) ? truncated(x) + 1.0f : truncated(x), x)),
    PLAIN(floor, copysignf(x < truncated(x) ? truncated(x) - 1.0f : truncated(x), x)),
    PLAIN(round, roundf(x)),
    PLAIN(neg, copysignf(x, signbit(x) ? 1.0f : -1.0f)),
    PLAIN(reciprocal, 1.0f / x),
    PLAIN(exp, in_double(exp, x)),
    PLAIN(sigmoid, 1.0f / (1.0f + in_double(exp, -x))),
    PLAIN(sign, x > 0.0f ? 1.0f : -1.0f),
    PLAIN(sqrt, sqrtf(x)),
    PLAIN(soft_plus, logf(in_double(exp, x) + 1.0f)),
    PLAIN(soft_sign, x / (1.0f + fabsf(x))),
    PLAIN(tanh, in_double(tanh, x)),
    PLAIN(hard_sigmoid, x * 0.2f + 0.5f > 1.0f ? 1.0f : positive(x * 0.2f + 0.5f)),
    PLAIN(relu, positive(x)),
    WITH(relu_thresholded, p[0] > x ? 0.0f : x, 0.5f),
    WITH(elu, elu(x, p[0]), 0.5f),
    WITH(elu, elu(x, p[0]), -0.5f),
    WITH(selu, p[1] * elu(x, p[0]), 1.6732f, 1.0507f),
    WITH(clip, clip(x, p), -1.0f, 6.0f),
    WITH(clip, clip(x, p), -0.5f, 0.0f),
    WITH(clip, p[1], 3.0f, -2.0f),
    OPERATION(relu_thresholded, forward_relu, Floats{0.5f}, p[0] > x ? 0.0f : x),
    GENERIC_RELU(x < p[2] ? below(x, p) : p[2], 1.0f, 0.5f, 7.0f),
    GENERIC_RELU(x < p[2] ? below(x, p) : p[2], 2.5f, 0.0f, 0.0f),
    GENERIC_RELU(below(x, p), 1.0f, 0.5f, -1.0f),
    GENERIC_RELU(p[0] > x ? 0.0f : x, 1.0f, 0.0f, -1.0f),
};

class Nl : public testing::TestWithParam<Operation> {};

// Separate, in place and overlapping: always as one by one from the last element to the first. The
// layer takes the elements of its input's shape.
TEST_P(Nl, IsAppliedFromTheLastElementToTheFirst) {
  const Operation& op = GetParam();
  constexpr size_t kFrom = 9;
  const size_t size = specials().size();
  Floats params = op.params;
  const ai_array param_array = array_of(params);
  for (const size_t to : {0, 1, 2, 3, 7, 8, 9, 10, 11, 15, 17, 20, 72, 73, 80}) {
    for (const size_t elements : {size, size - 1}) {
      Floats expected(size + 80, 0.25f);
      std::copy_n(specials().begin(), size, expected.begin() + kFrom);
      Floats actual = expected;
      for (size_t i = elements; i-- > 0;) {
        expected[to + i] = op.expected(expected[kFrom + i], params.data());
      }
      nnlib::tensor in({2, 2, 2, static_cast<uint32_t>(size / 8)}, actual.data());
      nnlib::tensor out({1, 1, 1, 1}, actual.data());
      in.array = array_of(actual, kFrom);
      out.array = array_of(actual, to);
      const nnlib::layer_chain chain(nnlib::list(in), nnlib::list(out));
      ai_layer_nl layer = {nnlib::layer(AI_LAYER_TYPE_NL, op.forward, chain),
                           params.empty() ? nullptr : &param_array};
      if (elements == size) {
        op.forward(&layer.base);
      } else {
        op.kernel(&out.array, &in.array, static_cast<ai_size>(elements), params.data());
      }
      expect_same(expected, actual, op.name + std::string(" to ") + std::to_string(to));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Operations, Nl, testing::ValuesIn(kOperations));

TEST(NlTest, AbsAndNegChangeNothingButTheSignOfNan) {
  Floats values = {std::bit_cast<float>(0xFFC12345u), std::bit_cast<float>(0x7FC12345u)};
  Floats results(2);
  const ai_array in = array_of(values);
  ai_array out = array_of(results);
  nl_func_neg_array_f32(&out, &in, 2, nullptr);
  EXPECT_EQ(0x7FC12345u, std::bit_cast<uint32_t>(results[0]));
  EXPECT_EQ(0xFFC12345u, std::bit_cast<uint32_t>(results[1]));
  nl_func_abs_array_f32(&out, &in, 2, nullptr);
  EXPECT_EQ(0x7FC12345u, std::bit_cast<uint32_t>(results[0]));
}

float prelu(float x, float slope) {
  return x > 0.0f ? positive(x) - slope * 0.0f : positive(x) + x * slope;
}

TEST(PreluTest, PairsSlopesWithElements) {
  for (const float slope : {0.25f, -1.5f, 0.0f, -0.0f, kInf, kNan}) {
    Floats values = specials();
    Floats expected = values;
    Floats slopes(values.size(), slope);
    slopes[11] = 2.0f;
    for (size_t i = 0; i < values.size(); ++i) {
      expected[i] = prelu(values[i], slopes[i]);
    }
    ai_array array = array_of(values);
    nl_func_prelu_array_f32(&array, &array, array.size, slopes.data());
    expect_same(expected, values, "prelu " + std::to_string(slope));
  }
}

// Blocks are as long as the slope array, the slopes applied as many as its tensor's shape says.
TEST(PreluTest, LayerRepeatsTheSlopesAndResetsTheDataPointers) {
  Floats values = {9.0f, -1.0f, -2.0f, -3.0f, -4.0f, -5.0f, 6.0f, -7.0f, -8.0f, -9.0f, -10.0f};
  Floats slopes = {0.5f, 0.25f, -1.0f, 100.0f};
  Floats results(values.size() + 1, 7.0f);
  nnlib::tensor in({1, 10, 1, 1}, values.data());
  nnlib::tensor out({1, 10, 1, 1}, results.data());
  in.array = array_of(values, 1);
  out.array = array_of(results, 2);
  nnlib::tensor weights({1, 3, 1, 1}, slopes.data());
  weights.array.size = 4;
  const nnlib::layer_chain chain(nnlib::list(in), nnlib::list(out), nnlib::list(weights));
  ai_layer layer = nnlib::layer(AI_LAYER_TYPE_NL, forward_prelu, chain);
  forward_prelu(&layer);
  expect_same({7, 7, -0.5f, -0.5f, 3, 7, -2.5f, 6, 7, 7, -4.5f, -2.5f}, results, "prelu layer");
  EXPECT_EQ(values.data(), in.array.data);
  EXPECT_EQ(results.data(), out.array.data);
}

Floats softmax(Floats x) {
  float largest = x[0];
  for (const float value : x) {
    largest = fmaxf(largest, value);
  }
  float sum = 0.0f;
  for (float& value : x) {
    value = in_double(exp, value - largest);
    sum += value;
  }
  for (float& value : x) {
    value *= 1.0f / sum;
  }
  return x;
}

TEST(SoftmaxTest, OfOneGroup) {
  const Floats values = {0.3f, -2.0f, 5.25f, 5.5f, -90.0f, 1e-3f, 200.0f, 199.0f, 198.5f, -kInf};
  for (size_t n = 1; n <= values.size(); ++n) {
    Floats group(values.begin(), values.begin() + n);
    const Floats expected = softmax(group);
    ai_array array = array_of(group);
    nl_func_sm_channel_f32(&array, &array, array.size);
    expect_same(expected, group, "softmax of " + std::to_string(n));
  }
  nl_func_sm_channel_f32(nullptr, nullptr, 0);
}

// The walk goes down to the start of the buffer, wherever data points, and resets it.
TEST(SoftmaxTest, OfPixelsDownToTheStartOfTheBuffer) {
  Floats values = {1, 2, 4, 9, 0.5f, 0.25f, -3, 9, 7, 7, 7.5f, 9};
  Floats results(16, 8.0f);
  ai_array in = array_of(values, 4);
  ai_array out = array_of(results, 8);
  nl_func_sm_array_f32(&out, &in, 8, 3, 4, 5);
  Floats expected(16, 8.0f);
  for (size_t pixel = 0; pixel < 3; ++pixel) {
    const Floats group =
        softmax(Floats(values.begin() + pixel * 4, values.begin() + pixel * 4 + 3));
    std::copy(group.begin(), group.end(), expected.begin() + 1 + pixel * 5);
  }
  expect_same(expected, results, "softmax");
  EXPECT_EQ(values.data(), in.data);
  EXPECT_EQ(results.data(), out.data);
}

TEST(HardmaxTest, MarksTheFirstLargestOfChannelsTimesHeight) {
  Floats values = {-5, -3, -3, 2, 1, 2, kNan, 8, 9, 1, 1, 1};
  Floats results(12, 0.25f);
  nnlib::tensor in({1, 3, 2, 3}, values.data());
  nnlib::tensor out({1, 3, 2, 3}, results.data());
  const nnlib::layer_chain chain(nnlib::list(in), nnlib::list(out));
  ai_layer layer = nnlib::layer(AI_LAYER_TYPE_NL, forward_hardmax, chain);
  forward_hardmax(&layer);
  expect_same({0, 1, 0, 1, 0, 0, 1, 0, 0, 0.25f, 0.25f, 0.25f}, results, "hardmax");
}

TEST(MathHelpersTest, UnaryFunctions) {
  expect_same({1.5f, kNan, 0, -1, kInf, 2.25f, -0.0f, 0.5f, 0.7f, -1, -3},
              {ai_math_sqrt(2.25f), ai_math_sqrt(-1), ai_math_exp(-kInf), ai_math_tanh(-kInf),
               ai_math_cosh(-kInf), ai_math_pow(1.5f, 2), ai_math_relu(-0.0f), ai_math_sigmoid(0),
               ai_math_hard_sigmoid(1), ai_math_sign(0), func_dummy(-3)},
              "unary");
  expect_same({-2.5f, 7, -0.0f, kNan},
              {ai_math_prelu(-5, 0.5f), ai_math_prelu(7, kNan), ai_math_prelu(-0.0f, kNan),
               ai_math_prelu(-1, kNan)},
              "prelu");
}

TEST(MathHelpersTest, BinaryFunctions) {
  expect_same({-5, -9, -14, -3.5f, -7, 2, -4, -1},
              {ai_sum(-7, 2), ai_sub(-7, 2), ai_mul(-7, 2), ai_div(-7, 2), ai_min(-7, 2),
               ai_max(-7, 2), ai_floor_div(-7, 2), ai_floor_mod(-7, 2)},
              "-7, 2");
  expect_same({3, kNan, 3, kNan, 0.0f, -0.0f},
              {ai_min(kNan, 3), ai_min(3, kNan), ai_max(kNan, 3), ai_max(3, kNan),
               ai_max(-0.0f, 0.0f), ai_min(0.0f, -0.0f)},
              "min and max");
  expect_same(
      {-0.0f, -1, 0, kInf, kNan, 16777216, 1},
      {ai_floor_div(-0.0f, 2), ai_floor_div(-1e-30f, 2), ai_floor_div(1, 2), ai_floor_div(1, 0),
       ai_floor_div(0, 0), ai_floor_div(33554432, 2), ai_floor_mod(7, -2)},
      "floors");
}

TEST(MathHelpersTest, DotIsSummedInOrderAndThenAdded) {
  const Floats a = {1e8f, 1.0f, -1e8f, 0.5f, 3.0f};
  const Floats b = {1.0f, 1.0f, 1.0f, 2.0f, -1.0f};
  float out = 0.5f;
  EXPECT_EQ(a.data() + 5, ai_math_dot_array(&out, a.data(), b.data(), 5));
  EXPECT_EQ(-1.5f, out);
}

}  // namespace
