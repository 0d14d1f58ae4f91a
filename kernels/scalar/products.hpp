// SPDX-License-Identifier: MIT
// Tiles of two rows by one or two columns, which fit the registers of a small core.

template <uint32_t kPixels>
constexpr uint32_t kTileRows = 2;

// Separate sums of 16-bit products, so that compilers see a vector's multiply-add where there is
// one. sums[pixel * 2 + row]
template <uint32_t kPixels, class Weight>
void dot_block(const Weight* row0, const Weight* row1, const int16_t* columns, uint32_t length,
               int32_t (&sums)[4]) {
  const int16_t* column0 = columns;
  const int16_t* column1 = columns + (kPixels - 1) * length;
  uint32_t sum00 = 0, sum01 = 0, sum10 = 0, sum11 = 0;  // column, row
  NNLIB_UNROLL_BY_FOUR
  for (uint32_t k = 0; k < length; ++k) {
    const int16_t weight0 = row0[k];
    const int16_t weight1 = row1[k];
    sum00 += static_cast<uint32_t>(weight0 * column0[k]);
    sum01 += static_cast<uint32_t>(weight1 * column0[k]);
    if constexpr (kPixels == 2) {
      sum10 += static_cast<uint32_t>(weight0 * column1[k]);
      sum11 += static_cast<uint32_t>(weight1 * column1[k]);
    }
  }
  sums[0] = static_cast<int32_t>(sum00);
  sums[1] = static_cast<int32_t>(sum01);
  sums[2] = static_cast<int32_t>(sum10);
  sums[3] = static_cast<int32_t>(sum11);
}

template <uint32_t kPixels, class Rows>
class TileProduct {
 public:
  TileProduct(const Rows& rows, const Columns& columns) : TileProduct(rows, columns.data()) {}
  TileProduct(const Rows& rows, const int16_t* columns) : rows_(rows), columns_(columns) {
    for (uint32_t p = 0; Rows::kWeightZeropoint && p < kPixels; ++p) {
      excess_[p] = column_excess(rows, columns + size_t{p} * rows.length);
    }
  }

  // count: 1 or 2 rows from `row` on.
  void operator()(uint32_t row, uint32_t count, typename Rows::Output* out) const {
    const auto* weights = rows_.weights + size_t{row} * rows_.length;
    int32_t sums[4];
    dot_block<kPixels>(weights, weights + (count - 1) * rows_.length, columns_, rows_.length, sums);
    for (uint32_t r = 0; r < count; ++r) {
      const auto channel = rows_.channel(row + r);
      const int32_t zeropoint = rows_.zeropoint(row + r);
      for (uint32_t p = 0; p < kPixels; ++p) {
        int32_t sum = sums[p * 2 + r];
        if constexpr (Rows::kWeightZeropoint) {
          sum = wrapping_add(sum, wrapping_multiply(-zeropoint, excess_[p]));
        }
        out[size_t{p} * rows_.count + r] = finish<typename Rows::Output>(channel, sum);
      }
    }
  }

 private:
  const Rows& rows_;
  const int16_t* columns_;
  int32_t excess_[kPixels];
};

template <class T>
constexpr bool kWholeMaps = false;

template <class Rows, class T>
bool convolve_map(const Rows&, const ConvGeometry&, const ColumnInputs<T>&, uint32_t, int16_t*,
                  typename Rows::Output*) {
  return false;
}
