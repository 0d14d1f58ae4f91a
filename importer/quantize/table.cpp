// SPDX-License-Identifier: MIT
#include "importer/quantize/table.hpp"

#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include "importer/report/table.hpp"

namespace nnlib::importer {
namespace {

std::string decibels(const Error& error) {
  if (error.noise == 0) {
    return "exact";
  }
  char text[32];
  std::snprintf(text, sizeof(text), "%.1f", error.decibels());
  return text;
}

std::string type_of(const LayerNoise& layer, const std::string& type) {
  const bool all = layer.quantized == layer.nodes;
  return layer.quantized == 0 ? "float" : all ? type : type + ", float";
}

}  // namespace

std::string noise_table(const Quantized& quantized, const std::string& type) {
  Table table{{{"layer", Table::name},
               {"operator", Table::text},
               {"type", Table::text},
               {"signal/noise dB", Table::number}},
              {}};
  for (const LayerNoise& layer : quantized.layers) {
    table.rows.push_back({layer.name, layer.origin, type_of(layer, type), decibels(layer.noise)});
  }
  table.sums = {"outputs", "", "", decibels(quantized.outputs)};
  return table_text(table) + "channels equalized: " + (quantized.equalized ? "yes" : "no") +
         "; biases corrected: " + (quantized.corrected ? "yes" : "no") + "\n";
}

std::string size_table(const Report& before, const Report& after, const std::string& type) {
  Table table{{{"bytes", Table::text}, {"float", Table::number}, {type, Table::number}}, {}};
  const auto row = [&](const char* what, uint64_t a, uint64_t b) {
    table.rows.push_back({what, std::to_string(a), std::to_string(b)});
  };
  row("weights and other constants", before.constant_bytes + before.scale_bytes,
      after.constant_bytes + after.scale_bytes);
  for (size_t core = 0; core < kReportCores.size(); ++core) {
    row((std::string("code on ") + kReportCores[core].title).c_str(), before.code_bytes[core],
        after.code_bytes[core]);
  }
  row("arena", before.arena_bytes, after.arena_bytes);
  if (before.heap_bytes + after.heap_bytes != 0) {
    row("heap of a call", before.heap_bytes, after.heap_bytes);
  }
  return table_text(table);
}

size_t right_answers(const Graph& graph, const std::vector<Sample>& samples,
                     std::span<const int64_t> labels) {
  if (labels.size() != samples.size()) {
    throw std::runtime_error(std::to_string(labels.size()) + " labels for " +
                             std::to_string(samples.size()) + " samples");
  }
  Probe probe(graph, {graph.outputs.at(0)});
  size_t right = 0;
  for (size_t i = 0; i < samples.size(); ++i) {
    const std::vector<double> scores = probe.run(samples[i])[0];
    right += std::max_element(scores.begin(), scores.end()) - scores.begin() == labels[i];
  }
  return right;
}

}  // namespace nnlib::importer
