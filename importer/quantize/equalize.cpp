// SPDX-License-Identifier: MIT
#include "importer/quantize/equalize.hpp"

#include <algorithm>
#include <cmath>

#include "importer/quantize/weights.hpp"

namespace nnlib::importer {
namespace {

// f(a x) = a f(x) for a > 0, and channels stay the last dimension or vary fastest.
bool passes_factors(Op op) {
  switch (op) {
    case Op::relu:
    case Op::leaky_relu:
    case Op::max_pool:
    case Op::average_pool:
    case Op::reshape:
    case Op::identity:
      return true;
    default:
      return false;
  }
}

struct Pair {
  size_t first, second;
};

bool constant_weights(const Graph& graph, const Node& node) {
  const Value* bias = graph.find(node.input(2));
  return has_weights(node.op) && graph.value(node.input(1)).constant() &&
         graph.value(node.input(1)).type == Type::f32 && node.integer("groups", 1) == 1 &&
         (bias == nullptr || bias->constant());
}

std::vector<Pair> pairs_of(const Graph& graph) {
  std::vector<Pair> pairs;
  for (size_t i = 0; i < graph.nodes.size(); ++i) {
    size_t at = i;
    while (constant_weights(graph, graph.nodes[i])) {
      const ValueId y = graph.nodes[at].output();
      const std::vector<int> readers = graph.consumers(y);
      if (readers.size() != 1 || graph.is_output(y)) {
        break;
      }
      at = static_cast<size_t>(readers[0]);
      const Node& next = graph.nodes[at];
      if (constant_weights(graph, next) && next.input(0) == y) {
        pairs.push_back({i, at});
        break;
      }
      if (!passes_factors(next.op)) {
        break;
      }
    }
  }
  return pairs;
}

// The channel of the layer before that a weight is multiplied with.
size_t input_channel(const Node& node, const Value& w, size_t i, size_t channels) {
  if (node.op == Op::depthwise_conv2d) {
    const auto outputs = static_cast<size_t>(w.shape.back());
    return i % outputs / (outputs / channels);
  }
  return i % static_cast<size_t>(w.shape.back()) % channels;
}

std::vector<float> floats_of(const Value& v) {
  return {v.as<float>().begin(), v.as<float>().end()};
}

void put(Graph& graph, Node& node, size_t operand, const std::vector<float>& numbers) {
  const Value old = graph.value(node.input(operand));
  node.inputs[operand] = graph.add_constant<float>(old.name, old.shape, numbers);
}

// Returns how far from 1 the largest factor was.
double equalize(Graph& graph, const Pair& pair) {
  Node& first = graph.nodes[pair.first];
  Node& second = graph.nodes[pair.second];
  const Value& w1 = graph.value(first.input(1));
  const Value& w2 = graph.value(second.input(1));
  const Channels out = output_channels(first.op, w1);
  const auto inner = static_cast<size_t>(second.op == Op::depthwise_conv2d
                                             ? graph.value(second.input(0)).shape.back()
                                             : w2.shape.back());
  if (inner % out.count != 0) {
    return 0;
  }
  std::vector<float> a = floats_of(w1);
  std::vector<float> b = floats_of(w2);
  std::vector<double> largest_a(out.count), largest_b(out.count);
  for (size_t i = 0; i < a.size(); ++i) {
    double& largest = largest_a[out.of(i)];
    largest = std::max(largest, std::fabs(double{a[i]}));
  }
  for (size_t i = 0; i < b.size(); ++i) {
    double& largest = largest_b[input_channel(second, w2, i, out.count)];
    largest = std::max(largest, std::fabs(double{b[i]}));
  }
  std::vector<float> factors(out.count, 1.0F);
  double farthest = 0;
  for (size_t c = 0; c < out.count; ++c) {
    if (largest_a[c] > 0 && largest_b[c] > 0) {
      // Powers of two: nothing is rounded on the way.
      factors[c] =
          static_cast<float>(std::exp2(std::round(std::log2(largest_a[c] / largest_b[c]) / 2)));
      farthest = std::max(farthest, std::fabs(std::log2(double{factors[c]})));
    }
  }
  for (size_t i = 0; i < a.size(); ++i) {
    a[i] /= factors[out.of(i)];
  }
  for (size_t i = 0; i < b.size(); ++i) {
    b[i] *= factors[input_channel(second, w2, i, out.count)];
  }
  if (const Value* bias = graph.find(first.input(2))) {
    std::vector<float> shifted = floats_of(*bias);
    for (size_t c = 0; c < shifted.size(); ++c) {
      shifted[c] /= factors[c];
    }
    put(graph, first, 2, shifted);
  }
  put(graph, first, 1, a);
  put(graph, second, 1, b);
  return farthest;
}

}  // namespace

Graph equalized(const Graph& graph) {
  constexpr int kRounds = 20;
  Graph result = graph;
  const std::vector<Pair> pairs = pairs_of(result);
  double farthest = 1;
  for (int round = 0; round < kRounds && farthest > 0; ++round) {
    farthest = 0;
    for (const Pair& pair : pairs) {
      farthest = std::max(farthest, equalize(result, pair));
    }
  }
  return result;
}

}  // namespace nnlib::importer
