// SPDX-License-Identifier: MIT
#include <algorithm>

#include "importer/report/report_columns.hpp"

namespace nnlib::importer {
namespace {

// A paragraph in lines of at most 100 characters.
std::string paragraph(const std::string& sentence) {
  constexpr size_t kLongest = 100;
  std::string text = "- ";
  size_t column = 2;
  for (size_t at = 0; at < sentence.size();) {
    const size_t end = std::min(sentence.find(' ', at), sentence.size());
    if (column + (end - at) > kLongest) {
      text.back() = '\n';
      text += "  ";
      column = 2;
    }
    text += sentence.substr(at, end - at) + " ";
    column += end - at + 1;
    at = end + 1;
  }
  text.back() = '\n';
  return text;
}

}  // namespace

std::string report_text(const Report& report) {
  std::string text = report.name + "\n\n";
  for (const auto& [what, figure] : report_summary(report)) {
    text += what + ": " + figure + "\n";
  }
  text += "\n" + table_text(port_table(report));
  text += "\n" + table_text(layer_table(report));
  text += "\n" + table_text(function_table(report)) + "\n";
  for (const std::string& note : report_notes(report)) {
    text += paragraph(note);
  }
  return text;
}

}  // namespace nnlib::importer
