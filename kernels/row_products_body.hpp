// SPDX-License-Identifier: MIT
// Body of row_products.cpp, once for each instance.

#include NNLIB_PART(columns)

#include "kernels/column_walk.hpp"

#include NNLIB_PART(finish)

// As kTileRows: a product is of all rows.
constexpr uint32_t kAllRows = 0;

#include NNLIB_PART(products)

template <class Input>
void widen_run(const Input* in, uint32_t count, int32_t subtracted, int16_t* out) {
  widen(in, count, subtracted, out);
}

template <uint32_t kPixels, class Rows, class Data>
NNLIB_ALWAYS_INLINE void multiply_tiles(const Rows& rows, const Data& columns,
                                        typename Rows::Output* out) {
  constexpr uint32_t kRows = kTileRows<kPixels>;
  TileProduct<kPixels, Rows> product(rows, columns);
  if constexpr (kRows == kAllRows) {
    product(out);
  } else {
    for (uint32_t row = 0; row < rows.count; row += kRows) {
      product(row, std::min(rows.count - row, kRows), out + row);
    }
  }
}

// What one column, or all of two, give with all rows. Calls of their own: their loops need all
// registers.
template <class Rows>
NNLIB_NOINLINE void multiply_one(const Rows& rows, const int16_t* vector,
                                 typename Rows::Output* out) {
  multiply_tiles<1>(rows, vector, out);
}
template <class Rows>
NNLIB_NOINLINE void multiply_two(const Rows& rows, const Columns& columns,
                                 typename Rows::Output* out) {
  multiply_tiles<2>(rows, columns, out);
}

template <class Rows>
struct WholeRows {
  const Rows& rows;
  typename Rows::Output* out;
  void operator()(const Columns& columns, size_t pixel) const {
    if (columns.pixels() == 2) {
      multiply_two(rows, columns, out + pixel * rows.count);
    } else {
      multiply_one(rows, columns.data(), out + pixel * rows.count);
    }
  }
};

template <class Rows>
void convolve(const Rows& rows, const ConvGeometry& g, const typename Rows::Input* in,
              uint32_t columns, int16_t* scratch, typename Rows::Output* out) {
  const ColumnInputs<typename Rows::Input> inputs = {in,
                                                     static_cast<int16_t>(rows.column_zeropoint)};
  if (!convolve_map(rows, g, inputs, columns, scratch, out)) {
    if constexpr (!kWholeMaps<typename Rows::Input>) {
      const WholeRows<Rows> product = {rows, out};
      Columns gathered(scratch, rows.length, columns);
      if (NNLIB_FOR_SPEED && g.is_product()) {
        for_pixel_columns(g.pixels(), rows.length, in, gathered, product);
      } else {
        for_columns(g, inputs, gathered, product);
      }
    }
  }
}
