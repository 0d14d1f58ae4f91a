// SPDX-License-Identifier: MIT
#include "importer/main/inputs.hpp"

#include <CLI/CLI.hpp>

#include "importer/read/elements.hpp"

namespace nnlib::importer {

InputSets read_inputs(const Graph& graph, const std::vector<std::string>& files,
                      const char* option) {
  if (files.size() != graph.inputs.size()) {
    throw CLI::ValidationError(
        option, std::to_string(graph.inputs.size()) + " files are needed, one for each input");
  }
  InputSets sets(files.empty() ? 1 : 0);
  for (size_t i = 0; i < files.size(); ++i) {
    std::vector<Bytes> of_input = read_element_sets(files[i], graph.value(graph.inputs[i]));
    sets.resize(i == 0 ? of_input.size() : sets.size());
    if (of_input.size() != sets.size()) {
      throw std::runtime_error(files[i] + " is for " + std::to_string(of_input.size()) + " runs, " +
                               files[0] + " for " + std::to_string(sets.size()));
    }
    for (size_t s = 0; s < sets.size(); ++s) {
      sets[s].push_back(std::move(of_input[s]));
    }
  }
  return sets;
}

InputSets noise(const Graph& graph) {
  InputSets sets(1);
  uint32_t random = 1;
  const auto next = [&random] { return random = random * 1664525U + 1013904223U; };
  for (const ValueId id : graph.inputs) {
    const Value& like = graph.value(id);
    const auto count = static_cast<size_t>(like.elements());
    Bytes bytes(count * type_bytes(like.type));
    if (like.type == Type::f32) {
      std::vector<float> floats(count);
      for (float& x : floats) {
        x = static_cast<float>(static_cast<int32_t>(next())) / 0x1p31F;
      }
      bytes = *make_bytes<float>(floats);
    } else {
      for (uint8_t& byte : bytes) {
        byte = static_cast<uint8_t>(next() >> 24);
      }
    }
    sets[0].push_back(std::move(bytes));
  }
  return sets;
}

}  // namespace nnlib::importer
