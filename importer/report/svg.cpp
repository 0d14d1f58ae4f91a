// SPDX-License-Identifier: MIT
#include "importer/report/svg.hpp"

#include <cstdio>

namespace nnlib::importer {

std::string escaped(const std::string& text) {
  std::string out;
  for (const char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      default:
        out += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
    }
  }
  return out;
}

std::string px(double x) {
  char text[32];
  std::snprintf(text, sizeof(text), "%.1f", x);
  return text;
}

std::string svg(double width, double height, const std::string& label, const std::string& content) {
  const std::string size = px(width) + " " + px(height);
  return "<svg role=\"img\" aria-label=\"" + escaped(label) + "\" width=\"" + px(width) +
         "\" height=\"" + px(height) + "\" viewBox=\"0 0 " + size + "\">\n" + content + "</svg>\n";
}

std::string svg_rect(double x, double y, double width, double height, const std::string& classes,
                     const std::string& tip) {
  return "<rect class=\"" + classes + "\" x=\"" + px(x) + "\" y=\"" + px(y) + "\" width=\"" +
         px(width) + "\" height=\"" + px(height) + "\"><title>" + escaped(tip) +
         "</title></rect>\n";
}

std::string svg_text(double x, double y, const char* anchor, const std::string& text,
                     const std::string& classes) {
  return "<text x=\"" + px(x) + "\" y=\"" + px(y) + "\" text-anchor=\"" + anchor + "\"" +
         (classes.empty() ? "" : " class=\"" + classes + "\"") + ">" + escaped(text) + "</text>\n";
}

}  // namespace nnlib::importer
