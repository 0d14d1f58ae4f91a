// SPDX-License-Identifier: MIT
#include "importer/report/table.hpp"

#include <algorithm>

namespace nnlib::importer {
namespace {

std::string shown(const Table::Column& column, const std::string& cell) {
  constexpr size_t kLongest = 32;
  return column.kind != Table::name || cell.size() <= kLongest
             ? cell
             : "..." + cell.substr(cell.size() - kLongest + 3);
}

std::string line_of(const Table& table, const std::vector<std::string>& cells,
                    const std::vector<size_t>& widths) {
  std::string line;
  for (size_t c = 0; c < widths.size(); ++c) {
    const std::string cell = c < cells.size() ? shown(table.columns[c], cells[c]) : "";
    const std::string space(widths[c] - cell.size(), ' ');
    line += (c == 0 ? "" : "  ") +
            (table.columns[c].kind == Table::number ? space + cell : cell + space);
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return line + "\n";
}

}  // namespace

std::string table_text(const Table& table) {
  std::vector<std::string> titles;
  for (const auto& column : table.columns) {
    titles.push_back(column.title);
  }
  std::vector<size_t> widths(titles.size());
  const auto widen = [&](const std::vector<std::string>& cells) {
    for (size_t c = 0; c < cells.size(); ++c) {
      widths[c] = std::max(widths[c], shown(table.columns[c], cells[c]).size());
    }
  };
  widen(titles);
  widen(table.sums);
  std::for_each(table.rows.begin(), table.rows.end(), widen);
  std::string text = line_of(table, titles, widths);
  for (const auto& row : table.rows) {
    text += line_of(table, row, widths);
  }
  return text + (table.sums.empty() ? "" : line_of(table, table.sums, widths));
}

}  // namespace nnlib::importer
