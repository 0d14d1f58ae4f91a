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
    return graph.add({v.name, Type::f32, v.shape, {}, nullptr});
  };
  for (ValueId& id : graph.inputs) {
    if (graph.value(id).quantization) {
      const ValueId port = floats(id);
      graph.nodes.insert(graph.nodes.begin(), Node{"", "", Op::quantize, {port}, {id}, {}});
      id = port;
    }
  }
  for (ValueId& id : graph.outputs) {
    if (graph.value(id).quantization) {
      const ValueId port = floats(id);
      graph.nodes.push_back({"", "", Op::dequantize, {id}, {port}, {}});
      id = port;
    }
  }
}

}  // namespace nnlib::importer
