// SPDX-License-Identifier: MIT
// Measured times of nnlib::profile beside the layers.
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "importer/report/report.hpp"

namespace nnlib::importer {
namespace {

[[noreturn]] void refuse(const std::string& what) {
  throw std::runtime_error("the profile is not of this network: " + what);
}

void add_times(Report& report, const nlohmann::json& profile) {
  const auto& layers = profile.at("layers");
  if (layers.size() != report.layers.size()) {
    refuse("it has " + std::to_string(layers.size()) + " layers instead of " +
           std::to_string(report.layers.size()));
  }
  report.tick_unit = profile.at("unit").get<std::string>();
  report.ticks = 0;
  for (size_t i = 0; i < layers.size(); ++i) {
    ReportLayer& layer = report.layers[i];
    const auto function = layers[i].at("function").get<std::string>();
    const Dims& d = layer.dims;
    if (layers[i].at("shape").get<std::vector<uint32_t>>() !=
        std::vector<uint32_t>{d.n, d.c, d.w, d.h}) {
      refuse("layer " + std::to_string(i) + " has another shape");
    }
    // A function of the network itself has no name there.
    if (function != layer.function && function != "(application)") {
      refuse("layer " + std::to_string(i) + " is " + function + " instead of " + layer.function);
    }
    layer.ticks = layers[i].at("ticks").get<uint64_t>();
    report.ticks += *layer.ticks;
  }
}

}  // namespace

void add_profile(Report& report, const std::string& json) {
  try {
    add_times(report, nlohmann::json::parse(json));
  } catch (const nlohmann::json::exception& error) {
    throw std::runtime_error(std::string("the profile cannot be read: ") + error.what());
  }
}

}  // namespace nnlib::importer
