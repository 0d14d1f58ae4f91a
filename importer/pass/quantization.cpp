// SPDX-License-Identifier: MIT
#include "importer/pass/quantization.hpp"

namespace nnlib::importer {
bool moves_bytes(Op op) {
  switch (op) {
    case Op::reshape:
    case Op::transpose:
    case Op::slice:
    case Op::concat:
    case Op::tile:
    case Op::expand:
    case Op::gather:
    case Op::depth_to_space:
    case Op::space_to_depth:
    case Op::max_pool:
    case Op::identity:
      return true;
    default:
      return false;
  }
}

Quantization unit_quantization() {
  return {{1.0F}, {0}, 0};
}

bool give_quantization(Graph& graph, ValueId id, const Quantization& quantization) {
  Value& value = graph.value(id);
  if (value.quantization) {
    return *value.quantization == quantization;
  }
  value.quantization = quantization;
  const int from = graph.producer(id);
  if (from < 0 || !moves_bytes(graph.nodes[static_cast<size_t>(from)].op)) {
    return true;
  }
  bool agreed = true;
  const std::vector<ValueId> inputs = graph.nodes[static_cast<size_t>(from)].inputs;
  for (const ValueId input : inputs) {
    const Type type = graph.value(input).type;
    if (type == Type::u8 || type == Type::s8) {
      agreed = give_quantization(graph, input, quantization) && agreed;
    }
  }
  return agreed;
}

}  // namespace nnlib::importer
