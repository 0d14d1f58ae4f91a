// SPDX-License-Identifier: MIT
// Tiles of a few rows by one or two columns, which fit the registers of a small core.

#include "kernels/scalar/keep.hpp"

template <uint32_t kPixels>
#if defined(__arm__) || NNLIB_VECTOR_LANES > 1
constexpr uint32_t kTileRows = 2;
#else
constexpr uint32_t kTileRows = 4;
#endif

// Products of a column at a time. Vectors are the compiler's.
constexpr uint32_t kProductsAtOnce =
    NNLIB_VECTOR_LANES > 1 || kFewRegisters || !NNLIB_FOR_SPEED ? 1 : 4;

template <class T, size_t kCount>
NNLIB_ALWAYS_INLINE void advance(const T* (&pointers)[kCount], uint32_t elements) {
  NNLIB_UNROLL
  for (size_t i = 0; i < kCount; ++i) {
    pointers[i] += elements;
    keep(pointers[i]);
  }
}

// sums[row][column] += the products of elements k. They are separate sums of 16-bit products, so
// that compilers see a vector's multiply-add where there is one.
template <uint32_t kRows, uint32_t kPixels, class Weight>
NNLIB_ALWAYS_INLINE void add_products(const Weight* const (&rows)[kRows],
                                      const int16_t* const (&columns)[kPixels], uint32_t k,
                                      uint32_t (&sums)[kRows][kPixels]) {
  int16_t values[kPixels];
  NNLIB_UNROLL
  for (uint32_t p = 0; p < kPixels; ++p) {
    values[p] = columns[p][k];
  }
  NNLIB_UNROLL
  for (uint32_t r = 0; r < kRows; ++r) {
    const int16_t weight = rows[r][k];
    NNLIB_UNROLL
    for (uint32_t p = 0; p < kPixels; ++p) {
      sums[r][p] += static_cast<uint32_t>(weight * values[p]);
      keep(sums[r][p]);
    }
  }
}

template <uint32_t kRows, uint32_t kPixels, class Weight>
__attribute__((noinline)) void dot_block(const Weight* const (&first_rows)[kRows],
                                         const int16_t* column, uint32_t length,
                                         uint32_t (&products)[kRows][kPixels]) {
  const Weight* rows[kRows];
  const int16_t* columns[kPixels];
  uint32_t sums[kRows][kPixels] = {};
  NNLIB_UNROLL
  for (uint32_t r = 0; r < kRows; ++r) {
    rows[r] = first_rows[r];
  }
  NNLIB_UNROLL
  for (uint32_t p = 0; p < kPixels; ++p) {
    columns[p] = column + size_t{p} * length;
  }
  NNLIB_UNROLL_INDEXED
  for (uint32_t left = length / kProductsAtOnce; left > 0; --left) {
    add_products(rows, columns, 0, sums);
    if constexpr (kProductsAtOnce == 4) {
      add_products(rows, columns, 1, sums);
      add_products(rows, columns, 2, sums);
      add_products(rows, columns, 3, sums);
    }
    advance(rows, kProductsAtOnce);
    advance(columns, kProductsAtOnce);
  }
  if constexpr (kProductsAtOnce > 1) {
    for (uint32_t left = length % kProductsAtOnce; left > 0; --left) {
      add_products(rows, columns, 0, sums);
      advance(rows, 1);
      advance(columns, 1);
    }
  }
  NNLIB_UNROLL
  for (uint32_t r = 0; r < kRows; ++r) {
    NNLIB_UNROLL
    for (uint32_t p = 0; p < kPixels; ++p) {
      products[r][p] = sums[r][p];
    }
  }
}

template <uint32_t kPixels, class Rows>
class TileProduct {
  static constexpr uint32_t kRows = kTileRows<kPixels>;
  using Weight = typename Rows::Weight;
  using Output = typename Rows::Output;

 public:
  TileProduct(const Rows& rows, const Columns& columns) : TileProduct(rows, columns.data()) {}
  TileProduct(const Rows& rows, const int16_t* columns) : rows_(rows), columns_(columns) {
    for (uint32_t p = 0; Rows::kWeightZeropoint && p < kPixels; ++p) {
      excess_[p] = column_excess(rows, columns + size_t{p} * rows.length);
    }
  }

  // count: 1 to kRows rows from `row` on.
  NNLIB_ALWAYS_INLINE void operator()(uint32_t row, uint32_t count, Output* out) const {
    const Weight* weights[kRows];
    for (uint32_t r = 0; r < kRows; ++r) {  // past the last row: the last row again
      weights[r] = rows_.weights + size_t{row + std::min(r, count - 1)} * rows_.length;
    }
    uint32_t sums[kRows][kPixels];
    dot_block(weights, columns_, rows_.length, sums);
    for (uint32_t r = 0; r < count; ++r) {
      store(row + r, sums[r], out + r);
    }
  }

 private:
  NNLIB_ALWAYS_INLINE void store(uint32_t row, const uint32_t (&sums)[kPixels], Output* out) const {
    const auto channel = rows_.channel(row);
    const int32_t zeropoint = rows_.zeropoint(row);
    NNLIB_UNROLL_FOR_SPEED
    for (uint32_t p = 0; p < kPixels; ++p) {
      int32_t sum = static_cast<int32_t>(sums[p]);
      if constexpr (Rows::kWeightZeropoint) {
        sum = wrapping_add(sum, wrapping_multiply(-zeropoint, excess_[p]));
      }
      out[size_t{p} * rows_.count] = finish<Output>(channel, sum);
    }
  }

  const Rows rows_;  // a copy, which no store can change
  const int16_t* const columns_;
  int32_t excess_[kPixels];
};

template <class T>
constexpr bool kWholeMaps = false;

template <class Rows, class T>
bool convolve_map(const Rows&, const ConvGeometry&, const ColumnInputs<T>&, uint32_t, int16_t*,
                  typename Rows::Output*) {
  return false;
}
