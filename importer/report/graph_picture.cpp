// SPDX-License-Identifier: MIT
#include <algorithm>

#include "importer/report/graph_layout.hpp"
#include "importer/report/report_columns.hpp"
#include "importer/report/svg.hpp"

namespace nnlib::importer {
namespace {

constexpr double kBoxWidth = 190;
constexpr double kBoxHeight = 38;
constexpr double kRow = 62;
constexpr double kMargin = 8;
constexpr size_t kLetters = 30;

struct Box {
  std::string title, detail, tip, classes;
};

double top_of(int rank) {
  return kMargin + rank * kRow;
}

std::string cut(const std::string& text) {
  return text.size() <= kLetters ? text : text.substr(0, kLetters - 3) + "...";
}

// Down from one place to the next, leaving and arriving upright.
std::string curve(double x0, double y0, double x1, double y1) {
  const std::string middle = px((y0 + y1) / 2);
  return " C" + px(x0) + " " + middle + " " + px(x1) + " " + middle + " " + px(x1) + " " + px(y1);
}

std::string line_of(const GraphLayout& layout, const GraphLayout::Line& line) {
  const auto& from = layout.boxes[line.from];
  double x = from.x + kMargin;
  double y = top_of(from.rank) + kBoxHeight;
  std::string path = "M" + px(x) + " " + px(y);
  for (const auto& place : line.way) {
    path += curve(x, y, place.x + kMargin, top_of(place.rank));
    x = place.x + kMargin;
    y = top_of(place.rank) + kBoxHeight;
    path += " L" + px(x) + " " + px(y);
  }
  const auto& to = layout.boxes[line.to];
  path += curve(x, y, to.x + kMargin, top_of(to.rank));
  return "<path class=\"edge\" d=\"" + path + "\"/>\n";
}

std::string shape_of(const ReportLayer& layer) {
  const Dims& d = layer.dims;
  return std::to_string(d.h) + "x" + std::to_string(d.w) + "x" + std::to_string(d.c) + " " +
         layer.type;
}

Box box_of(const ReportLayer& layer, size_t index) {
  std::string tip = layer.function + " " + layer.model_name + ", " + grouped(layer.macs) +
                    " multiply-accumulates, " + grouped(layer.weight_bytes) + " bytes of weights";
  const std::string title = layer.origin.empty() ? layer.name : layer.origin;
  return {std::to_string(index) + " " + title, shape_of(layer), tip,
          layer.macs != 0 ? "box work" : "box"};
}

}  // namespace

std::string graph_picture(const Report& report) {
  std::vector<Box> boxes;
  std::vector<std::vector<size_t>> after;
  for (const ReportPort& port : report.inputs) {
    boxes.push_back(
        {port.name, shape_of(port) + " " + port.type, quantization_of(port), "box port"});
    after.emplace_back();
  }
  const auto add = [&](Box box, const std::vector<int>& reads) {
    boxes.push_back(std::move(box));
    auto& from = after.emplace_back();
    for (const int source : reads) {
      from.push_back(source > kFromInput ? report.inputs.size() + static_cast<size_t>(source)
                                         : static_cast<size_t>(kFromInput - source));
    }
  };
  for (size_t i = 0; i < report.layers.size(); ++i) {
    add(box_of(report.layers[i], i), report.layers[i].reads);
  }
  for (const ReportPort& port : report.outputs) {
    add({port.name, shape_of(port) + " " + port.type, quantization_of(port), "box port"},
        port.reads);
  }
  const GraphLayout layout = lay_out(after, {kBoxWidth, 24, 14});
  std::string content;
  for (const auto& line : layout.lines) {
    content += line_of(layout, line);
  }
  for (size_t i = 0; i < boxes.size(); ++i) {
    const double x = layout.boxes[i].x + kMargin;
    const double y = top_of(layout.boxes[i].rank);
    content +=
        svg_rect(x - kBoxWidth / 2, y, kBoxWidth, kBoxHeight, boxes[i].classes, boxes[i].tip) +
        svg_text(x, y + 16, "middle", cut(boxes[i].title), "strong") +
        svg_text(x, y + 31, "middle", cut(boxes[i].detail));
  }
  return svg(layout.width + 2 * kMargin, top_of(layout.ranks) - kRow + kBoxHeight + kMargin,
             "layers in the order of the data", content);
}

}  // namespace nnlib::importer
