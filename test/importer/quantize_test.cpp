// SPDX-License-Identifier: MIT
// Float graphs in integers and fixed point. What is expected is computed here in double, or said
// by the definition of a format.
#include <gtest/gtest.h>

#include <cmath>

#include "importer/graph/refusals.hpp"
#include "importer/graph/text.hpp"
#include "importer/main/import_model.hpp"
#include "importer/quantize/equalize.hpp"
#include "importer/quantize/table.hpp"

namespace nnlib::importer {
namespace {

// Pseudo-random numbers between -1 and 1.
class Random {
 public:
  double next() {
    state_ = state_ * 1664525u + 1013904223u;
    return static_cast<int32_t>(state_) / 2147483648.0;
  }

 private:
  uint32_t state_ = 1;
};

std::string numbers(Random& random, size_t count, double scale, double offset = 0) {
  std::string text;
  for (size_t i = 0; i < count; ++i) {
    text += " " + std::to_string(scale * random.next() + offset);
  }
  return text;
}

std::vector<Sample> samples_for(const Graph& graph, size_t count, double offset = 0) {
  Random random;
  std::vector<Sample> samples(count);
  for (Sample& sample : samples) {
    for (const ValueId id : graph.inputs) {
      std::vector<float> x(static_cast<size_t>(graph.value(id).elements()));
      std::generate(x.begin(), x.end(), [&] { return float(random.next() + offset); });
      sample.push_back(*make_bytes<float>(x));
    }
  }
  return samples;
}

Quantized quantized(const Graph& graph, const std::vector<Sample>& samples,
                    const QuantizeOptions& options) {
  return quantize(graph, samples, options, [](size_t, size_t) {});
}

Histogram histogram_of(const std::vector<double>& x) {
  Histogram histogram;
  histogram.widen(x);
  histogram.count(x);
  return histogram;
}

// --- formats
// --------------------------------------------------------------------------------------

TEST(Formats, ZeroIsExactAndEndsAreReached) {
  const Quantization s = affine_format(-1, 3, Type::s8);
  EXPECT_FLOAT_EQ(s.scales[0], 4.0F / 255);
  EXPECT_EQ(s.zero_points[0], -64);
  EXPECT_EQ(affine_format(-1, 3, Type::u8).zero_points[0], 64);
  EXPECT_EQ(affine_format(0.5, 2, Type::s8).zero_points[0], -128);
  EXPECT_EQ(affine_format(-2, -0.5, Type::u8).zero_points[0], 255);
  EXPECT_EQ(affine_format(0, 0, Type::u8).scales[0], 1);
  // 0.9 * 2^7 = 115.2; 1 would be 128; 127.4 is rounded to the largest; 300 / 4 = 75.
  const std::vector<std::pair<double, int>> fixed = {
      {0.9, 7}, {1, 6}, {127.4 / 128, 7}, {127.6 / 128, 6}, {100, 0}, {300, -2}, {0.01, 13}};
  for (const auto& [magnitude, fraction_bits] : fixed) {
    EXPECT_EQ(fixed_format(magnitude, 8), fraction_bits) << magnitude;
  }
  EXPECT_EQ(fixed_format(300, 16), 6);
}

double squared_error(const std::vector<double>& x, double scale, int zero) {
  double sum = 0;
  for (const double v : x) {
    const double q = std::clamp(std::round(v / scale) + zero, 0.0, 255.0);
    sum += std::pow(v - (q - zero) * scale, 2);
  }
  return sum;
}

TEST(Formats, RangesFollowTheirRules) {
  Random random;
  std::vector<double> x;
  for (int i = 0; i < 4000; ++i) {
    x.push_back(std::pow(random.next() + 1, 2));  // 0 to 4, mostly small
  }
  x.push_back(100);
  const Histogram histogram = histogram_of(x);
  const auto scale = [&](RangeRule rule, double percentile) {
    return double{affine_format(histogram, Type::u8, {rule, percentile}).scales[0]};
  };
  EXPECT_NEAR(scale(RangeRule::minmax, 0) * 255, 100, 1e-4);
  // A thousandth is left out at each end: above (1.998)^2.
  EXPECT_NEAR(scale(RangeRule::percentile, 99.8) * 255, 1.998 * 1.998, 0.03);
  double best = INFINITY;
  for (int step = 1; step <= 400; ++step) {
    best = std::min(best, squared_error(x, 0.25 * step / 255, 0));
  }
  EXPECT_LE(squared_error(x, scale(RangeRule::mse, 0), 0), 1.1 * best);
  // Of fixed point there are few: the best one. Beside 6000 numbers below 0.98, which has 7 bits,
  // 1.2 is better cut off, but 2.1 is worth one bit.
  std::vector<double> y;
  for (int i = 0; i < 6000; ++i) {
    y.push_back(0.98 * random.next());
  }
  y.push_back(1.2);
  EXPECT_EQ(fixed_format(histogram_of(y), 8, {RangeRule::minmax}), 6);
  EXPECT_EQ(fixed_format(histogram_of(y), 8, {RangeRule::percentile, 99.9}), 7);
  EXPECT_EQ(fixed_format(histogram_of(y), 8, {RangeRule::mse}), 7);
  y.back() = 2.1;
  EXPECT_EQ(fixed_format(histogram_of(y), 8, {RangeRule::minmax}), 5);
  EXPECT_EQ(fixed_format(histogram_of(y), 8, {RangeRule::mse}), 6);
}

// --- weights
// --------------------------------------------------------------------------------------

Value dense_weights(const std::vector<float>& w, int64_t outputs) {
  const Shape shape = {outputs, static_cast<int64_t>(w.size()) / outputs};
  return {"w", Type::f32, shape, {}, make_bytes<float>(w)};
}

TEST(Weights, IntegersLieHalfAStepFromTheFloatsInEveryPairOfTypes) {
  Random random;
  std::vector<float> w;
  for (int i = 0; i < 60; ++i) {
    w.push_back(static_cast<float>((random.next() + 0.4) * (i < 20 ? 0.01 : i < 40 ? 1 : 7)));
  }
  const std::vector<double> bias = {0.3, -2, 100};
  for (const WeightType& type :
       {WeightType{Type::s8, true}, {Type::s8, false}, {Type::u8, true}, {Type::u8, false}}) {
    const auto stored = integer_weights(Op::dense, dense_weights(w, 3), bias, 0.02F, 0.1F, type);
    const Quantization& q = *stored.weights.quantization;
    ASSERT_EQ(q.scales.size(), type.per_channel ? 3 : 1);
    const std::vector<double> real = to_reals(stored.weights), units = to_doubles(stored.bias);
    for (size_t i = 0; i < 60; ++i) {
      const double scale = double{q.scales[type.per_channel ? i / 20 : 0]};
      EXPECT_NEAR(real[i], w[i], 0.5001 * scale);
      EXPECT_NEAR(units[i / 20] * scale * 0.02, bias[i / 20], 0.5001 * scale * 0.02);
    }
    // As fine as they can be: -0.006 to 0.014, or 700 times as wide for all channels.
    const double finest = type.type == Type::s8 ? 0.014 / 127 : 0.02 / 255;
    EXPECT_LE(q.scales[0], 1.001 * finest * (type.per_channel ? 1 : 700));
    EXPECT_TRUE(type.type == Type::u8 || q.zero_points[0] == 0);
  }
}

TEST(Weights, BiasesAndSumsFitIn32Bits) {
  const std::vector<double> bias = {5e4, 0};
  const auto tiny = dense_weights({1e-6F, -2e-6F, 0.5F, 0.1F}, 2);
  const auto stored = integer_weights(Op::dense, tiny, bias, 1e-3F, 1, WeightType{Type::s8, true});
  EXPECT_NEAR(to_doubles(stored.bias)[0] * double{stored.weights.quantization->scales[0]} * 1e-3,
              5e4, 1);
  EXPECT_LE(to_doubles(stored.bias)[0], 1.001 * (1 << 30));

  for (const int bits : {8, 16}) {
    const std::vector<float> all_ones(4000, 1.0F);
    const FixedFormat in{bits - 1, bits};
    const auto fixed = fixed_weights(Op::dense, dense_weights(all_ones, 1),
                                     std::vector<double>{700}, in, bits - 12, bits, {});
    const int w_bits = fixed.weights.quantization->fraction_bits();
    const int shift = in.fraction_bits + w_bits - fixed.bias.quantization->fraction_bits();
    const double largest = std::ldexp(4000, w_bits) * std::ldexp(1, bits - 1) +
                           std::ldexp(to_doubles(fixed.bias)[0], shift);
    EXPECT_LT(largest, 2147483648.0);
    EXPECT_TRUE(bits == 8 || 4 * largest > 2147483648.0) << "bits given away";
    EXPECT_NEAR(to_reals(fixed.weights)[7], 1, 0.01);
    EXPECT_NEAR(to_reals(fixed.bias)[0], 700, bits == 8 ? 4 : 0.02);
  }
}

// --- graphs
// ---------------------------------------------------------------------------------------

// Channels of very different weights, so that equalization has work to do.
Graph convolutions() {
  Random random;
  std::string w;
  for (int c = 0; c < 4; ++c) {
    w += numbers(random, 9, c == 1 ? 0.02 : 0.6);
  }
  return parse_graph(
      "in x: f32[1,8,8,1]\n"
      "const w: f32[4,3,3,1] =" +
      w +
      "\nconst b: f32[4] = 0.1 -0.005 0.2 0\n"
      "const d: f32[3,3,4] =" +
      numbers(random, 36, 0.4, 0.1) + "\nconst p: f32[6,1,1,4] =" + numbers(random, 24, 0.8) +
      "\nconst f: f32[5,54] =" + numbers(random, 270, 0.3) +
      "\nconst g: f32[5] = 1 -1 0.5 0.25 0\n"
      "c: f32[1,8,8,4] = conv2d(x, w, b) {strides=[1,1], pads=[1,1,1,1]} @\"first\" (Conv)\n"
      "r: f32[1,8,8,4] = relu(c) @\"first_relu\"\n"
      "m: f32[1,4,4,4] = max_pool(r) {kernel=[2,2], strides=[2,2]}\n"
      "e: f32[1,4,4,4] = depthwise_conv2d(m, d) {strides=[1,1], pads=[1,1,1,1]} @\"second\"\n"
      "l: f32[1,4,4,4] = clip(e) {min=0.0, max=6.0}\n"
      "n: f32[1,4,4,6] = conv2d(l, p) {strides=[1,1]} @\"third\"\n"
      "s: f32[1,4,4,6] = relu(n)\n"
      "a: f32[1,3,3,6] = average_pool(s) {kernel=[2,2], strides=[1,1]}\n"
      "h: f32[1,54] = reshape(a)\n"
      "y: f32[1,5] = dense(h, f, g) @\"last\"\n"
      "out y\n");
}

struct Case {
  const char* about;
  Target target;
  WeightType weights;
  double decibels;  // at least
};

TEST(Quantize, EveryPairOfTypesIsCloseAndLeavesNoFloatLayer) {
  const Graph graph = convolutions();
  const auto samples = samples_for(graph, 40);
  for (const Case& c : {Case{"int8", Target::int8, {Type::s8, true}, 30},
                        {"int8, one scale", Target::int8, {Type::s8, false}, 28},
                        {"uint8 on int8", Target::uint8, {Type::s8, true}, 30},
                        {"uint8 on int8, one scale", Target::uint8, {Type::s8, false}, 28},
                        {"uint8", Target::uint8, {Type::u8, true}, 30},
                        {"uint8, one scale", Target::uint8, {Type::u8, false}, 28},
                        {"Q7", Target::q7, {Type::s8, false}, 20}}) {
    QuantizeOptions options;
    options.target = c.target;
    options.weights = c.weights;
    const Quantized q = quantized(graph, samples, options);
    EXPECT_GE(q.outputs.decibels(), c.decibels) << c.about;
    for (const Node& node : q.graph.nodes) {
      const bool border = node.op == Op::quantize || node.op == Op::dequantize;
      EXPECT_TRUE(border || q.graph.value(node.output()).type == element_type(c.target))
          << c.about << ": " << op_name(node.op);
      if (has_weights(node.op)) {
        EXPECT_EQ(q.graph.value(node.input(1)).type, c.weights.type);
        EXPECT_EQ(q.graph.value(node.input(1)).quantization->per_tensor(), !c.weights.per_channel);
      }
    }
    // The checker finds nothing; the same data give the same bits.
    build(finish(q.graph), {});
    EXPECT_EQ(print_graph(q.graph), print_graph(quantized(graph, samples, options).graph));
  }
}

TEST(Quantize, Fixed16BitsTakeWeightsOf8InDenseLayersOnly) {
  const Graph graph = convolutions();
  QuantizeOptions options;
  options.target = Target::q15;
  double wide = 0;
  for (const Type type : {Type::s16, Type::s8}) {
    options.weights = {type, false};
    const Quantized q = quantized(graph, samples_for(graph, 20), options);
    for (const Node& node : q.graph.nodes) {
      const Value& y = q.graph.value(node.output());
      if (node.op == Op::dense) {
        EXPECT_EQ(q.graph.value(node.input(1)).type, type);
      } else if (node.op == Op::conv2d) {
        EXPECT_EQ(q.graph.value(node.input(1)).type, Type::s16);
      } else if (node.op == Op::depthwise_conv2d) {
        EXPECT_EQ(y.type, Type::f32);  // there is no such kernel
      }
    }
    EXPECT_GE(q.outputs.decibels(), type == Type::s16 ? 60 : 35);
    wide = type == Type::s16 ? q.outputs.decibels() : wide - q.outputs.decibels();
  }
  EXPECT_GT(wide, 3);
}

TEST(Quantize, LayersStayFloatByNameAndWhereThereIsNone) {
  const Graph graph = parse_graph(
      "in x: f32[1,4]\nconst w: f32[3,4] = 1 -2 3 0.5 0.25 2 -1 1 0.7 0.1 -0.3 2\n"
      "a: f32[1,3] = dense(x, w) @\"one\"\nb: f32[1,3] = softmax(a) {axis=1}\n"
      "c: f32[1,3] = mul(b, a)\nconst v: f32[2,3] = 1 -1 2 0.3 0.4 0.5\n"
      "d: f32[1,2] = dense(c, v) @\"two\"\nout d\n");
  const auto operators = [&](std::set<std::string> keep) {
    QuantizeOptions options;
    options.keep_float = std::move(keep);
    const Quantized q = quantized(graph, samples_for(graph, 9), options);
    EXPECT_GE(q.outputs.decibels(), 30);
    std::string names;
    for (const Node& node : q.graph.nodes) {
      const bool is_float = q.graph.value(node.output()).type == Type::f32;
      names += std::string(op_name(node.op)) + (is_float ? " " : "' ");
    }
    return names;
  };
  EXPECT_EQ(operators({}), "quantize' dense' dequantize softmax mul quantize' dense' dequantize ");
  EXPECT_EQ(operators({"one"}), "dense softmax mul quantize' dense' dequantize ");
  EXPECT_EQ(operators({"d"}), "quantize' dense' dequantize softmax mul dense ");
  EXPECT_THROW(operators({"three"}), Refused);
}

TEST(Quantize, RefusesWhatIsQuantizedAlreadyOrHasNoData) {
  const Graph integer = parse_graph("in x: s8[1,2] q(0.5,0)\ny: f32[1,2] = dequantize(x)\nout y\n");
  EXPECT_THROW(quantized(integer, {{Bytes{1, 2}}}, {}), Refused);
  EXPECT_THROW(quantized(convolutions(), {}, {}), Refused);
}

// --- steps
// ----------------------------------------------------------------------------------------

TEST(Equalize, KeepsTheOutputsAndMakesChannelsAlike) {
  const Graph graph = convolutions();
  const Graph same = equalized(graph);
  const auto samples = samples_for(graph, 3);
  Probe before(graph, graph.outputs), after(same, same.outputs);
  for (const Sample& sample : samples) {
    EXPECT_EQ(before.run(sample), after.run(sample));
  }
  // By channel, the largest weight of the first layer, whose channels the next one multiplies.
  const auto largest = [](const Graph& g, size_t channel, bool second) {
    const Node& node = g.nodes[second ? 3 : 0];
    const std::vector<double> w = to_doubles(g.value(node.input(1)));
    double most = 0;
    for (size_t i = 0; i < w.size(); ++i) {
      most = (second ? i % 4 : i / 9) == channel ? std::max(most, std::fabs(w[i])) : most;
    }
    return most;
  };
  EXPECT_GT(largest(graph, 1, true) / largest(graph, 1, false), 10);
  for (size_t c = 0; c < 4; ++c) {
    const double ratio = largest(same, c, true) / largest(same, c, false);
    EXPECT_TRUE(ratio > 0.45 && ratio < 2.2) << c << ": " << ratio;
  }
  // A clip bounds at fixed numbers: no factor passes it, only outputs get one.
  const auto w = graph.value(graph.nodes[5].input(1)).as<float>();
  const auto changed = same.value(same.nodes[5].input(1)).as<float>();
  for (size_t i = 0; i < w.size(); ++i) {
    EXPECT_EQ(changed[i] / w[i], changed[i / 4 * 4] / w[i / 4 * 4]);
  }
}

TEST(Equalize, IsWorthItForOneScaleAndLeftOutForMany) {
  const Graph graph = parse_graph(
      "in x: f32[1,3]\nconst w: f32[2,3] = 1 -0.6 0.7 0.011 0.02 -0.015\n"
      "h: f32[1,2] = dense(x, w)\nr: f32[1,2] = relu(h)\n"
      "const v: f32[2,2] = 0.9 50 -0.4 -33\ny: f32[1,2] = dense(r, v)\nout y\n");
  const auto samples = samples_for(graph, 30);
  QuantizeOptions options;
  options.weights.per_channel = false;
  options.equalize = Use::never;
  const double without = quantized(graph, samples, options).outputs.decibels();
  options.equalize = Use::automatic;
  const Quantized best = quantized(graph, samples, options);
  EXPECT_TRUE(best.equalized);
  EXPECT_GT(best.outputs.decibels(), without + 6);
  options.weights.per_channel = true;
  EXPECT_FALSE(quantized(graph, samples, options).equalized);
}

TEST(BiasCorrection, TakesAwayWhatRoundedWeightsAdd) {
  // The small weights are 0.4 of a step: rounded away, and all inputs are positive.
  std::string w = " 12.7";
  for (int i = 1; i < 40; ++i) {
    w += " 0.04";
  }
  const Graph graph = parse_graph("in x: f32[1,40]\nconst w: f32[1,40] =" + w +
                                  "\ny: f32[1,1] = dense(x, w)\nout y\n");
  const auto samples = samples_for(graph, 50, 1.5);
  const auto mean_error = [&](Use use) {
    QuantizeOptions options;
    options.correct_bias = use;
    const Quantized q = quantized(graph, samples, options);
    EXPECT_EQ(q.corrected, use != Use::never);
    Probe exact(graph, graph.outputs), stored(q.graph, q.graph.outputs);
    double sum = 0;
    for (const Sample& sample : samples) {
      sum += stored.run(sample)[0][0] - exact.run(sample)[0][0];
    }
    return sum / 50;
  };
  EXPECT_NEAR(mean_error(Use::never), -39 * 0.04 * 1.5, 0.3);
  EXPECT_NEAR(mean_error(Use::always), 0, 0.05);
  EXPECT_NEAR(mean_error(Use::automatic), 0, 0.05);
}

TEST(Table, NoisiestLayersFirstAndAnswersCounted) {
  const Graph graph = convolutions();
  const auto samples = samples_for(graph, 12);
  QuantizeOptions options;
  options.keep_float = {"first_relu"};
  const Quantized q = quantized(graph, samples, options);
  EXPECT_TRUE(std::is_sorted(q.layers.begin(), q.layers.end(), [](const auto& a, const auto& b) {
    return a.noise.decibels() < b.noise.decibels();
  }));
  // Nothing is lost before the first quantized layer.
  EXPECT_EQ(q.layers.back().noise.noise, 0);
  const std::string table = noise_table(q, "int8");
  for (const char* row :
       {"first       Conv          float            exact", "last        dense         int8  "}) {
    EXPECT_NE(table.find(row), std::string::npos) << table;
  }

  std::vector<int64_t> labels;
  Probe probe(graph, graph.outputs);
  for (const Sample& sample : samples) {
    const std::vector<double> y = probe.run(sample)[0];
    labels.push_back(std::max_element(y.begin(), y.end()) - y.begin());
  }
  EXPECT_EQ(right_answers(graph, samples, labels), 12u);
  labels[3] = 5;
  EXPECT_EQ(right_answers(graph, samples, labels), 11u);
  labels.pop_back();
  EXPECT_THROW(right_answers(graph, samples, labels), std::runtime_error);
}

}  // namespace
}  // namespace nnlib::importer
