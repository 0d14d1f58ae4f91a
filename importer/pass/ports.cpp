// SPDX-License-Identifier: MIT
#include "importer/pass/ports.hpp"

#include <algorithm>

namespace nnlib::importer {

void strip_softmax(Graph& graph) {
  for (ValueId& id : graph.outputs) {
    const int producer = graph.producer(id);
    if (producer >= 0 && graph.nodes[static_cast<size_t>(producer)].op == Op::softmax) {
      id = graph.nodes[static_cast<size_t>(producer)].input(0);
    }
  }
  graph.remove_dead();
}

void add_float_ports(Graph& graph) {
  const auto floats = [&graph](ValueId id) {
    const Value v = graph.value(id);
    const ValueId port = graph.add({v.name, Type::f32, v.shape, {}, nullptr});
    graph.rename(port, v.name);
    return port;
  };
  for (ValueId& id : graph.inputs) {
    if (graph.value(id).quantization) {
      const ValueId port = floats(id);
      graph.nodes.insert(graph.nodes.begin(),
                         Node{graph.value(port).name, "", Op::quantize, {port}, {id}, {}});
      id = port;
    }
  }
  for (ValueId& id : graph.outputs) {
    if (graph.value(id).quantization) {
      const ValueId port = floats(id);
      graph.nodes.push_back({graph.value(port).name, "", Op::dequantize, {id}, {port}, {}});
      id = port;
    }
  }
}

void add_quantized_ports(Graph& graph) {
  for (ValueId& id : graph.inputs) {
    const std::vector<int> readers = graph.consumers(id);
    if (readers.size() != 1 || graph.is_output(id)) {
      continue;
    }
    const Node& node = graph.nodes[static_cast<size_t>(readers[0])];
    if (node.op == Op::quantize && !graph.is_output(node.output())) {
      const std::string name = graph.value(id).name;
      id = node.output();
      graph.nodes.erase(graph.nodes.begin() + readers[0]);
      graph.rename(id, name);
    }
  }
  for (ValueId& id : graph.outputs) {
    const int giver = graph.producer(id);
    if (giver < 0 || graph.nodes[static_cast<size_t>(giver)].op != Op::dequantize) {
      continue;
    }
    const ValueId bytes = graph.nodes[static_cast<size_t>(giver)].input(0);
    if (!graph.is_input(bytes) && !graph.is_output(bytes) && !graph.value(bytes).constant()) {
      const std::string name = graph.value(id).name;
      id = bytes;
      graph.rename(id, name);
    }
  }
  graph.remove_dead();
}

}  // namespace nnlib::importer
