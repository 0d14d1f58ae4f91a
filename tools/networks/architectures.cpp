// SPDX-License-Identifier: MIT
#include "tools/networks/architectures.hpp"

namespace nnlib::importer {
namespace {

// Builds int8 graphs layer by layer.
class Builder {
 public:
  explicit Builder(const Shape& shape) {
    at = graph_.add({"input", Type::s8, shape, Quantization{{0.1f}, {3}, 0}, nullptr});
    graph_.inputs = {at};
  }

  ValueId at;
  bool per_channel = true;  // scales of weights

  Architecture finish(const char* name, uint32_t bound) {
    graph_.outputs = {at};
    return {name, bound, std::move(graph_)};
  }
  const Shape& shape() const { return graph_.value(at).shape; }
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
    add(Op::add, {a, b}, graph_.value(a).shape);
    return activation();
  }
  ValueId softmax() {
    add(Op::softmax, {at}, shape());
    return at;
  }

 private:
  ValueId activation() {
    const auto q = graph_.value(at).quantization;
    add(Op::relu, {at}, shape());
    graph_.value(at).quantization = q;
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
    at = graph_.add({"", Type::s8, std::move(out), Quantization{{0.2f}, {-128}, 0}, nullptr});
    graph_.nodes.push_back({"", "", op, std::move(inputs), {at}, {}});
    return graph_.nodes.back();
  }
  ValueId weights(const Shape& shape, int axis) {
    std::vector<int8_t> w(static_cast<size_t>(elements_of(shape)));
    for (int8_t& x : w) {
      x = static_cast<int8_t>(random() >> 24);
    }
    const size_t scales = per_channel ? static_cast<size_t>(shape[static_cast<size_t>(axis)]) : 1;
    Quantization q{std::vector<float>(scales, 0.01f), std::vector<int32_t>(scales, 0), axis};
    q.scales[0] = 0.02f;
    const ValueId id = graph_.add_constant<int8_t>("w", shape, w);
    graph_.value(id).quantization = q;
    return id;
  }
  ValueId bias(int64_t channels) {
    std::vector<int32_t> b(static_cast<size_t>(channels));
    for (int32_t& x : b) {
      x = static_cast<int32_t>(random()) >> 20;
    }
    return graph_.add_constant<int32_t>("b", {channels}, b);
  }
  uint32_t random() { return state_ = state_ * 1664525u + 1013904223u; }

  Graph graph_;
  uint32_t state_ = 5;
};

const Shape kOne = {1, 1};
const Shape kTwo = {2, 2};
const Shape kNone = {0, 0, 0, 0};
const Shape kAround = {1, 1, 1, 1};
const Shape kBehind = {0, 0, 1, 1};

Architecture keyword_spotting() {
  Builder b({1, 49, 10, 1});
  b.conv(64, {10, 4}, kTwo, {4, 1, 5, 1});
  for (int i = 0; i < 4; ++i) {
    b.depthwise({3, 3}, kOne, kAround);
    b.conv(64, kOne, kOne, kNone);
  }
  b.pool();
  b.dense(12);
  b.softmax();
  return b.finish("keyword_spotting", 16000);
}

Architecture visual_wake_words() {
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
  return b.finish("visual_wake_words", 55296);
}

Architecture image_classification() {
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
  return b.finish("image_classification", 49152);
}

Architecture anomaly_detection() {
  Builder b({1, 640});
  b.per_channel = false;
  for (const int64_t units : {128, 128, 128, 128, 8, 128, 128, 128, 128}) {
    b.dense(units, true);
  }
  b.dense(640);
  return b.finish("anomaly_detection", 768);
}

}  // namespace

std::vector<Architecture> architectures() {
  std::vector<Architecture> all;
  all.push_back(keyword_spotting());
  all.push_back(visual_wake_words());
  all.push_back(image_classification());
  all.push_back(anomaly_detection());
  return all;
}

}  // namespace nnlib::importer
