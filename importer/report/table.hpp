// SPDX-License-Identifier: MIT
// A table of texts and numbers.
#ifndef NNLIB_IMPORTER_REPORT_TABLE_HPP
#define NNLIB_IMPORTER_REPORT_TABLE_HPP

#include <string>
#include <vector>

namespace nnlib::importer {

struct Table {
  enum Kind { text, number, name };  // numbers stand at the right; names can be very long
  struct Column {
    std::string title;
    Kind kind;
    std::string meaning = {};  // for who points at it
  };
  std::vector<Column> columns;
  std::vector<std::vector<std::string>> rows;
  std::vector<std::string> sums = {};  // the last row; may be empty
};

// In lines, with spaces between the columns. The beginnings of long names are left out.
std::string table_text(const Table& table);

}  // namespace nnlib::importer

#endif
