// SPDX-License-Identifier: MIT
#include "importer/quantize/calibrate.hpp"

namespace nnlib::importer {
namespace {

std::vector<ValueId> float_values(const Graph& graph) {
  std::vector<ValueId> ids = graph.inputs;
  for (const Node& node : graph.nodes) {
    for (const ValueId id : node.outputs) {
      if (id != kAbsent && graph.value(id).type == Type::f32) {
        ids.push_back(id);
      }
    }
  }
  return ids;
}

}  // namespace

std::vector<Histogram> spreads_of(const Graph& graph, const std::vector<Sample>& samples,
                                  const RunDone& progress) {
  const std::vector<ValueId> ids = float_values(graph);
  std::vector<Histogram> spreads(graph.values.size());
  Probe probe(graph, ids);
  for (const auto member : {&Histogram::widen, &Histogram::count}) {
    for (const Sample& sample : samples) {
      const auto values = probe.run(sample);
      for (size_t i = 0; i < ids.size(); ++i) {
        (spreads[static_cast<size_t>(ids[i])].*member)(values[i]);
      }
      progress();
    }
  }
  return spreads;
}

namespace {

// Beside each quantized layer with weights another one whose weights are the errors of the first.
struct ErrorLayers {
  Graph graph;
  std::vector<size_t> nodes;    // of the original
  std::vector<ValueId> errors;  // what quantized weights add to their results
};

ErrorLayers error_layers(const Graph& graph, const Rewritten& rewritten) {
  ErrorLayers layers{graph, {}, {}};
  for (size_t i = 0; i < graph.nodes.size(); ++i) {
    if (rewritten.weights[i] == kAbsent) {
      continue;
    }
    const Node& node = graph.nodes[i];
    const Value& exact = graph.value(node.input(1));
    const std::vector<double> stored = to_reals(rewritten.graph.value(rewritten.weights[i]));
    std::vector<float> difference;
    for (size_t k = 0; k < stored.size(); ++k) {
      difference.push_back(static_cast<float>(stored[k] - double{exact.as<float>()[k]}));
    }
    Node error = node;
    const ValueId weights = layers.graph.add_constant<float>("error", exact.shape, difference);
    error.inputs = {node.input(0), weights};
    error.outputs = {layers.graph.add(graph.value(node.output()))};
    layers.nodes.push_back(i);
    layers.errors.push_back(error.output());
    layers.graph.nodes.push_back(std::move(error));
  }
  return layers;
}

void add_to_bias(Graph& graph, Node& node, const std::vector<double>& shift) {
  const Value* bias = graph.find(node.input(2));
  std::vector<float> numbers;
  for (size_t c = 0; c < shift.size(); ++c) {
    const double old = bias != nullptr ? double{bias->as<float>()[c]} : 0.0;
    numbers.push_back(static_cast<float>(old + shift[c]));
  }
  const std::string name = graph.value(node.input(1)).name + "_bias";
  node.inputs.resize(3, kAbsent);
  node.inputs[2] = graph.add_constant<float>(name, {static_cast<int64_t>(shift.size())}, numbers);
}

}  // namespace

Graph corrected(const Graph& graph, const Rewritten& rewritten, const std::vector<Sample>& samples,
                const RunDone& progress) {
  const ErrorLayers layers = error_layers(graph, rewritten);
  Graph result = graph;
  if (layers.nodes.empty()) {
    return result;
  }
  Probe probe(layers.graph, layers.errors);
  std::vector<std::vector<double>> shifts(layers.nodes.size());
  for (const Sample& sample : samples) {
    const auto errors = probe.run(sample);
    for (size_t i = 0; i < errors.size(); ++i) {
      const auto channels =
          static_cast<size_t>(graph.value(graph.nodes[layers.nodes[i]].output()).shape.back());
      shifts[i].resize(channels);
      const double weight =
          static_cast<double>(channels) / static_cast<double>(errors[i].size() * samples.size());
      for (size_t k = 0; k < errors[i].size(); ++k) {
        shifts[i][k % channels] -= errors[i][k] * weight;
      }
    }
    progress();
  }
  for (size_t i = 0; i < shifts.size(); ++i) {
    add_to_bias(result, result.nodes[layers.nodes[i]], shifts[i]);
  }
  return result;
}

std::vector<Error> noise_of(const Graph& graph, const Rewritten& rewritten,
                            const std::vector<Sample>& samples, const RunDone& progress) {
  std::vector<ValueId> exact, stored;
  for (const ValueId id : float_values(graph)) {
    if (const ValueId twin = rewritten.twins[static_cast<size_t>(id)]; twin != kAbsent) {
      exact.push_back(id);
      stored.push_back(twin);
    }
  }
  Probe on_floats(graph, exact);
  Probe on_quanta(rewritten.graph, stored);
  std::vector<Error> all(graph.values.size());
  for (const Sample& sample : samples) {
    const auto a = on_floats.run(sample);
    const auto b = on_quanta.run(sample);
    for (size_t i = 0; i < a.size(); ++i) {
      Error& error = all[static_cast<size_t>(exact[i])];
      for (size_t k = 0; k < a[i].size(); ++k) {
        error.add(a[i][k], b[i][k]);
      }
    }
    progress();
  }
  return all;
}

}  // namespace nnlib::importer
