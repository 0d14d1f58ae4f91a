// SPDX-License-Identifier: MIT
// A table of texts and numbers.
#ifndef NNLIB_IMPORTER_REPORT_TABLE_HPP
#define NNLIB_IMPORTER_REPORT_TABLE_HPP

#include <string>
#include <vector>

namespace nnlib::importer {

struct Table {
  struct Column {
    std::string title;
    bool number;               // stands at the right
    std::string meaning = {};  // for who points at it
  };
  std::vector<Column> columns;
  std::vector<std::vector<std::string>> rows;
  std::vector<std::string> sums = {};  // the last row; may be empty
};

// In lines, with spaces between the columns. The beginnings of long cells are left out.
std::string table_text(const Table& table);

}  // namespace nnlib::importer

#endif
