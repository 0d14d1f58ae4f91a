// SPDX-License-Identifier: MIT
#include "importer/report/footprint_page.hpp"

#include <charconv>
#include <stdexcept>

#include "footprint_page_text.hpp"

namespace nnlib::importer {
namespace {

using Row = std::vector<std::string>;

std::string trimmed(std::string_view text) {
  const size_t first = text.find_first_not_of(' ');
  const size_t last = text.find_last_not_of(' ');
  return first == std::string_view::npos ? "" : std::string(text.substr(first, last + 1 - first));
}

// The cells of the table between two marks: head, rule, rows.
std::vector<Row> table_between(std::string_view page, const std::string& name) {
  const std::string mark = "<!-- " + name + " -->\n";
  const size_t start = page.find(mark);
  const size_t end = start == std::string_view::npos ? start : page.find(mark, start + 1);
  if (end == std::string_view::npos) {
    throw std::logic_error("the footprint page has no table " + name);
  }
  std::vector<Row> rows;
  for (size_t at = start + mark.size(); at < end;) {
    const size_t line_end = page.find('\n', at);
    std::string_view line = page.substr(at, line_end - at);
    at = line_end + 1;
    Row& row = rows.emplace_back();
    while (line.size() > 1) {
      const size_t bar = line.find('|', 1);
      row.push_back(trimmed(line.substr(1, bar - 1)));
      line.remove_prefix(bar == std::string_view::npos ? line.size() : bar);
    }
  }
  return rows;
}

template <class T>
std::optional<T> number_of(const std::string& text) {
  T value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end != text.data() ? std::optional(value) : std::nullopt;
}

}  // namespace

FootprintPage::FootprintPage(std::string_view page) {
  for (const char* core : {"m4f", "m55"}) {
    for (const Row& row : table_between(page, core)) {
      const auto text = row.size() > 3 ? number_of<uint32_t>(row[1]) : std::nullopt;
      if (text) {
        flash_[core][row[0]] = *text + number_of<uint32_t>(row[2]).value_or(0) +
                               number_of<uint32_t>(row[3]).value_or(0);
      }
    }
  }
  const std::vector<Row> table = table_between(page, "instructions");
  for (size_t i = 2; i < table.size(); ++i) {
    CountRow& row = counts_.emplace_back(CountRow{table[i].at(0), table[i].at(1), {}});
    for (size_t c = 2; c < table[i].size() && c < table[0].size(); ++c) {
      if (const auto figure = number_of<double>(table[i][c])) {
        row.per_unit[table[0][c]] = *figure;
      }
    }
  }
}

std::optional<uint32_t> FootprintPage::flash(std::string_view core,
                                             std::string_view function) const {
  const auto table = flash_.find(core);
  if (table == flash_.end()) {
    return std::nullopt;
  }
  const auto row = table->second.find(function);
  return row == table->second.end() ? std::nullopt : std::optional(row->second);
}

const FootprintPage& footprint_page() {
  static const FootprintPage page(kFootprintPage);
  return page;
}

}  // namespace nnlib::importer
