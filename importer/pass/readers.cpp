// SPDX-License-Identifier: MIT
#include "importer/pass/readers.hpp"

#include <algorithm>

namespace nnlib::importer {

Node* only_reader(Graph& graph, const Node& node) {
  const ValueId out = node.output();
  if (node.outputs.size() != 1 || graph.is_output(out)) {
    return nullptr;
  }
  const auto readers = graph.consumers(out);
  if (readers.size() != 1) {
    return nullptr;
  }
  Node& reader = graph.nodes[static_cast<size_t>(readers[0])];
  return std::count(reader.inputs.begin(), reader.inputs.end(), out) == 1 ? &reader : nullptr;
}

void take_over(Node& node, Node& reader) {
  node.outputs = reader.outputs;
  reader.inputs.clear();
  reader.outputs.clear();
}

void fuse_reader(const std::string& name, Node& node, Node& reader) {
  node.attributes[name] = std::string(op_name(reader.op));
  for (const auto& [attribute, value] : reader.attributes) {
    node.attributes[name + "_" + attribute] = value;
  }
  take_over(node, reader);
}

}  // namespace nnlib::importer
