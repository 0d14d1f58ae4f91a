// SPDX-License-Identifier: MIT
#include <cmath>
#include <nlohmann/json.hpp>

#include "importer/report/report.hpp"

namespace nnlib::importer {
namespace {

using Json = nlohmann::ordered_json;

template <class T, class Convert>
Json per_core(const PerCore<T>& figures, Convert convert) {
  Json out;
  for (size_t core = 0; core < kReportCores.size(); ++core) {
    out[kReportCores[core].name] = convert(figures[core]);
  }
  return out;
}

Json flash_json(const std::optional<uint32_t>& bytes) {
  return bytes ? Json(*bytes) : Json();
}

int64_t rounded(double figure) {
  return std::llround(figure);
}

// Writers as {"layer": 3} or {"input": 0}.
Json sources(const std::vector<int>& reads) {
  Json out = Json::array();
  for (const int from : reads) {
    out.push_back(from > kFromInput ? Json{{"layer", from}} : Json{{"input", kFromInput - from}});
  }
  return out;
}

Json port_json(const ReportPort& port) {
  Json out = {{"name", port.name}, {"shape", port.shape}, {"type", port.type}};
  if (port.scale) {
    out["scale"] = *port.scale;
    out["zero_point"] = port.zero_point;
  }
  return out;
}

Json layer_json(const ReportLayer& layer) {
  const auto estimate = [](const std::optional<Estimate>& e) {
    return e ? Json{{"count", rounded(e->instructions)}, {"basis", basis_name(e->basis)}} : Json();
  };
  const Dims& d = layer.dims;
  Json out = {{"name", layer.name},
              {"operator", layer.origin},
              {"model_name", layer.model_name},
              {"function", layer.function},
              {"shape", {d.n, d.c, d.w, d.h}},
              {"type", layer.type},
              {"macs", layer.macs},
              {"weight_bytes", layer.weight_bytes},
              {"live_bytes", layer.live_bytes},
              {"scratch_bytes", layer.scratch_bytes},
              {"heap_bytes", layer.heap_bytes},
              {"flash_bytes", per_core(layer.flash, flash_json)},
              {"instructions", per_core(layer.instructions, estimate)},
              {"reads", sources(layer.reads)}};
  if (layer.ticks) {
    out["ticks"] = *layer.ticks;
  }
  return out;
}

Json totals_json(const Report& report) {
  return {{"arena_bytes", report.arena_bytes},
          {"bound", report.bound},
          {"bound_with_scratch", report.bound_with_scratch},
          {"constant_bytes", report.constant_bytes},
          {"scale_bytes", report.scale_bytes},
          {"heap_bytes", report.heap_bytes},
          {"macs", report.macs},
          {"instructions", per_core(report.instructions, rounded)},
          {"layers_without_estimate", report.without_estimate},
          {"code_bytes", per_core(report.code_bytes, [](uint32_t bytes) { return bytes; })}};
}

}  // namespace

std::string report_json(const Report& report) {
  Json out = {{"network", report.name},  {"totals", totals_json(report)},
              {"inputs", Json::array()}, {"outputs", Json::array()},
              {"layers", Json::array()}, {"functions", Json::array()},
              {"arena", Json::array()}};
  for (const ReportPort& port : report.inputs) {
    out["inputs"].push_back(port_json(port));
  }
  for (const ReportPort& port : report.outputs) {
    out["outputs"].push_back(port_json(port));
    out["outputs"].back()["reads"] = sources(port.reads);
  }
  for (const ReportLayer& layer : report.layers) {
    out["layers"].push_back(layer_json(layer));
  }
  for (const ReportFunction& f : report.functions) {
    out["functions"].push_back(
        {{"name", f.name}, {"layers", f.layers}, {"flash_bytes", per_core(f.flash, flash_json)}});
  }
  for (const ReportBuffer& b : report.buffers) {
    out["arena"].push_back({{"name", b.name},
                            {"offset", b.offset},
                            {"bytes", b.bytes},
                            {"first", b.first},
                            {"last", b.last},
                            {"scratch", b.scratch}});
  }
  if (!report.tick_unit.empty()) {
    out["ticks"] = {{"unit", report.tick_unit}, {"total", report.ticks}};
  }
  return out.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace nnlib::importer
