// SPDX-License-Identifier: MIT
#include "importer/run/interpreter.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

#include "importer/lower/activation.hpp"
#include "importer/lower/lowering.hpp"

namespace nnlib::importer {
namespace {

// Functions without a layer on floats, and movement of all elements.
bool computed_by_host(const Graph& graph, const Node& node) {
  if (node.op == Op::identity || node.op == Op::reshape) {
    return true;
  }
  const bool floats = graph.value(node.input(0)).type == Type::f32;
  return floats && (node.op == Op::lookup ||
                    (!activation_of(node) && unary_value(node, 0.0) && node.inputs.size() == 1));
}

// Between the entries of the table linearly, beyond them as at its ends.
double interpolate(std::span<const float> table, double place) {
  const double last = static_cast<double>(table.size() - 1);
  if (std::isnan(place)) {
    return place;
  }
  const double kept = std::clamp(place, 0.0, last);
  const auto below = static_cast<size_t>(std::min(std::floor(kept), last - 1));
  const double part = kept - static_cast<double>(below);
  return part == 0 ? double{table[below]}
                   : (1 - part) * double{table[below]} + part * double{table[below + 1]};
}

Bytes host_result(const Graph& graph, const Node& node, const Bytes& input) {
  if (node.op == Op::identity || node.op == Op::reshape) {
    return input;
  }
  Bytes output(input.size());
  const double first = node.number("first");
  const double step = node.number("step", 1);
  for (size_t at = 0; at + sizeof(float) <= input.size(); at += sizeof(float)) {
    float x = 0;
    std::memcpy(&x, input.data() + at, sizeof(x));
    const double y = node.op == Op::lookup ? interpolate(graph.value(node.input(1)).as<float>(),
                                                         (double{x} - first) / step)
                                           : *unary_value(node, double{x});
    const auto rounded = static_cast<float>(y);
    std::memcpy(output.data() + at, &rounded, sizeof(rounded));
  }
  return output;
}

size_t bytes_of(const Value& v) {
  return static_cast<size_t>(v.elements()) * type_bytes(v.type);
}

}  // namespace

Interpreter::Interpreter(Graph graph) : graph_(std::move(graph)) {
  Refusals refusals;
  for (const Node& node : graph_.nodes) {
    try {
      steps_.push_back(make_step(node));
    } catch (const Refused& no) {
      refusals.add(node, no.what());
    }
  }
  if (!refusals.empty()) {
    throw Refused(refusals);
  }
}

Interpreter::Step Interpreter::make_step(const Node& node) const {
  Step step;
  Graph part;
  Node copy = node;
  std::map<ValueId, ValueId> in_part;
  const auto take = [&](ValueId& id) {
    if (id == kAbsent) {
      return false;
    }
    const auto [found, added] = in_part.try_emplace(id, kAbsent);
    if (added) {
      found->second = part.add(graph_.value(id));
    }
    id = found->second;
    return added;
  };
  for (ValueId& id : copy.inputs) {
    const ValueId whole = id;
    if (take(id) && !graph_.value(whole).constant()) {
      step.inputs.push_back(whole);
      part.inputs.push_back(id);
    }
  }
  for (ValueId& id : copy.outputs) {
    if (take(id)) {
      part.outputs.push_back(id);
    }
  }
  if (!node.inputs.empty() && computed_by_host(graph_, node)) {
    return step;
  }
  part.nodes.push_back(std::move(copy));
  step.network = lower(part);
  step.runner = std::make_unique<Runner>(*step.network, plan_memory(*step.network));
  return step;
}

Interpreter::Values Interpreter::begin(const std::vector<Bytes>& inputs) const {
  if (inputs.size() != graph_.inputs.size()) {
    throw std::runtime_error("the network has " + std::to_string(graph_.inputs.size()) + " inputs");
  }
  Values values(graph_.values.size());
  for (size_t i = 0; i < inputs.size(); ++i) {
    const Value& v = graph_.value(graph_.inputs[i]);
    if (inputs[i].size() != bytes_of(v)) {
      throw std::runtime_error("input '" + v.name + "' has " + std::to_string(inputs[i].size()) +
                               " bytes instead of " + std::to_string(bytes_of(v)));
    }
    values[static_cast<size_t>(graph_.inputs[i])] = inputs[i];
  }
  return values;
}

std::vector<Bytes> Interpreter::step(size_t index, const Values& values) {
  const Node& node = graph_.nodes[index];
  Step& step = steps_[index];
  const auto elements = [&](ValueId id) -> const Bytes& {
    const Value& v = graph_.value(id);
    return v.constant() ? *v.data : values.at(static_cast<size_t>(id));
  };
  if (step.runner == nullptr) {
    return {host_result(graph_, node, elements(node.input(0)))};
  }
  std::vector<Bytes> inputs;
  for (const ValueId id : step.inputs) {
    inputs.push_back(elements(id));
  }
  return step.runner->run(inputs);
}

Interpreter::Values Interpreter::run(const std::vector<Bytes>& inputs) {
  Values values = begin(inputs);
  for (size_t i = 0; i < graph_.nodes.size(); ++i) {
    std::vector<Bytes> outputs = step(i, values);
    const std::vector<ValueId>& ids = graph_.nodes[i].outputs;
    for (size_t o = 0, given = 0; o < ids.size(); ++o) {
      if (ids[o] != kAbsent) {
        values[static_cast<size_t>(ids[o])] = std::move(outputs.at(given++));
      }
    }
  }
  return values;
}

}  // namespace nnlib::importer
