// SPDX-License-Identifier: MIT
// Pieces of markup, and the pictures of a report. Their colours are classes of the page.
#ifndef NNLIB_IMPORTER_REPORT_SVG_HPP
#define NNLIB_IMPORTER_REPORT_SVG_HPP

#include "importer/report/report.hpp"

namespace nnlib::importer {

// Text of the model between tags or in an attribute.
std::string escaped(const std::string& text);

// A coordinate, with one decimal.
std::string px(double x);

// An <svg> with its size in units of a pixel.
std::string svg(double width, double height, const std::string& label, const std::string& content);

// <rect class="...">, with a text for who points at it.
std::string svg_rect(double x, double y, double width, double height, const std::string& classes,
                     const std::string& tip);

// anchor: "start", "middle", "end".
std::string svg_text(double x, double y, const char* anchor, const std::string& text,
                     const std::string& classes = "");

// What lies where in the arena (upwards) while the layers run (to the right).
std::string arena_picture(const Report& report);

// Layers, inputs and outputs, from above to below in the order of the data.
std::string graph_picture(const Report& report);

}  // namespace nnlib::importer

#endif
