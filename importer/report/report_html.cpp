// SPDX-License-Identifier: MIT
#include "importer/report/report_columns.hpp"
#include "importer/report/svg.hpp"

namespace nnlib::importer {
namespace {

constexpr const char* kStyle = R"(
:root { color-scheme: light dark; --paper: #ffffff; --ink: #1c2128; --faint: #67717e;
  --line: #d9dee5; --card: #f5f7f9; --bar: #cfe0f5; --work: #dbe9fa; --port: #e9e3f6;
  --c0: #9cc3ee; --c1: #f3c38b; --c2: #a9d8a4; --c3: #e5a9b9; --c4: #c2b5e8; --c5: #9ed6d6;
  --scratch: #c4cad2; --on-block: #1c2128; }
@media (prefers-color-scheme: dark) {
  :root { --paper: #15191e; --ink: #e3e7ec; --faint: #98a2af; --line: #343c46; --card: #1d232a;
    --bar: #24405f; --work: #233b58; --port: #3a3157; --c0: #3f6fa3; --c1: #9a6a2e; --c2: #47804a;
    --c3: #93495d; --c4: #665599; --c5: #357b7b; --scratch: #59626d; --on-block: #f0f3f6; } }
body { background: var(--paper); color: var(--ink); font: 15px/1.5 system-ui, sans-serif;
  max-width: 1500px; margin: 0 auto; padding: 24px; }
h1 { font-size: 24px; margin: 0 0 16px; overflow-wrap: anywhere; }
h2 { font-size: 17px; margin: 32px 0 8px; }
dl { display: grid; grid-template-columns: repeat(auto-fill, minmax(230px, 1fr)); gap: 10px; }
dl div { background: var(--card); border: 1px solid var(--line); border-radius: 6px;
  padding: 8px 12px; }
dt { color: var(--faint); font-size: 13px; }
dd { margin: 0; font-variant-numeric: tabular-nums; }
.wide { overflow: auto; max-height: 85vh; border: 1px solid var(--line); border-radius: 6px; }
.wide svg { display: block; margin: 8px auto; }
table { border-collapse: collapse; font-size: 13px; width: 100%; }
th, td { padding: 4px 9px; text-align: left; white-space: nowrap;
  border-bottom: 1px solid var(--line); }
th { position: sticky; top: 0; background: var(--card); color: var(--faint); font-weight: 600; }
td.name { max-width: 240px; overflow: hidden; text-overflow: ellipsis; }
.number { text-align: right; font-variant-numeric: tabular-nums; }
tr:last-child td { border-bottom: none; }
tr.sum td { font-weight: 600; background: var(--card); }
td.bar { background: linear-gradient(to left, var(--bar) var(--share), transparent var(--share)); }
ul { color: var(--faint); font-size: 14px; padding-left: 20px; }
svg text { font: 11px system-ui, sans-serif; fill: var(--faint); }
svg text.strong { fill: var(--ink); font-weight: 600; }
svg text.on-block { fill: var(--on-block); pointer-events: none; }
.grid { stroke: var(--line); }
.block { stroke: var(--paper); stroke-width: 1; }
.c0 { fill: var(--c0); } .c1 { fill: var(--c1); } .c2 { fill: var(--c2); }
.c3 { fill: var(--c3); } .c4 { fill: var(--c4); } .c5 { fill: var(--c5); }
.scratch { fill: var(--scratch); }
.box { fill: var(--card); stroke: var(--line); rx: 6px; }
.work { fill: var(--work); } .port { fill: var(--port); rx: 18px; }
.edge { fill: none; stroke: var(--faint); stroke-width: 1.2; }
.key { color: var(--faint); font-size: 13px; margin: 6px 2px; }
.key span { display: inline-block; width: 12px; height: 12px; border-radius: 2px;
  vertical-align: -1px; background: var(--scratch); }
)";

// The share of a column's whole that a bar in the cell shows, in percent; empty: no bar.
using Bars = std::vector<std::vector<std::string>>;

Bars bars_of(const Report& report, const Table& table) {
  Bars bars(table.rows.size(), std::vector<std::string>(table.columns.size()));
  const auto fill = [&](const std::string& title, auto figure) {
    double most = 0;
    for (const ReportLayer& layer : report.layers) {
      most = std::max(most, figure(layer));
    }
    for (size_t c = 0; c < table.columns.size(); ++c) {
      for (size_t i = 0; table.columns[c].title == title && most > 0 && i < bars.size(); ++i) {
        bars[i][c] = px(100 * figure(report.layers[i]) / most);
      }
    }
  };
  fill("MACs", [](const ReportLayer& l) { return static_cast<double>(l.macs); });
  fill("weights", [](const ReportLayer& l) { return static_cast<double>(l.weight_bytes); });
  fill("live", [](const ReportLayer& l) { return static_cast<double>(l.live_bytes); });
  fill(report.tick_unit,
       [](const ReportLayer& l) { return static_cast<double>(l.ticks.value_or(0)); });
  return bars;
}

std::string cell(const Table::Column& column, const std::string& text, const std::string& bar) {
  constexpr const char* kClasses[] = {"", "number", "name"};
  std::string classes = kClasses[column.kind];
  classes += bar.empty() ? "" : " bar";
  return "<td" + (classes.empty() ? "" : " class=\"" + classes + "\"") +
         (bar.empty() ? "" : " style=\"--share: " + bar + "%\"") +
         (column.kind == Table::name ? " title=\"" + escaped(text) + "\"" : "") + ">" +
         escaped(text) + "</td>";
}

std::string table_html(const Table& table, const Bars& bars = {}) {
  std::string out = "<div class=\"wide\"><table>\n<thead><tr>";
  for (const auto& column : table.columns) {
    out += "<th" + std::string(column.kind == Table::number ? " class=\"number\"" : "") +
           " title=\"" + escaped(column.meaning) + "\">" + escaped(column.title) + "</th>";
  }
  out += "</tr></thead>\n<tbody>\n";
  for (size_t i = 0; i < table.rows.size(); ++i) {
    out += "<tr>";
    for (size_t c = 0; c < table.rows[i].size(); ++c) {
      out += cell(table.columns[c], table.rows[i][c], bars.empty() ? "" : bars[i][c]);
    }
    out += "</tr>\n";
  }
  if (!table.sums.empty()) {
    out += "<tr class=\"sum\">";
    for (size_t c = 0; c < table.sums.size(); ++c) {
      out += cell(table.columns[c], table.sums[c], "");
    }
    out += "</tr>\n";
  }
  return out + "</tbody></table></div>\n";
}

std::string heading(const char* title) {
  return "<h2>" + std::string(title) + "</h2>\n";
}

}  // namespace

std::string report_html(const Report& report) {
  const std::string name = escaped(report.name);
  std::string out =
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      "<link rel=\"icon\" href=\"data:,\">\n<title>" +
      name + "</title>\n<style>" + kStyle + "</style>\n</head>\n<body>\n<h1>" + name + "</h1>\n";
  out += "<dl>\n";
  for (const auto& [what, figure] : report_summary(report)) {
    out += "<div><dt>" + escaped(what) + "</dt><dd>" + escaped(figure) + "</dd></div>\n";
  }
  out += "</dl>\n" + heading("Inputs and outputs") + table_html(port_table(report));
  const Table layers = layer_table(report);
  out += heading("Layers") + table_html(layers, bars_of(report, layers));
  out += heading("Arena") + "<div class=\"wide\">" + arena_picture(report) + "</div>\n" +
         "<p class=\"key\">Address in bytes over the layers that run; <span></span> scratch. Point "
         "at a block for its name and size.</p>\n";
  out += heading("Layer functions") + table_html(function_table(report));
  out += heading("Graph") + "<div class=\"wide\">" + graph_picture(report) + "</div>\n";
  out += heading("Notes") + "<ul>\n";
  for (const std::string& note : report_notes(report)) {
    out += "<li>" + escaped(note) + "</li>\n";
  }
  return out + "</ul>\n</body>\n</html>\n";
}

}  // namespace nnlib::importer
