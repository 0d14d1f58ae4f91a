// SPDX-License-Identifier: MIT
// Products of up to 32 weight rows with short columns, for the wide instance of kernel bodies
// (vector.hpp): each output is a lane, so nothing is to be summed up across lanes.

#if NNLIB_LANES == 8

// kVectors * 8 weight rows side by side.
template <uint32_t kVectors>
struct RowLanes {
  static constexpr uint32_t kRows = kVectors * 8;

  // Whether columns of this length fit.
  static constexpr bool holds(uint32_t length) { return (length + 1) / 2 * kRows * 2 <= kCapacity; }

  // Takes weight(row, k) for the rows that exist, 0 for the others, and as many sums to start from.
  template <class Start, class Weight>
  RowLanes(uint32_t exist, uint32_t column_length, const Start& start_of, const Weight& weight)
      : length(column_length) {
    int32_t starts[kRows] = {};
    std::fill_n(pairs, (length + 1) / 2 * kRows * 2, int16_t{0});
    for (uint32_t row = 0; row < exist; ++row) {
      starts[row] = start_of(row);
      for (uint32_t k = 0; k < length; ++k) {
        pairs[(k / 2 * kRows + row) * 2 + k % 2] = weight(row, k);
      }
    }
    std::memcpy(start, starts, sizeof(start));
  }

  template <uint32_t kPixels>
  NNLIB_ALWAYS_INLINE void multiply(const int16_t* columns,
                                    __m256i (&sums)[kPixels][kVectors]) const {
    NNLIB_UNROLL
    for (uint32_t p = 0; p < kPixels; ++p) {
      NNLIB_UNROLL
      for (uint32_t v = 0; v < kVectors; ++v) {
        sums[p][v] = start[v];
      }
    }
    const int16_t* at = pairs;
    const size_t pitch = length;
    size_t k = 0;
    int32_t values[kPixels];
    for (; k + 2 <= pitch; k += 2, at += kRows * 2) {
      NNLIB_UNROLL
      for (uint32_t p = 0; p < kPixels; ++p) {
        std::memcpy(&values[p], columns + p * pitch + k, sizeof(values[p]));
      }
      add_products<kPixels>(values, at, sums);
    }
    if (k < pitch) {
      NNLIB_UNROLL
      for (uint32_t p = 0; p < kPixels; ++p) {
        values[p] = columns[p * pitch + k] & 0xFFFF;
      }
      add_products<kPixels>(values, at, sums);
    }
  }

  // Calls finish(sums, pixel) for each of one or two pixels, the sums being kVectors vectors.
  template <class Finish>
  NNLIB_ALWAYS_INLINE void multiply_pixels(const int16_t* columns, uint32_t pixels, size_t pixel,
                                           const Finish& finish) const {
    if (pixels == 2) {
      __m256i sums[2][kVectors];
      multiply<2>(columns, sums);
      finish(sums[0], pixel);
      finish(sums[1], pixel + 1);
    } else {
      __m256i sums[1][kVectors];
      multiply<1>(columns, sums);
      finish(sums[0], pixel);
    }
  }

  // Of one pair of values for each pixel and the pairs of weights from `at` on.
  template <uint32_t kPixels>
  static NNLIB_ALWAYS_INLINE void add_products(const int32_t (&values)[kPixels], const int16_t* at,
                                               __m256i (&sums)[kPixels][kVectors]) {
    NNLIB_UNROLL
    for (uint32_t v = 0; v < kVectors; ++v) {
      const __m256i weights = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at + v * 16));
      NNLIB_UNROLL
      for (uint32_t p = 0; p < kPixels; ++p) {
        const __m256i products = _mm256_madd_epi16(_mm256_set1_epi32(values[p]), weights);
        sums[p][v] = _mm256_add_epi32(sums[p][v], products);
      }
    }
  }

  static constexpr uint32_t kCapacity = 10240;  // on the stack, and in the first-level cache

  uint32_t length;
  __m256i start[kVectors];
  int16_t pairs[kCapacity];  // two weights of each row, then the next two
};

// Calls part(std::integral_constant<uint32_t, vectors>, first row) for all rows, in blocks of as
// many vectors as the rows that are left fill; not at all when such columns are too long or too few
// for it to pay.
template <class Part>
NNLIB_ALWAYS_INLINE bool for_row_lanes(uint32_t rows, uint32_t length, uint32_t pixels,
                                       const Part& part) {
  if (pixels < 16 || !RowLanes<4>::holds(length)) {
    return false;
  }
  for (uint32_t row = 0; row < rows;) {
    const uint32_t left = rows - row;
    if (left > 16) {
      part(std::integral_constant<uint32_t, 4>(), row);
      row += 32;
    } else if (left > 8) {
      part(std::integral_constant<uint32_t, 2>(), row);
      row += 16;
    } else {
      part(std::integral_constant<uint32_t, 1>(), row);
      row += 8;
    }
  }
  return true;
}

#endif
