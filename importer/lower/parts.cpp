// SPDX-License-Identifier: MIT
#include "importer/lower/parts.hpp"

#include <algorithm>

namespace nnlib::importer {
namespace {

// The value of another shape that has the elements first.
ValueId before_reshapes(const Graph& graph, ValueId id) {
  for (int at = graph.producer(id); at >= 0; at = graph.producer(id)) {
    const Node& node = graph.nodes[static_cast<size_t>(at)];
    const bool reshapes = node.op == Op::reshape || node.op == Op::identity;
    if (!reshapes || graph.value(node.input(0)).elements() != graph.value(id).elements()) {
      break;
    }
    id = node.input(0);
  }
  return id;
}

// Some node computes it where it is told to.
bool can_be_placed(const Graph& graph, ValueId id, const Sharing& sharing) {
  const int at = graph.producer(id);
  if (at < 0) {
    return false;
  }
  const Node& node = graph.nodes[static_cast<size_t>(at)];
  return node.op != Op::slice || !sharing.slices || !run_of_slice(graph, node);
}

void add_parts(const Graph& graph, const Node& concat, const Sharing& sharing,
               std::map<ValueId, Part>& parts) {
  const Value& y = graph.value(concat.output());
  const auto axis = static_cast<size_t>(concat.integer("axis"));
  if (axis >= y.shape.size() ||
      std::any_of(y.shape.begin(), y.shape.begin() + static_cast<std::ptrdiff_t>(axis),
                  [](int64_t size) { return size != 1; })) {
    return;
  }
  for (const ValueId id : concat.inputs) {
    // Constants are copied by the concatenation's layer alone.
    const ValueId made = before_reshapes(graph, id);
    if (graph.value(id).elements() < 0 || graph.value(made).constant()) {
      return;
    }
  }
  uint64_t offset = 0;
  for (const ValueId id : concat.inputs) {
    const Value& x = graph.value(id);
    const ValueId made = before_reshapes(graph, id);
    const Value& first = graph.value(made);
    if (offset % sharing.alignment == 0 && !parts.contains(made) &&
        can_be_placed(graph, made, sharing) && first.type == y.type &&
        first.quantization == y.quantization && x.quantization == y.quantization) {
      parts[made] = {concat.output(), offset};
    }
    offset += static_cast<uint64_t>(x.elements()) * type_bytes(x.type);
  }
}

}  // namespace

std::map<ValueId, Part> parts_of_concatenations(const Graph& graph, const Sharing& sharing) {
  std::map<ValueId, Part> parts;
  for (auto node = graph.nodes.rbegin(); sharing.concatenations && node != graph.nodes.rend();
       ++node) {
    if (node->op == Op::concat) {
      add_parts(graph, *node, sharing, parts);
    }
  }
  return parts;
}

std::optional<uint64_t> run_of_slice(const Graph& graph, const Node& node) {
  const Value& x = graph.value(node.input(0));
  const auto starts = node.integers("starts");
  const auto ends = node.integers("ends");
  const auto steps = node.integers("steps", std::vector<int64_t>(starts.size(), 1));
  if (starts.size() != x.shape.size() || ends.size() != x.shape.size() ||
      steps.size() != x.shape.size()) {
    return std::nullopt;
  }
  int64_t offset = 0;
  bool single = true;  // so far one index of each dimension
  for (size_t i = 0; i < x.shape.size(); ++i) {
    const bool whole = starts[i] == 0 && ends[i] == x.shape[i];
    if (steps[i] != 1 || (!single && !whole)) {
      return std::nullopt;
    }
    single = single && ends[i] - starts[i] == 1;
    offset = offset * x.shape[i] + starts[i];
  }
  return static_cast<uint64_t>(offset) * type_bytes(x.type);
}

}  // namespace nnlib::importer
