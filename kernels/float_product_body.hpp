// SPDX-License-Identifier: MIT
#include "kernels/float_tile_body.hpp"

// Adds depth k from `first` on to P rows from `row` on; the first k start the sums from 0.
template <size_t P, size_t NV>
void product_block(const Product& p, size_t row, const Columns& columns, Tile tile, size_t first,
                   size_t depth) {
  float* out = p.out + row * p.out_pitch + columns.first;
  const float* a = p.a.data + row * p.a.row_pitch + first * p.a.k_pitch;
  Vec acc[P][NV] = {};
  if (first != 0) {
    load_block(acc, out, p.out_pitch, columns.lanes);
  }
  accumulate(acc, a, p.a.row_pitch, p.a.k_pitch, tile, depth);
  store_block(out, acc, p.out_pitch, columns.lanes);
}

template <size_t NV, size_t P = kBlockRows<NV>>
void product_rows(const Product& p, const Columns& columns, Tile tile, size_t first, size_t depth,
                  size_t row = 0) {
  for (; row + P <= p.rows; row += P) {
    product_block<P, NV>(p, row, columns, tile, first, depth);
  }
  if constexpr (P > 1) {
    product_rows<NV, P / 2>(p, columns, tile, first, depth, row);
  }
}

template <size_t NV = kTileVectors>
void product_columns(const Product& p, const Columns& columns, Tile tile, size_t first,
                     size_t depth) {
  if (columns.vectors == NV) {
    product_rows<NV>(p, columns, tile, first, depth);
  } else if constexpr (NV > 1) {
    product_columns<NV / 2>(p, columns, tile, first, depth);
  }
}

// Any number of rows, tile by tile of columns and depth. A call of its own, for its stack.
NNLIB_NOINLINE inline void product_tiles(const Product& p) {
  TileBuffer buffer;
  for (size_t column = 0; column < p.columns;) {
    const Columns columns = columns_from(column, p.columns);
    const bool in_place = !kPacks || (p.b.row_pitch == 1 && columns.lanes == kLanes);
    size_t first = 0;
    do {
      const size_t depth = p.depth - first < kTileDepth ? p.depth - first : kTileDepth;
      const float* b = p.b.data + columns.first * p.b.row_pitch + first * p.b.k_pitch;
      Tile tile = {b, p.b.k_pitch, kLanes * p.b.row_pitch, {p.b.row_pitch, columns.lanes}};
      if (!in_place) {
        pack(buffer.data, b, p.b.row_pitch, p.b.k_pitch, columns, depth);
        tile = {buffer.data, columns.vectors * kLanes, kLanes, {1, kLanes}};
      }
      product_columns(p, columns, tile, first, depth);
      first += depth;
    } while (first < p.depth);
    column = columns.next;
  }
}

// One row of a times NV vectors of columns of b, which are read in place; without packing, both
// contiguous in k.
template <size_t NV>
void row_columns_in_place(const Product& p, size_t column) {
  Vec acc[1][NV] = {};
  const Tile tile = {p.b.data + column * p.b.row_pitch,
                     p.b.k_pitch,
                     kLanes * p.b.row_pitch,
                     {p.b.row_pitch, kLanes}};
  if constexpr (kPacks) {
    accumulate(acc, p.a.data, 0, p.a.k_pitch, tile, p.depth);
  } else if (p.depth != 0) {
    accumulate_contiguous(acc, p.a.data, 0, tile, p.depth);
  }
  store_block(p.out + column, acc, 0, kLanes);
}

#if NNLIB_LANES > 1 && !NNLIB_MVE_FLOAT
// Four k of one vector of columns, in order.
NNLIB_ALWAYS_INLINE Vec add_quads(Vec acc, const float* a, const float* b, size_t column_pitch) {
  const Vec x = splat_quad(a);
  Vec products[4];
  NNLIB_UNROLL
  for (size_t i = 0; i < 4; ++i) {
    products[i] = x * load_quads(b, column_pitch, i);
  }
  transpose_quads(products);
  NNLIB_UNROLL
  for (size_t i = 0; i < 4; ++i) {
    acc += products[i];
  }
  return acc;
}

// One row of a times NV vectors of columns of b, both contiguous in k: the products of four k are
// turned into columns in registers.
template <size_t NV>
void row_columns_turned(const Product& p, size_t column) {
  constexpr size_t kLine = 16;  // use up a cache line of each column at once
  const size_t pitch = p.b.row_pitch;
  const float* a = p.a.data;
  const float* b[NV];
  NNLIB_UNROLL
  for (size_t v = 0; v < NV; ++v) {
    b[v] = p.b.data + (column + v * kLanes) * pitch;
  }
  Vec acc[1][NV] = {};
  size_t left = p.depth;
  for (; left >= kLine; left -= kLine, a += kLine) {
    NNLIB_UNROLL
    for (size_t v = 0; v < NV; ++v) {
      NNLIB_UNROLL
      for (size_t quad = 0; quad < kLine; quad += 4) {
        acc[0][v] = add_quads(acc[0][v], a + quad, b[v] + quad, pitch);
      }
      b[v] += kLine;
    }
  }
  for (; left != 0; --left, ++a) {
    NNLIB_UNROLL
    for (size_t v = 0; v < NV; ++v) {
      float of_k[kLanes];
      for (size_t lane = 0; lane < kLanes; ++lane) {
        of_k[lane] = b[v][lane * pitch];
      }
      acc[0][v] += splat(*a) * load(of_k);
      ++b[v];
    }
  }
  store_block(p.out + column, acc, 0, kLanes);
}
#endif

inline void row_columns_scalar(const Product& p) {
  for (size_t column = 0; column < p.columns; ++column) {
    const float* b = p.b.data + column * p.b.row_pitch;
    float sum = 0.0f;
    for (size_t k = 0; k < p.depth; ++k) {
      sum += p.a.data[k * p.a.k_pitch] * b[k * p.b.k_pitch];
    }
    p.out[column] = sum;
  }
}

template <bool Turned, size_t NV>
void row_columns(const Product& p, size_t column) {
#if NNLIB_LANES > 1 && !NNLIB_MVE_FLOAT
  if constexpr (Turned) {
    row_columns_turned<NV>(p, column);
    return;
  }
#endif
  row_columns_in_place<NV>(p, column);
}

// A vector times a matrix, NV vectors of columns at a time.
template <bool Turned, size_t NV>
void product_row(const Product& p) {
  size_t column = 0;
  for (; column + NV * kLanes <= p.columns; column += NV * kLanes) {
    row_columns<Turned, NV>(p, column);
  }
  if constexpr (NV > 1) {
    for (; column + kLanes <= p.columns; column += kLanes) {
      row_columns<Turned, 1>(p, column);
    }
  }
  if (kLanes > 1 && column < p.columns) {
    row_columns<Turned, 1>(p, p.columns - kLanes);  // some a second time, with the same result
  }
}

// One row of a; both are contiguous, or with packing b's row_pitch is 1.
inline void product_vector(const Product& p) {
  if (p.columns < kLanes) {
    row_columns_scalar(p);
  } else if (kPacks && p.b.row_pitch != 1) {
    product_row<true, 2>(p);
  } else {
    product_row<false, kRowVectors>(p);
  }
}

inline void product(const Product& p) {
  const bool contiguous = p.a.k_pitch == 1 && p.b.k_pitch == 1;
  const bool in_place = kPacks && p.b.row_pitch == 1;
  if (p.rows != 1 || !(contiguous || in_place)) {
    product_tiles(p);
  } else {
    product_vector(p);
  }
}
