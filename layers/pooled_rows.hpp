// SPDX-License-Identifier: MIT
// Pooling a map that is never whole: its rows are made one by one into a window of few of them.
#ifndef NNLIB_LAYERS_POOLED_ROWS_HPP
#define NNLIB_LAYERS_POOLED_ROWS_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kernels/window.hpp"

namespace nnlib {

// Memory for rows of the map that is pooled, at least as many as a pooling window has.
struct RowWindow {
  uint8_t* data;
  size_t row_bytes;
  uint32_t capacity;  // rows
};

// For each output row calls pool(data, rows, out_y), with rows = rows_of(out_y) those of the
// pooling window, of which what is inside the map lies at `data`. make(row, y) writes row y of the
// map when it is first needed; rows between the windows are not made. Rows that are needed again
// move to the front when the memory is used up, so that a window is always one run.
template <class RowsOf, class Make, class Pool>
void pool_row_by_row(uint32_t out_height, RowsOf rows_of, const RowWindow& window, Make make,
                     Pool pool) {
  uint32_t front = 0;  // the map's row at the front of the memory
  uint32_t next = 0;   // the row after the last one there
  for (uint32_t out_y = 0; out_y < out_height; ++out_y) {
    const Window rows = rows_of(out_y);
    if (rows.empty() || rows.begin >= next) {
      front = next = rows.begin;
    } else if (rows.end() - front > window.capacity) {
      std::memmove(window.data, window.data + (rows.begin - front) * window.row_bytes,
                   (next - rows.begin) * window.row_bytes);
      front = rows.begin;
    }
    for (; next < rows.end(); ++next) {
      make(window.data + (next - front) * window.row_bytes, next);
    }
    pool(window.data + (rows.begin - front) * window.row_bytes, rows, out_y);
  }
}

}  // namespace nnlib

#endif
