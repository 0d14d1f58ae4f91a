// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>

#include "importer/pass/fusing.hpp"
#include "importer/pass/readers.hpp"

namespace nnlib::importer {
namespace {

bool is_bound(const Node* node) {
  return node != nullptr && (node->op == Op::relu || node->op == Op::clip);
}

bool same_numbers(const Value& a, const Value& b) {
  return a.type == b.type && a.quantization == b.quantization;
}

// maximum(bound(x)) is bound(maximum(x)). The node at `second` reads that at `first`.
void swap_nodes(Graph& graph, size_t first, size_t second) {
  Node& before = graph.nodes[first];
  Node& after = graph.nodes[second];
  Value between = graph.value(graph.nodes[second].output());
  between.quantization = graph.value(before.input(0)).quantization;
  const ValueId result = after.output();
  const ValueId source = before.input(0);
  const ValueId middle = graph.add(std::move(between));
  after.inputs[0] = source;
  after.outputs = {middle};
  before.inputs[0] = middle;
  before.outputs = {result};
  std::swap(before, after);
}

size_t index_of(const Graph& graph, const Node& node) {
  return static_cast<size_t>(&node - graph.nodes.data());
}

// The pooling behind a convolution, with a bound between them at most.
const Node* pooling_behind(Graph& graph, const Node& convolution) {
  const Node* reader = only_reader(graph, convolution);
  if (is_bound(reader)) {
    reader = only_reader(graph, *reader);
  }
  const bool pools =
      reader != nullptr && (reader->op == Op::max_pool || reader->op == Op::average_pool);
  return pools ? reader : nullptr;
}

// Float convolutions take the bound before the pooling, integers leave it after.
void settle_order(Graph& graph, size_t at) {
  Node* reader = only_reader(graph, graph.nodes[at]);
  Node* next = only_reader(graph, *reader);
  const Value& map = graph.value(graph.nodes[at].output());
  if (next == nullptr || !same_numbers(map, graph.value(next->output()))) {
    return;
  }
  const bool swaps = map.type == Type::f32 ? reader->op == Op::max_pool && is_bound(next) &&
                                                 !graph.nodes[at].has("activation")
                                           : is_bound(reader) && next->op == Op::max_pool;
  if (swaps) {
    swap_nodes(graph, index_of(graph, *reader), index_of(graph, *next));
  }
}

// The float maximum of a fused layer starts at -2^31.
bool bounded_below(const Node& convolution) {
  const std::string activation = convolution.text("activation");
  constexpr std::array<std::string_view, 8> kBounded = {
      "relu", "sigmoid", "hard_sigmoid", "tanh", "elu", "selu", "soft_plus", "soft_sign"};
  return std::find(kBounded.begin(), kBounded.end(), activation) != kBounded.end() ||
         (activation == "clip" && convolution.number("activation_min", -1e30) > -1e9);
}

// All windows inside the map, of a number of cells that divides without rounding.
bool divides_exactly(const Node& pool, const Value& map, const Value& pooled) {
  const auto kernel = pool.integers("kernel", {1, 1});
  const auto strides = pool.integers("strides", {1, 1});
  for (const int64_t pad : pool.integers("pads")) {
    if (pad != 0) {
      return false;
    }
  }
  for (size_t i = 0; i < 2; ++i) {
    if ((pooled.shape[i + 1] - 1) * strides[i] + kernel[i] > map.shape[i + 1]) {
      return false;
    }
  }
  const int64_t cells = kernel[0] * kernel[1];
  return (cells & (cells - 1)) == 0;
}

bool gives_same_numbers(const Node& convolution, const Node& pool, const Value& map,
                        const Value& pooled) {
  const bool average = pool.op == Op::average_pool;
  if (map.type == Type::f32) {
    return average ? divides_exactly(pool, map, pooled) : bounded_below(convolution);
  }
  // Alone, the average of int8 rounds to nearest.
  const bool fixed = map.quantization && map.quantization->fixed;
  return same_numbers(map, pooled) && (!average || fixed || map.type == Type::u8);
}

bool saves_memory(const Graph& graph, const Node& convolution, const Node& pool) {
  const Value& in = graph.value(convolution.input(0));
  const Value& map = graph.value(convolution.output());
  const Value& pooled = graph.value(pool.output());
  if (map.rank() != 4 || pooled.rank() != 4) {
    return false;
  }
  const int64_t rows = std::min(pool.integers("kernel", {1, 1}).at(0), map.shape[1]);
  const int64_t window = rows * map.shape[2] * map.shape[3];
  return in.elements() + window + pooled.elements() <
         map.elements() + std::max(in.elements(), pooled.elements());
}

}  // namespace

void fuse_pooling(Graph& graph) {
  for (size_t at = 0; at < graph.nodes.size(); ++at) {
    if (graph.nodes[at].op != Op::conv2d && graph.nodes[at].op != Op::depthwise_conv2d) {
      continue;
    }
    const Node* pool = pooling_behind(graph, graph.nodes[at]);
    if (pool == nullptr || !saves_memory(graph, graph.nodes[at], *pool)) {
      continue;
    }
    settle_order(graph, at);
    Node& node = graph.nodes[at];
    Node* reader = only_reader(graph, node);
    if (is_bound(reader) && !node.has("activation") &&
        graph.value(node.output()).type == Type::f32) {
      fuse_reader("activation", node, *reader);
      reader = only_reader(graph, node);
    }
    if (reader != nullptr && (reader->op == Op::max_pool || reader->op == Op::average_pool) &&
        gives_same_numbers(node, *reader, graph.value(node.output()),
                           graph.value(reader->output()))) {
      fuse_reader("pool", node, *reader);
    }
  }
  graph.remove_dead();
}

}  // namespace nnlib::importer
