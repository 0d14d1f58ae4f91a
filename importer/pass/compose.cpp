// SPDX-License-Identifier: MIT
#include "importer/pass/compose.hpp"

#include <algorithm>

#include "importer/pass/host_math.hpp"
#include "importer/pass/quantization.hpp"

namespace nnlib::importer {
namespace {

bool compose_once(Graph& graph, GraphBuilder& b) {
  bool changed = false;
  const size_t count = graph.nodes.size();
  for (size_t i = 0; i < count; ++i) {
    const Node node = graph.nodes[i];
    if (node.outputs.size() != 1 ||
        (graph.consumers(node.output()).empty() && !graph.is_output(node.output()))) {
      continue;
    }
    for (const auto& family : {function_compositions(), normalization_compositions(),
                               movement_compositions(), batch_compositions()}) {
      const auto row = std::find_if(family.begin(), family.end(),
                                    [&](const CompositionRow& r) { return r.op == node.op; });
      if (row == family.end()) {
        continue;
      }
      b.set_context(node);
      const ValueId result = row->compose(b, node);
      if (result != kAbsent) {
        b.replace(node.output(), result);
        changed = true;
        break;
      }
    }
  }
  return changed;
}

// Bytes 0 and 1 at an input, floats behind it.
void truth_input(GraphBuilder& b, ValueId id) {
  Graph& graph = b.graph();
  const Value given = graph.value(id);
  const ValueId bytes =
      graph.add({given.name + "_bytes", Type::u8, given.shape, unit_quantization(), nullptr});
  b.set_context(given.name, "input", given.name);
  const ValueId number = b.emit(Op::dequantize, {bytes}, Type::f32, given.shape);
  graph.replace_uses(id, number);
  std::replace(graph.inputs.begin(), graph.inputs.end(), id, bytes);
  graph.rename(bytes, given.name);
}

void truth_output(GraphBuilder& b, ValueId& id) {
  const Value given = b.value(id);
  b.set_context(given.name, "output", given.name);
  const ValueId bytes = b.emit(Op::quantize, {id}, Type::u8, given.shape, {}, unit_quantization());
  id = bytes;
  b.graph().rename(bytes, given.name);
}

// Arithmetic on 0 and 1 that does what the logic does; kAbsent for another operator.
ValueId logic(GraphBuilder& b, const Node& node) {
  switch (node.op) {
    case Op::logical_and:
      return b.binary(Op::mul, node.input(0), node.input(1));
    case Op::logical_or:
      return b.binary(Op::maximum, node.input(0), node.input(1));
    case Op::logical_xor:
      return b.unary(Op::abs, b.binary(Op::sub, node.input(0), node.input(1)));
    case Op::logical_not:
      return b.binary(Op::sub, b.scalar(1), node.input(0));
    default:
      return kAbsent;
  }
}

}  // namespace

void compose(Graph& graph) {
  GraphBuilder b(graph);
  // Compositions are made of simpler operators: a few rounds are enough for any.
  for (int round = 0; round < 20 && compose_once(graph, b); ++round) {
    graph.sort();
    graph.remove_dead();
  }
}

void lower_truth(Graph& graph) {
  GraphBuilder b(graph);
  const auto is_truth = [&](ValueId id) { return graph.value(id).type == Type::boolean; };
  const std::vector<ValueId> inputs = graph.inputs;
  for (const ValueId id : inputs) {
    if (is_truth(id)) {
      truth_input(b, id);
    }
  }
  std::vector<bool> truth_outputs;
  for (const ValueId id : graph.outputs) {
    truth_outputs.push_back(is_truth(id));
  }
  for (Value& value : graph.values) {
    if (value.type != Type::boolean) {
      continue;
    }
    value.type = Type::f32;
    if (value.constant()) {
      std::vector<float> numbers(value.data->begin(), value.data->end());
      value.data = make_bytes(std::span<const float>(numbers));
    }
  }
  for (size_t i = 0; i < graph.nodes.size(); ++i) {
    const Node node = graph.nodes[i];
    b.set_context(node);
    if (const ValueId result = logic(b, node); result != kAbsent) {
      b.replace(node.output(), result);
    }
    if (node.op == Op::cast && graph.value(node.input(0)).type == graph.value(node.output()).type) {
      b.replace(node.output(), node.input(0));
    }
  }
  for (size_t i = 0; i < graph.outputs.size(); ++i) {
    if (truth_outputs[i]) {
      truth_output(b, graph.outputs[i]);
    }
  }
  graph.sort();
  graph.remove_dead();
}

}  // namespace nnlib::importer
