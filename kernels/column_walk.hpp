// SPDX-License-Identifier: MIT
// The columns of all output pixels of a convolution: what they see, as 16-bit values in the order
// kernel row, kernel column, channel. For kernel bodies (vector.hpp). Columns: where they are
// collected, the instruction set's.

template <class T>
struct ColumnInputs {
  const T* data;
  int16_t outside;  // the value where the window has no input
};

// How many of a window's rows, from the first on, may be written loosely when they are whole: what
// comes of it is overwritten by the rows that follow.
template <class Columns>
constexpr uint32_t loose_rows(const Window& rows, uint32_t row_length) {
  constexpr uint32_t kStep = Columns::kLooseStep;
  uint32_t loose = 0;
  while (kStep > 1 && loose + 1 < rows.count &&
         (rows.count - loose) * row_length >= (row_length + kStep - 1) / kStep * kStep) {
    ++loose;
  }
  return loose;
}

// The column of the output pixel whose window has the given parts inside the map. loose: loose_rows
// of a whole row.
template <class T, class Columns>
NNLIB_ALWAYS_INLINE void gather_column(const ConvGeometry& g, const ColumnInputs<T>& inputs,
                                       const Window& rows, const Window& taps, uint32_t loose,
                                       Columns& columns, uint32_t column) {
  const bool whole = taps.count == g.kernel_width;
  if (rows.count != g.kernel_height || !whole) {
    columns.template fill<T>(column, inputs.outside);
  }
  if (taps.empty()) {
    return;
  }
  const uint32_t row_length = g.kernel_width * g.in_channels;
  const size_t in_row_length = size_t{g.in_width} * g.in_channels;
  const uint32_t count = taps.count * g.in_channels;
  const T* in = inputs.data + rows.begin * in_row_length + size_t{taps.begin} * g.in_channels;
  uint32_t at = rows.tap * row_length + taps.tap * g.in_channels;
  uint32_t row = 0;
  for (; whole && row < loose; ++row, in += in_row_length, at += row_length) {
    columns.template put<true>(column, at, in, count);
  }
  for (; row < rows.count; ++row, in += in_row_length, at += row_length) {
    columns.template put<false>(column, at, in, count);
  }
}

// As for_columns, of columns that are the pixels of the input.
template <class T, class Columns, class Product>
NNLIB_ALWAYS_INLINE void for_pixel_columns(uint32_t count, uint32_t channels, const T* in,
                                           Columns& columns, const Product& product) {
  for (size_t pixel = 0; pixel < count; pixel += columns.pixels()) {
    columns.begin(static_cast<uint32_t>(count - pixel));
    for (uint32_t column = 0; column < columns.pixels(); ++column, in += channels) {
      columns.template put<false>(column, 0, in, channels);
    }
    product(columns, pixel);
  }
}

// Calls product(columns, first pixel) for the pixels of the map in memory order, as many at a time
// as the columns hold, and for those left over at the end.
template <class T, class Columns, class Product>
NNLIB_ALWAYS_INLINE void for_columns(ConvGeometry g, const ColumnInputs<T> inputs, Columns& columns,
                                     const Product& product) {
  uint32_t ready = 0;
  uint32_t left = g.pixels();
  size_t pixel = 0;
  for (uint32_t y = 0; y < g.out_height; ++y) {
    const Window rows = g.rows(y);
    const uint32_t loose = loose_rows<Columns>(rows, g.kernel_width * g.in_channels);
    for (uint32_t x = 0; x < g.out_width; ++x) {
      if (ready == 0) {
        columns.begin(left);
      }
      gather_column(g, inputs, rows, g.columns(x), loose, columns, ready);
      if (++ready == columns.pixels()) {
        product(columns, pixel);
        pixel += ready;
        left -= ready;
        ready = 0;
      }
    }
  }
}

// What the zero points leave to take from each product sum, in units of the weight zero point.
template <class Rows, class T>
int32_t column_excess(const Rows& rows, const T* column) {
  return wrapping_add(column_sum(column, rows.length),
                      wrapping_multiply(static_cast<int32_t>(rows.length), -rows.column_zeropoint));
}
