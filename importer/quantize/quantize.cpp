// SPDX-License-Identifier: MIT
#include "importer/quantize/quantize.hpp"

#include <algorithm>

#include "importer/graph/refusals.hpp"
#include "importer/quantize/equalize.hpp"

namespace nnlib::importer {
namespace {

std::vector<bool> choices(Use use) {
  return use == Use::automatic ? std::vector{false, true} : std::vector{use == Use::always};
}

// Equalization does nothing for weights with a scale for each channel.
std::vector<bool> equalizations(const QuantizeOptions& options) {
  const bool one_scale = is_fixed_point(options.target) || !options.weights.per_channel;
  return choices(one_scale ? options.equalize : Use::never);
}

void add(Error& all, const Error& one) {
  all.signal += one.signal;
  all.noise += one.noise;
}

std::vector<LayerNoise> layers_of(const Graph& graph, const Rewritten& rewritten,
                                  const std::vector<Error>& noise) {
  std::vector<LayerNoise> layers;
  for (size_t i = 0; i < graph.nodes.size(); ++i) {
    const Node& node = graph.nodes[i];
    if (node.op == Op::reshape || node.op == Op::identity) {
      continue;
    }
    for (const ValueId id : node.outputs) {
      if (id == kAbsent || rewritten.twins[static_cast<size_t>(id)] == kAbsent) {
        continue;
      }
      const std::string name = node.name.empty() ? graph.value(id).name : node.name;
      auto layer = std::find_if(layers.begin(), layers.end(),
                                [&](const LayerNoise& known) { return known.name == name; });
      if (layer == layers.end()) {
        const std::string word = std::string(op_name(node.op));
        layer = layers.insert(layer, {name, node.origin.empty() ? word : node.origin});
      }
      layer->nodes += 1;
      layer->quantized += rewritten.quantized[i] ? 1 : 0;
      add(layer->noise, noise[static_cast<size_t>(id)]);
    }
  }
  std::stable_sort(layers.begin(), layers.end(), [](const LayerNoise& a, const LayerNoise& b) {
    return a.noise.decibels() < b.noise.decibels();
  });
  return layers;
}

Quantized result_of(const Graph& graph, Rewritten rewritten, const std::vector<Error>& noise) {
  Quantized result;
  result.layers = layers_of(graph, rewritten, noise);
  for (const ValueId id : graph.outputs) {
    add(result.outputs, noise[static_cast<size_t>(id)]);
  }
  result.graph = std::move(rewritten.graph);
  return result;
}

}  // namespace

Quantized quantize(const Graph& graph, const std::vector<Sample>& samples,
                   const QuantizeOptions& options, const RunsDone& progress) {
  for (const Value& v : graph.values) {
    if (v.quantization) {
      throw Refused("the model is quantized already");
    }
  }
  if (samples.empty()) {
    throw Refused("no data to calibrate with");
  }
  const std::vector<bool> corrections = choices(options.correct_bias);
  const bool corrects = corrections.back();
  const size_t spreads_and_errors = 2 + (corrects ? 1 : 0);
  const size_t all =
      equalizations(options).size() * samples.size() * (spreads_and_errors + corrections.size());
  size_t done = 0;
  const RunDone run_done = [&] { progress(++done, all); };
  std::optional<Quantized> best;
  for (const bool equalizes : equalizations(options)) {
    const Graph from = equalizes ? equalized(graph) : graph;
    const Formats formats = choose_formats(from, spreads_of(from, samples, run_done), options);
    const Rewritten plain = rewrite(from, formats, options);
    for (const bool correct : corrections) {
      Rewritten tried =
          correct ? rewrite(corrected(from, plain, samples, run_done), formats, options) : plain;
      const std::vector<Error> noise = noise_of(from, tried, samples, run_done);
      Quantized result = result_of(from, std::move(tried), noise);
      result.equalized = equalizes;
      result.corrected = correct;
      if (!best || result.outputs.noise < best->outputs.noise) {
        best = std::move(result);
      }
    }
  }
  return *std::move(best);
}

}  // namespace nnlib::importer
