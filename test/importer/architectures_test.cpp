// SPDX-License-Identifier: MIT
// Memory of well-known small networks, rebuilt with random weights.
#include <gtest/gtest.h>

#include "importer/main/import_model.hpp"

namespace nnlib::importer {
namespace {

// Builds int8 graphs layer by layer.
class Builder {
 public:
  explicit Builder(const Shape& shape) {
    at = graph.add({"input", Type::s8, shape, Quantization{{0.1f}, {3}, 0}, nullptr});
    graph.inputs = {at};
  }

  Graph graph;
  ValueId at;

  const Shape& shape() const { return graph.value(at).shape; }
  ValueId conv(int64_t channels, Shape kernel, Shape strides, Shape pads, bool relu = true) {
    const int64_t in = shape()[3];
    return spatial(Op::conv2d, {channels, kernel[0], kernel[1], in}, 0, channels, kernel, strides,
                   pads, relu);
  }
  ValueId depthwise(Shape kernel, Shape strides, Shape pads) {
    const int64_t in = shape()[3];
    return spatial(Op::depthwise_conv2d, {kernel[0], kernel[1], in}, 2, in, kernel, strides, pads,
                   true);
  }
  ValueId pool() {
    const Shape in = shape();
    add(Op::average_pool, {at}, {1, 1, 1, in[3]}).attributes = {
        {"kernel", std::vector<int64_t>{in[1], in[2]}}};
    return at;
  }
  ValueId dense(int64_t outputs, bool relu = false) {
    const int64_t inputs = elements_of(shape());
    const ValueId from = at;
    add(Op::dense, {from, weights({outputs, inputs}, 0), bias(outputs)}, {1, outputs});
    return relu ? activation() : at;
  }
  ValueId sum(ValueId a, ValueId b) {
    add(Op::add, {a, b}, graph.value(a).shape);
    return activation();
  }
  ValueId softmax() {
    add(Op::softmax, {at}, shape());
    return at;
  }

 private:
  ValueId activation() {
    const auto q = graph.value(at).quantization;
    add(Op::relu, {at}, shape());
    graph.value(at).quantization = q;
    return at;
  }
  ValueId spatial(Op op, const Shape& w, int axis, int64_t out, const Shape& kernel,
                  const Shape& strides, const Shape& pads, bool relu) {
    const Shape in = shape();
    const ValueId from = at;
    const auto size = [&](size_t i) {
      return (in[i + 1] + pads[i] + pads[i + 2] - kernel[i]) / strides[i] + 1;
    };
    add(op, {from, weights(w, axis), bias(out)}, {1, size(0), size(1), out}).attributes = {
        {"strides", strides}, {"pads", pads}};
    return relu ? activation() : at;
  }
  Node& add(Op op, std::vector<ValueId> inputs, Shape out) {
    at = graph.add({"", Type::s8, std::move(out), Quantization{{0.2f}, {-128}, 0}, nullptr});
    graph.nodes.push_back({"", "", op, std::move(inputs), {at}, {}});
    return graph.nodes.back();
  }
  ValueId weights(const Shape& shape, int axis) {
    std::vector<int8_t> w(static_cast<size_t>(elements_of(shape)));
    for (int8_t& x : w) {
      x = static_cast<int8_t>(random() >> 24);
    }
    const auto channels = static_cast<size_t>(shape[static_cast<size_t>(axis)]);
    Quantization q{std::vector<float>(channels, 0.01f), std::vector<int32_t>(channels, 0), axis};
    q.scales[0] = 0.02f;
    const ValueId id = graph.add_constant<int8_t>("w", shape, w);
    graph.value(id).quantization = q;
    return id;
  }
  ValueId bias(int64_t channels) {
    std::vector<int32_t> b(static_cast<size_t>(channels));
    for (int32_t& x : b) {
      x = static_cast<int32_t>(random()) >> 20;
    }
    return graph.add_constant<int32_t>("b", {channels}, b);
  }
  uint32_t random() { return state_ = state_ * 1664525u + 1013904223u; }

  uint32_t state_ = 5;
};

// The plan reaches the most that lives at once, scratch included, within 2 %, and `bound` is that
// most without scratch. The network runs.
void expect_arena(Builder& b, uint32_t bound) {
  b.graph.outputs = {b.at};
  Imported imported = build(prepare(b.graph, {}), {});
  const Plan& plan = imported.memory.plan;
  EXPECT_EQ(plan.bound, bound);
  EXPECT_LE(plan.bytes, plan.bound_with_scratch + plan.bound_with_scratch / 50);
  Bytes input(port_bytes(imported.network->inputs[0]));
  for (size_t i = 0; i < input.size(); ++i) {
    input[i] = static_cast<uint8_t>(i * 37);
  }
  const Bytes output = Runner(*imported.network, imported.memory).run({input})[0];
  EXPECT_NE(output, Bytes(output.size(), output[0]));
}

const Shape kOne = {1, 1};
const Shape kTwo = {2, 2};
const Shape kNone = {0, 0, 0, 0};
const Shape kAround = {1, 1, 1, 1};
const Shape kBehind = {0, 0, 1, 1};

TEST(Architecture, KeywordSpotting) {
  Builder b({1, 49, 10, 1});
  b.conv(64, {10, 4}, kTwo, {4, 1, 5, 1});
  for (int i = 0; i < 4; ++i) {
    b.depthwise({3, 3}, kOne, kAround);
    b.conv(64, kOne, kOne, kNone);
  }
  b.pool();
  b.dense(12);
  b.softmax();
  expect_arena(b, 16000);
}

TEST(Architecture, VisualWakeWords) {
  Builder b({1, 96, 96, 3});
  b.conv(8, {3, 3}, kTwo, kBehind);
  const std::pair<int, int> blocks[] = {{1, 16},  {2, 32},  {1, 32},  {2, 64},  {1, 64},
                                        {2, 128}, {1, 128}, {1, 128}, {1, 128}, {1, 128},
                                        {1, 128}, {2, 256}, {1, 256}};
  for (const auto& [stride, channels] : blocks) {
    b.depthwise({3, 3}, {stride, stride}, stride == 2 ? kBehind : kAround);
    b.conv(channels, kOne, kOne, kNone);
  }
  b.pool();
  b.dense(2);
  b.softmax();
  expect_arena(b, 55296);
}

TEST(Architecture, ImageClassification) {
  Builder b({1, 32, 32, 3});
  ValueId shortcut = b.conv(16, {3, 3}, kOne, kAround);
  b.conv(16, {3, 3}, kOne, kAround);
  b.sum(shortcut, b.conv(16, {3, 3}, kOne, kAround, false));
  for (const int64_t channels : {32, 64}) {
    const ValueId start = b.at;
    b.conv(channels, {3, 3}, kTwo, kBehind);
    const ValueId main = b.conv(channels, {3, 3}, kOne, kAround, false);
    b.at = start;
    shortcut = b.conv(channels, kOne, kTwo, kNone, false);
    b.sum(shortcut, main);
  }
  b.pool();
  b.dense(10);
  b.softmax();
  expect_arena(b, 49152);
}

TEST(Architecture, AnomalyDetection) {
  Builder b({1, 640});
  for (const int64_t units : {128, 128, 128, 128, 8, 128, 128, 128, 128}) {
    b.dense(units, true);
  }
  b.dense(640);
  expect_arena(b, 768);
}

}  // namespace
}  // namespace nnlib::importer
