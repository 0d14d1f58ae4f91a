// SPDX-License-Identifier: MIT
// Fixed point from the graph to the numbers. Expected ones are integer arithmetic in here: sums
// shifted right with half a quantum added, saturated.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "importer/graph/refusals.hpp"
#include "importer/graph/text.hpp"
#include "importer/main/import_model.hpp"

namespace nnlib::importer {
namespace {

using Ints = std::vector<int>;

// Numbers of both signs in no order.
Ints scattered(size_t count, int from, int to) {
  Ints numbers;
  for (size_t i = 0; i < count; ++i) {
    numbers.push_back(
        from + static_cast<int>((i * 7919 + 13 * i * i + 31) % static_cast<size_t>(to - from + 1)));
  }
  return numbers;
}

std::string listed(const Ints& numbers) {
  std::string text;
  for (const int n : numbers) {
    text += " " + std::to_string(n);
  }
  return text;
}

std::string dims(const Ints& shape) {
  std::string text;
  for (const int n : shape) {
    text += (text.empty() ? "[" : ",") + std::to_string(n);
  }
  return text + "]";
}

size_t product(const Ints& shape) {
  size_t all = 1;
  for (const int n : shape) {
    all *= static_cast<size_t>(n);
  }
  return all;
}

Bytes elements(const Ints& numbers, bool wide) {
  std::vector<int8_t> narrow_ones(numbers.begin(), numbers.end());
  std::vector<int16_t> wide_ones(numbers.begin(), numbers.end());
  return wide ? *make_bytes<int16_t>(wide_ones) : *make_bytes<int8_t>(narrow_ones);
}

// The outputs of a graph, bytes as they come.
std::vector<Bytes> run(const std::string& text, const std::vector<Bytes>& inputs) {
  Imported imported = build(prepare(parse_graph(text), {}), {});
  return Runner(*imported.network, imported.memory).run(inputs);
}

int saturated(int64_t value, bool wide) {
  const int64_t most = wide ? INT16_MAX : INT8_MAX;
  return static_cast<int>(std::clamp(value, -most - 1, most));
}

// The sum as an element of the output. A shift to the left comes after saturation.
int element_of_sum(int64_t sum, int right, bool wide) {
  const int64_t half = right > 0 ? int64_t{1} << (right - 1) : 0;
  const int narrowed = saturated((sum + half) >> std::max(right, 0), wide);
  return saturated(int64_t{narrowed} << std::max(-right, 0), wide);
}

struct Bits {
  int x, w, b, y;  // behind the point
};

struct Convolution {
  bool wide;
  Ints x;        // rows, columns, channels
  Ints w;        // outputs, rows, columns, channels of a group
  Ints strides;  // down, across
  Ints pads;     // top, left, bottom, right
  Bits bits;
  bool by_channel = false;
};

void expect_convolution(const Convolution& c) {
  const int groups = c.x[2] / c.w[3];
  const int rows = (c.x[0] + c.pads[0] + c.pads[2] - c.w[1]) / c.strides[0] + 1;
  const int columns = (c.x[1] + c.pads[1] + c.pads[3] - c.w[2]) / c.strides[1] + 1;
  const Ints x = scattered(product(c.x), c.wide ? -2000 : -128, c.wide ? 1500 : 127);
  const Ints w = scattered(product(c.w), c.wide ? -900 : -100, c.wide ? 1300 : 127);
  const Ints b = scattered(static_cast<size_t>(c.w[0]), -60, 90);
  Ints expected;
  for (int i = 0; i < rows * columns * c.w[0]; ++i) {
    const int out = i % c.w[0], column = i / c.w[0] % columns, row = i / c.w[0] / columns;
    int64_t sum = int64_t{b[static_cast<size_t>(out)]} << (c.bits.x + c.bits.w - c.bits.b);
    for (int k = 0; k < c.w[1] * c.w[2] * c.w[3]; ++k) {
      const int channel = k % c.w[3] + out / (c.w[0] / groups) * c.w[3];
      const int at_row = row * c.strides[0] - c.pads[0] + k / c.w[3] / c.w[2];
      const int at_column = column * c.strides[1] - c.pads[1] + k / c.w[3] % c.w[2];
      if (at_row >= 0 && at_row < c.x[0] && at_column >= 0 && at_column < c.x[1]) {
        sum += int64_t{w[static_cast<size_t>(out * c.w[1] * c.w[2] * c.w[3] + k)]} *
               x[static_cast<size_t>((at_row * c.x[1] + at_column) * c.x[2] + channel)];
      }
    }
    expected.push_back(element_of_sum(sum, c.bits.x + c.bits.w - c.bits.y, c.wide));
  }
  Ints w_shape = c.w;
  Ints stored = w;
  if (c.by_channel) {  // the operator has the outputs last
    w_shape = {c.w[1], c.w[2], c.w[0]};
    for (size_t i = 0; i < w.size(); ++i) {
      const size_t taps = w.size() / static_cast<size_t>(c.w[0]);
      stored[i % taps * static_cast<size_t>(c.w[0]) + i / taps] = w[i];
    }
  }
  const std::string type = c.wide ? "s16" : "s8";
  const auto fix = [](int bits) { return " fix(" + std::to_string(bits) + ")"; };
  const std::string text = "in x: " + type + dims({1, c.x[0], c.x[1], c.x[2]}) + fix(c.bits.x) +
                           "\nconst w: " + type + dims(w_shape) + fix(c.bits.w) + " =" +
                           listed(stored) + "\nconst b: " + type + dims({c.w[0]}) + fix(c.bits.b) +
                           " =" + listed(b) + "\ny: " + type + dims({1, rows, columns, c.w[0]}) +
                           fix(c.bits.y) + (c.by_channel ? " = depthwise_conv2d" : " = conv2d") +
                           "(x, w, b) {strides=" + dims(c.strides) + ", pads=" + dims(c.pads) +
                           ", groups=" + std::to_string(groups) + "}\nout y\n";
  EXPECT_EQ(run(text, {elements(x, c.wide)})[0], elements(expected, c.wide)) << text;
}

TEST(FixedPoint, Convolutions) {
  expect_convolution({false, {5, 4, 3}, {2, 3, 2, 3}, {1, 2}, {1, 0, 2, 1}, {5, 7, 8, 3}});
  expect_convolution({false, {3, 4, 4}, {6, 1, 1, 4}, {1, 1}, {0, 0, 0, 0}, {4, 9, 13, 4}});
  // More bits behind the output's point than behind the sum's.
  expect_convolution({false, {3, 5, 2}, {3, 2, 1, 2}, {2, 1}, {0, 0, 0, 0}, {2, 1, 1, 5}});
  expect_convolution({true, {5, 5, 2}, {3, 3, 3, 2}, {2, 2}, {1, 1, 1, 1}, {10, 12, 13, 9}});
}

TEST(FixedPoint, ConvolutionsChannelByChannel) {
  expect_convolution({false, {4, 5, 4}, {4, 3, 2, 1}, {1, 2}, {1, 1, 1, 0}, {5, 6, 7, 4}, true});
  // Two outputs a channel, in both forms.
  expect_convolution({false, {4, 5, 3}, {6, 2, 3, 1}, {1, 1}, {0, 1, 1, 1}, {6, 6, 5, 4}, true});
  expect_convolution({false, {4, 5, 3}, {6, 2, 3, 1}, {1, 1}, {0, 1, 1, 1}, {6, 6, 5, 4}});
}

TEST(FixedPoint, DenseOnEveryPairOfWidths) {
  const std::string rest =
      " = 3 -50 127 90 20 -7\nconst b: %[2] fix(6) = 45 -80\n"
      "y: @[3,2] fix(5) = dense(x, w, b)\nout y\n";
  const Ints x = {100, -20, 77, -128, 5, 60, 127, 127, 9};
  for (const auto& [wide, wide_weights] : {std::pair(false, false), {true, false}, {true, true}}) {
    std::string text = "in x: @[3,3] fix(4)\nconst w: %[2,3] fix(5)" + rest;
    for (size_t at; (at = text.find_first_of("@%")) != std::string::npos;) {
      text.replace(at, 1, (text[at] == '@' ? wide : wide_weights) ? "s16" : "s8");
    }
    Ints expected;
    for (size_t i = 0; i < 6; ++i) {
      const int* row = &x[i / 2 * 3];
      const int64_t sum = i % 2 == 0 ? (45 << 3) + 3 * row[0] - 50 * row[1] + 127 * row[2]
                                     : -(80 << 3) + 90 * row[0] + 20 * row[1] - 7 * row[2];
      expected.push_back(element_of_sum(sum, 4, wide));
    }
    EXPECT_EQ(run(text, {elements(x, wide)})[0], elements(expected, wide)) << text;
  }
}

TEST(FixedPoint, FunctionsKeepTheFormatAndBoundsAreInQuanta) {
  const Ints x = {-128, -41, -1, 0, 39, 40, 41, 127};
  const std::string input = "in x: s8[1,2,2,2] fix(4)\n";
  const auto y = [&](const std::string& node) {
    return run(input + "y: s8[1,2,2,2] fix(4) = " + node + "\nout y\n", {elements(x, false)})[0];
  };
  EXPECT_EQ(y("relu(x)"), elements({0, 0, 0, 0, 39, 40, 41, 127}, false));
  EXPECT_EQ(y("clip(x) {min=0.0, max=2.5}"), elements({0, 0, 0, 0, 39, 40, 40, 40}, false));
  const auto small = [&](const std::string& node) {
    return run(input + "y: s8[1,1,1,2] fix(4) = " + node + "\nout y\n", {elements(x, false)})[0];
  };
  EXPECT_EQ(small("max_pool(x) {kernel=[2,2]}"), elements({41, 127}, false));
  const Bytes padded =
      run("in x: s16[1,1,2,1] fix(4)\ny: s16[1,1,3,1] fix(4) = pad(x) "
          "{pads=[0,0,1,0,0,0,0,0], mode=\"constant\", value=1.25}\nout y\n",
          {elements({-300, 7}, true)})[0];
  EXPECT_EQ(padded, elements({20, -300, 7}, true));
}

TEST(FixedPoint, TanhAndSigmoidHaveAllBitsBehindThePoint) {
  const Ints x = {-128, -41, -9, 0, 5, 40, 127};
  for (const char* function : {"tanh", "sigmoid"}) {
    const Bytes out =
        run("in x: s8[7] fix(5)\ny: s8[7] fix(7) = " + std::string(function) + "(x)\nout y\n",
            {elements(x, false)})[0];
    for (size_t i = 0; i < x.size(); ++i) {
      const double real = x[i] / 32.0;
      const double exact = function[0] == 't' ? std::tanh(real) : 1 / (1 + std::exp(-real));
      EXPECT_NEAR(static_cast<int8_t>(out[i]) / 128.0, exact, 0.035) << function << " " << real;
    }
  }
}

TEST(FixedPoint, ConversionsScaleACopyOfWhatIsReadElsewhere) {
  const char* const text = R"(
    in x: f32[4]
    a: f32[4] = abs(x)
    q: s8[4] fix(4) = quantize(a)
    n: f32[4] = neg(a)
    r: s8[4] fix(2) = requantize(q)
    y: f32[4] = dequantize(r)
    out n
    out y
  )";
  const std::vector<float> x = {-0.5F, 3.3F, 9.0F, -0.27F};
  const auto outputs = run(text, {*make_bytes<float>(x)});
  EXPECT_EQ(outputs[0], *make_bytes<float>(std::vector<float>{-0.5F, -3.3F, -9.0F, -0.27F}));
  // Rounded to sixteenths, saturated below 8, shifted right without rounding.
  EXPECT_EQ(outputs[1], *make_bytes<float>(std::vector<float>{0.5F, 3.25F, 7.75F, 0.25F}));
}

TEST(FixedPoint, RefusesWhatNoKernelDoes) {
  const auto refusal = [](const std::string& text) -> std::string {
    try {
      build(prepare(parse_graph(text), {}), {});
      return "";
    } catch (const Refused& refused) {
      return refused.what();
    }
  };
  const auto dense = [](const std::string& w, const std::string& b) {
    return "in x: s8[1,2] fix(4)\nconst w: " + w + " = 1 2\nconst b: " + b +
           " = 1\ny: s8[1,1] fix(3) = dense(x, w, b)\nout y\n";
  };
  EXPECT_EQ(refusal(dense("s8[1,2] fix(4)", "s8[1] fix(8)")), "");
  EXPECT_NE(refusal(dense("s8[1,2] fix(4)", "s8[1] fix(9)")).find("too far apart"),
            std::string::npos);
  EXPECT_NE(refusal(dense("s16[1,2] fix(4)", "s16[1] fix(4)")).find("width"), std::string::npos);
  EXPECT_NE(refusal(dense("s8[1,2] q(0.25,0)", "s32[1]")).find("fixed point"), std::string::npos);
  EXPECT_NE(refusal("in x: s16[1,3,4,1] fix(4)\nconst w: s16[1,2,2,1] fix(4) = 1 2 3 4\n"
                    "y: s16[1,2,3,1] fix(4) = conv2d(x, w) {strides=[1,1]}\nout y\n")
                .find("as much height as width"),
            std::string::npos);
  const auto function = [&](const std::string& node) {
    return refusal("in x: s8[2] fix(4)\ny: s8[2] fix(4) = " + node + "\nout y\n");
  };
  EXPECT_NE(function("neg(x)").find("fixed point is not available here"), std::string::npos);
  EXPECT_NE(function("clip(x) {min=-1.0, max=1.0}").find("clip from 0"), std::string::npos);
  // Layers of floats do not see other memory.
  EXPECT_NE(refusal("in x: s8[1,2] q(0.5,1)\nconst w: f32[8,2] = 1 2 3 4 5 6 7 8 9 10 11 12 13 14 "
                    "15 16\nconst r: f32[8,2] = 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n"
                    "a: f32[1,2] = dequantize(x)\ny: s16[1,2] fix(4) = lstm(a, w, r)\nout y\n")
                .find("fixed point is not available here"),
            std::string::npos);
}

}  // namespace
}  // namespace nnlib::importer
