// SPDX-License-Identifier: MIT
// Places for the boxes of a graph without cycles: ranks from above to below, few crossings, lines
// that pass ranks go through gaps of their own.
#ifndef NNLIB_IMPORTER_REPORT_GRAPH_LAYOUT_HPP
#define NNLIB_IMPORTER_REPORT_GRAPH_LAYOUT_HPP

#include <cstddef>
#include <vector>

namespace nnlib::importer {

struct LayoutSizes {
  double box_width;
  double gap;       // between boxes
  double line_gap;  // around a line that passes
};

struct GraphLayout {
  struct Place {
    double x;  // of the middle
    int rank;
  };
  struct Line {
    size_t from, to;
    std::vector<Place> way;  // between the ranks of the two
  };
  std::vector<Place> boxes;
  std::vector<Line> lines;
  double width = 0;
  int ranks = 0;
};

// after[i]: boxes before i whose lines lead to it, each of a smaller index.
GraphLayout lay_out(const std::vector<std::vector<size_t>>& after, const LayoutSizes& sizes);

}  // namespace nnlib::importer

#endif
