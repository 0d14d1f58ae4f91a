// SPDX-License-Identifier: MIT
#include "importer/pass/islands.hpp"

#include <map>

namespace nnlib::importer {
namespace {

bool is_quantized(const Value& v) {
  return (v.type == Type::s8 || v.type == Type::u8 || v.type == Type::s32) &&
         v.quantization.has_value();
}

Node convert_node(Op op, const Node& like, ValueId from, ValueId to) {
  return {like.name, like.origin, op, {from}, {to}, {}};
}

}  // namespace

Value dequantized(const Value& constant) {
  const Quantization& q = *constant.quantization;
  const auto integers = to_integers(constant);
  const auto axis = static_cast<size_t>(q.axis);
  size_t run = 1;
  for (size_t i = axis + 1; i < constant.shape.size(); ++i) {
    run *= static_cast<size_t>(constant.shape[i]);
  }
  std::vector<float> floats;
  for (size_t i = 0; i < integers.size(); ++i) {
    const size_t c = q.per_tensor() ? 0 : i / run % q.scales.size();
    floats.push_back(static_cast<float>(integers[i] - q.zero_points[c]) * q.scales[c]);
  }
  return {constant.name, Type::f32, constant.shape, {}, make_bytes<float>(floats)};
}

void add_float_islands(Graph& graph, const std::function<bool(Op)>& takes_integers) {
  std::vector<Node> nodes;
  std::map<ValueId, ValueId> float_of;  // quantized value -> the float one that it was made from
  for (Node node : graph.nodes) {
    bool quantized = false;
    for (const auto* ids : {&node.inputs, &node.outputs}) {
      for (const ValueId id : *ids) {
        quantized = quantized || (id != kAbsent && is_quantized(graph.value(id)));
      }
    }
    if (!quantized || takes_integers(node.op)) {
      nodes.push_back(std::move(node));
      continue;
    }
    for (ValueId& id : node.inputs) {
      if (id == kAbsent || !is_quantized(graph.value(id))) {
        continue;
      }
      const Value v = graph.value(id);
      ValueId& floats = float_of.try_emplace(id, kAbsent).first->second;
      if (v.constant()) {
        floats = graph.add(dequantized(v));
      } else if (floats == kAbsent) {
        floats = graph.add({v.name, Type::f32, v.shape, {}, nullptr});
        nodes.push_back(convert_node(Op::dequantize, node, id, floats));
      }
      id = floats;
    }
    std::vector<Node> after;
    for (ValueId& id : node.outputs) {
      if (id != kAbsent && is_quantized(graph.value(id))) {
        const Value v = graph.value(id);
        const ValueId floats = graph.add({v.name, Type::f32, v.shape, {}, nullptr});
        after.push_back(convert_node(Op::quantize, node, floats, id));
        id = floats;
      }
    }
    nodes.push_back(std::move(node));
    nodes.insert(nodes.end(), after.begin(), after.end());
  }
  graph.nodes = std::move(nodes);
}

}  // namespace nnlib::importer
