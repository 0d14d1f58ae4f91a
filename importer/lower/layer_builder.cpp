// SPDX-License-Identifier: MIT
#include "importer/lower/layer_builder.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace nnlib::importer {

std::string c_float(float value) {
  if (std::isnan(value)) {
    return "NAN";
  }
  if (std::isinf(value)) {
    return value > 0 ? "INFINITY" : "-INFINITY";
  }
  char text[32];
  std::snprintf(text, sizeof(text), "%af", static_cast<double>(value));
  return text;
}

std::string c_words(std::span<const uint32_t> words) {
  std::string text = "(uint32_t[]){";
  for (size_t i = 0; i < words.size(); ++i) {
    text += (i == 0 ? "" : ", ") + std::to_string(words[i]);
  }
  return text + "}";
}

LayerBuilder& LayerBuilder::set(const Member<ai_shape>& m, std::vector<uint32_t> values) {
  std::vector<uint32_t>& kept = layer_.words.emplace_back(std::move(values));
  const auto count = static_cast<uint32_t>(kept.size());
  return number(
      m, ai_shape{AI_DIMS_WORD(AI_SHAPE_TYPE, count), kept.data()},
      "{AI_DIMS_WORD(AI_SHAPE_TYPE, " + std::to_string(count) + "), " + c_words(kept) + "}");
}

LayerBuilder& LayerBuilder::set(const Member<const uint32_t*>& m, std::vector<uint32_t> values) {
  std::vector<uint32_t>& kept = layer_.words.emplace_back(std::move(values));
  return number(m, static_cast<const uint32_t*>(kept.data()), "(const " + c_words(kept).substr(1));
}

LayerBuilder& LayerBuilder::set(const Member<const uint16_t*>& m,
                                const std::vector<uint16_t>& values) {
  std::vector<uint32_t>& kept = layer_.words.emplace_back((values.size() + 1) / 2);
  std::memcpy(kept.data(), values.data(), values.size() * sizeof(uint16_t));
  std::string text = "(const uint16_t[]){";
  for (size_t i = 0; i < values.size(); ++i) {
    text += (i == 0 ? "" : ", ") + std::to_string(values[i]);
  }
  return number(m, reinterpret_cast<const uint16_t*>(kept.data()), text + "}");
}

LayerBuilder& LayerBuilder::set(const Member<const ai_array*>& m, const Parameters& parameters) {
  return number(m, &parameters.record, "&" + parameters.name);
}

LayerBuilder& LayerBuilder::append(uint32_t list, Tensor* tensor) {
  layer_.lists[list].push_back(tensor);
  auto& entries = layer_.list_entries[list];
  entries.push_back(tensor != nullptr ? &tensor->record : nullptr);
  layer_.list_records[list] = {static_cast<uint16_t>(entries.size()), entries.data(), nullptr};
  if (tensor != nullptr && tensor->storage.buffer != nullptr) {
    if (list == AI_CHAIN_OUTPUT || list == AI_CHAIN_SCRATCH) {
      tensor->storage.buffer->written(index_);
    } else {
      tensor->storage.buffer->read(index_);
    }
  }
  return *this;
}

void LayerBuilder::functions_used(const Function& function) {
  if (!function.definition.empty() &&
      std::none_of(network_.definitions.begin(), network_.definitions.end(),
                   [&](const Function& f) { return f.name == function.name; })) {
    network_.definitions.push_back(function);
  }
}

}  // namespace nnlib::importer
