// SPDX-License-Identifier: MIT
// Products of up to 32 weight rows with short columns: each output is a lane, so nothing is to be
// summed up across lanes.

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

// A block of weight rows and what becomes of their sums.
template <uint32_t kVectors, class Rows>
struct FinishedRowLanes;

// A block of weight rows, less their zero points, and what becomes of their sums.
template <uint32_t kVectors, class Types>
struct FinishedRowLanes<kVectors, IntegerRows<Types>> {
  FinishedRowLanes(const IntegerRows<Types>& m, uint32_t first_row, typename Types::Activation* to)
      : count(std::min(m.count - first_row, kVectors * 8)),
        pitch(m.count),
        out(to + first_row),
        rows(
            count, m.length,
            [&](uint32_t r) {
              const int32_t zeropoint = m.zeropoint(first_row + r);
              return wrapping_add(m.start(first_row + r),
                                  wrapping_multiply(static_cast<int32_t>(m.length),
                                                    zeropoint * m.column_zeropoint));
            },
            [&](uint32_t r, uint32_t k) {
              return static_cast<int16_t>(m.weights[size_t{first_row + r} * m.length + k] -
                                          m.zeropoint(first_row + r));
            }) {
    for (uint32_t v = 0; v < kVectors; ++v) {
      const uint32_t exist = count > v * 8 ? std::min(count - v * 8, 8u) : 0;
      to_output[v] = requantizer<8>(m.quantization, first_row + v * 8, exist);
    }
  }

  NNLIB_ALWAYS_INLINE void finish(const __m256i (&sums)[kVectors], size_t pixel) const {
    auto* to = out + pixel * pitch;
    __m128i bytes[(kVectors + 1) / 2];
    NNLIB_UNROLL
    for (uint32_t v = 0; v < kVectors; v += 2) {
      const __m256i first = to_output[v](sums[v]);
      const __m256i second =
          kVectors == 1 ? first
                        : to_output[kVectors == 1 ? 0 : v + 1](sums[kVectors == 1 ? 0 : v + 1]);
      bytes[v / 2] = saturate_bytes<typename Types::Activation>(first, second);
    }
    if (kVectors > 1 && count == kVectors * 8) {
      std::memcpy(to, bytes, sizeof(bytes));
    } else {
      std::memcpy(to, bytes, count);
    }
  }

  NNLIB_ALWAYS_INLINE void operator()(const Columns& columns, size_t pixel) const {
    rows.multiply_pixels(columns.data(), columns.pixels(), pixel,
                         [this](const __m256i(&sums)[kVectors], size_t at) { finish(sums, at); });
  }

  uint32_t count;
  uint32_t pitch;
  typename Types::Activation* out;
  RowLanes<kVectors> rows;
  Requantizer to_output[kVectors];
};

// A block of weight rows and what becomes of their sums.
template <uint32_t kVectors, class T>
struct FinishedRowLanes<kVectors, FixedRows<T>> {
  FinishedRowLanes(const FixedRows<T>& all, uint32_t first_row, T* to)
      : count(std::min(all.count - first_row, kVectors * 8)),
        pitch(all.count),
        out(to + first_row),
        out_shift(_mm_cvtsi32_si128(static_cast<int>(all.shifts.out & 31))),
        rows(
            count, all.length, [&](uint32_t r) { return all.start(first_row + r); },
            [&](uint32_t r, uint32_t k) {
              return int16_t{all.weights[size_t{first_row + r} * all.length + k]};
            }) {}

  // Eight sums to the low or the high half of a vector's elements.
  NNLIB_ALWAYS_INLINE void finish(const __m256i (&sums)[kVectors], size_t pixel) const {
    T elements[kVectors * 8];
    NNLIB_UNROLL
    for (uint32_t v = 0; v < kVectors; ++v) {
      const __m256i shifted = _mm256_sra_epi32(sums[v], out_shift);
      const __m128i words =
          _mm_packs_epi32(_mm256_castsi256_si128(shifted), _mm256_extracti128_si256(shifted, 1));
      if constexpr (sizeof(T) == 1) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(elements + v * 8),
                         _mm_packs_epi16(words, words));
      } else {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(elements + v * 8), words);
      }
    }
    if (count == kVectors * 8) {
      std::memcpy(out + pixel * pitch, elements, sizeof(elements));
    } else {
      std::memcpy(out + pixel * pitch, elements, count * sizeof(T));
    }
  }

  NNLIB_ALWAYS_INLINE void operator()(const Columns& columns, size_t pixel) const {
    rows.multiply_pixels(columns.data(), columns.pixels(), pixel,
                         [this](const __m256i(&sums)[kVectors], size_t at) { finish(sums, at); });
  }

  uint32_t count;
  uint32_t pitch;
  T* out;
  __m128i out_shift;
  RowLanes<kVectors> rows;
};

template <class T>
constexpr bool kWholeMaps = false;

// The map by blocks of rows, where that pays.
template <class Rows, class T>
bool convolve_map(const Rows& rows, const ConvGeometry& g, const ColumnInputs<T>& inputs,
                  uint32_t columns, int16_t* scratch, typename Rows::Output* out) {
  const auto part = [&](auto vectors, uint32_t row) {
    Columns gathered(scratch, rows.length, columns);
    for_columns(g, inputs, gathered, FinishedRowLanes<vectors(), Rows>(rows, row, out));
  };
  return for_row_lanes(rows.count, rows.length, g.pixels(), part);
}
