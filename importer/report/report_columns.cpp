// SPDX-License-Identifier: MIT
#include "importer/report/report_columns.hpp"

#include <cmath>
#include <set>

namespace nnlib::importer {
namespace {

std::string or_dash(uint64_t number) {
  return number == 0 ? "-" : grouped(number);
}

std::string shape_of(const Dims& d) {
  return (d.n == 1 ? "" : std::to_string(d.n) + "x") + std::to_string(d.h) + "x" +
         std::to_string(d.w) + "x" + std::to_string(d.c);
}

std::string text_of(const std::optional<Estimate>& estimate) {
  if (!estimate) {
    return "-";
  }
  constexpr const char* kMarks[] = {"", "~", "*"};
  return kMarks[static_cast<size_t>(estimate->basis)] +
         grouped(static_cast<uint64_t>(std::llround(estimate->instructions)));
}

std::string share(uint64_t part, uint64_t whole) {
  char text[16];
  std::snprintf(text, sizeof(text), "%.1f %%",
                whole == 0 ? 0 : 100 * static_cast<double>(part) / static_cast<double>(whole));
  return text;
}

void add_times(const Report& report, Table& table) {
  if (report.tick_unit.empty()) {
    return;
  }
  table.columns.push_back({report.tick_unit, Table::number, "measured, from the profile"});
  table.columns.push_back({"share", Table::number, "of the measured time"});
  for (size_t i = 0; i < table.rows.size(); ++i) {
    const uint64_t ticks = report.layers[i].ticks.value_or(0);
    table.rows[i].push_back(grouped(ticks));
    table.rows[i].push_back(share(ticks, report.ticks));
  }
  table.sums.push_back(grouped(report.ticks));
  table.sums.push_back("");
}

}  // namespace

std::string grouped(uint64_t number) {
  std::string text = std::to_string(number);
  for (size_t at = text.size(); at > 3;) {
    at -= 3;
    text.insert(at, ",");
  }
  return text;
}

std::string shape_of(const ReportPort& port) {
  std::string text;
  for (const int64_t size : port.shape) {
    text += (text.empty() ? "" : " x ") + std::to_string(size);
  }
  return text.empty() ? "one value" : text;
}

std::string quantization_of(const ReportPort& port) {
  char text[64] = "";
  if (port.scale) {
    std::snprintf(text, sizeof(text), "scale %.9g, zero point %d", double{*port.scale},
                  port.zero_point);
  }
  return text;
}

Table layer_table(const Report& report) {
  Table table;
  table.columns = {
      {"#", Table::number, "place in the network"},
      {"operator", Table::text, "the model's word"},
      {"name", Table::name, "in the model"},
      {"function", Table::text, "of the runtime"},
      {"output", Table::text, "height x width x channels"},
      {"type", Table::text, "of the output"},
      {"MACs", Table::number, "multiply-accumulates"},
      {"weights", Table::number, "bytes of constants that the layer reads"},
      {"live", Table::number, "bytes of activations in memory while the layer runs"},
      {"scratch", Table::number, "bytes besides them in the arena"},
      {"heap", Table::number, "bytes that a call takes and gives back"},
  };
  for (const ReportCore& core : kReportCores) {
    table.columns.push_back({std::string(core.name) + " flash", Table::number,
                             "bytes of the function; \" where it stands above"});
  }
  for (const ReportCore& core : kReportCores) {
    table.columns.push_back({std::string(core.name) + " instr.", Table::number,
                             std::string("expected instructions on a ") + core.title});
  }
  std::set<std::string> functions;
  for (const ReportLayer& layer : report.layers) {
    table.rows.push_back({std::to_string(table.rows.size()), layer.origin, layer.model_name,
                          layer.function, shape_of(layer.dims), layer.type, or_dash(layer.macs),
                          or_dash(layer.weight_bytes), grouped(layer.live_bytes),
                          or_dash(layer.scratch_bytes), or_dash(layer.heap_bytes)});
    const bool again = !functions.insert(layer.function).second;
    for (const auto& flash : layer.flash) {
      table.rows.back().push_back(!flash ? "-" : again ? "\"" : grouped(*flash));
    }
    for (const auto& estimate : layer.instructions) {
      table.rows.back().push_back(text_of(estimate));
    }
  }
  table.sums = {"all", "", "", "", "", "", grouped(report.macs), grouped(report.constant_bytes)};
  table.sums.insert(table.sums.end(), {"", "", or_dash(report.heap_bytes), "", ""});
  for (const double instructions : report.instructions) {
    table.sums.push_back(grouped(static_cast<uint64_t>(std::llround(instructions))));
  }
  add_times(report, table);
  return table;
}

Table function_table(const Report& report) {
  Table table;
  table.columns = {{"function", Table::text, "of the runtime"},
                   {"layers", Table::number, "that use it"}};
  table.sums = {"with the runtime core at most", ""};
  for (size_t core = 0; core < kReportCores.size(); ++core) {
    table.columns.push_back({std::string(kReportCores[core].name) + " flash", Table::number,
                             "bytes in a program with nothing else"});
    table.sums.push_back(grouped(report.code_bytes[core]));
  }
  for (const ReportFunction& function : report.functions) {
    auto& row = table.rows.emplace_back();
    row = {function.name, std::to_string(function.layers)};
    for (const auto& flash : function.flash) {
      row.push_back(flash ? grouped(*flash) : "-");
    }
  }
  return table;
}

Table port_table(const Report& report) {
  Table table;
  table.columns = {{"", Table::text, ""},
                   {"name", Table::name, "in the model"},
                   {"shape", Table::text, ""},
                   {"type", Table::text, ""},
                   {"quantization", Table::text, "real value = (q - zero point) * scale"}};
  for (const auto* ports : {&report.inputs, &report.outputs}) {
    for (const ReportPort& port : *ports) {
      table.rows.push_back({ports == &report.inputs ? "input" : "output", port.name, shape_of(port),
                            port.type, quantization_of(port)});
    }
  }
  return table;
}

std::vector<std::pair<std::string, std::string>> report_summary(const Report& report) {
  std::vector<std::pair<std::string, std::string>> lines = {
      {"arena", grouped(report.arena_bytes) + " bytes"},
      {"lower bound", grouped(report.bound_with_scratch) + " bytes (" + grouped(report.bound) +
                          " without scratch)"},
      {"weights", grouped(report.constant_bytes) + " bytes of flash"},
  };
  if (report.scale_bytes != 0) {
    lines.push_back({"scales", grouped(report.scale_bytes) + " bytes of flash"});
  }
  lines.push_back(
      {"heap", report.heap_bytes == 0 ? "none" : grouped(report.heap_bytes) + " bytes"});
  lines.push_back({"layers", std::to_string(report.layers.size())});
  lines.push_back({"multiply-accumulates", grouped(report.macs)});
  for (size_t core = 0; core < kReportCores.size(); ++core) {
    lines.push_back({std::string("instructions, ") + kReportCores[core].title,
                     "about " +
                         grouped(static_cast<uint64_t>(std::llround(report.instructions[core]))) +
                         (report.without_estimate == 0
                              ? ""
                              : ", without " + std::to_string(report.without_estimate) +
                                    (report.without_estimate == 1 ? " layer" : " layers"))});
  }
  if (!report.tick_unit.empty()) {
    lines.push_back({"measured", grouped(report.ticks) + " " + report.tick_unit});
  }
  return lines;
}

std::vector<std::string> report_notes(const Report& report) {
  std::vector<std::string> notes = {
      "The arena holds all activations and scratch. The lower bound is the most that lives at one "
      "step; no plan of these layers can be smaller.",
      "Weights count each constant once, though several layers may read it.",
      "Instructions are expected ones, at -O2, from layers that were counted: without a mark one "
      "as large, ~ interpolated between several, * scaled from a single one; - where nothing like "
      "it was counted. An instruction is not a cycle.",
      "Flash of a function is what it adds to an empty program at -Os. Functions share parts, so "
      "that together they take less than the sum; activations that they call come on top.",
  };
  if (report.heap_bytes != 0) {
    notes.push_back("Recurrent layers take heap while they run and give it back: " +
                    grouped(report.heap_bytes) + " bytes at most.");
  }
  return notes;
}

}  // namespace nnlib::importer
