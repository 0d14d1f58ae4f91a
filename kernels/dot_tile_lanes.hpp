// SPDX-License-Identifier: MIT
// Dot products of 8-bit weight rows with 16-bit columns, eight at a time: four rows by two columns,
// or eight rows by one. For kernel bodies (vector.hpp), which include it into their namespace after
// including <immintrin.h> and dual_mac.hpp outside. Sums wrap, so their order is free.
//
//   const Columns<2> columns(values, length);             // two columns, one behind the other
//   const Tile sums = dot_tile<2>(rows, columns);         // rows: four pointers
//
// Sum number pixel * (8 / kPixels) + row. Narrow tiles are int32_t[8], wide ones one vector.

#if NNLIB_LANES == 8

using Tile = __m256i;

// The 16 values at `at`, as of which only the last `count` are new: the others count as zero.
NNLIB_ALWAYS_INLINE __m256i last_values(const int16_t* at, uint32_t count) {
  static constexpr int16_t kMask[32] = {0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,
                                        0,  0,  0,  0,  0,  -1, -1, -1, -1, -1, -1,
                                        -1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
  return _mm256_and_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(at)),
                          _mm256_loadu_si256(reinterpret_cast<const __m256i*>(kMask + count)));
}

// Columns, with the values that fill no whole step of 16 set out to meet what row_end reads.
template <uint32_t kPixels>
struct Columns {
  NNLIB_ALWAYS_INLINE Columns(const int16_t* first, uint32_t values) : data(first), length(values) {
    for (uint32_t p = 0; p < kPixels; ++p) {
      const int16_t* column = first + size_t{p} * values;
      if (values >= 16) {
        end[p] = last_values(column + values - 16, values % 16);
        continue;
      }
      // Two overlapping halves, or what there is.
      int16_t spread[16] = {};
      std::memcpy(spread, column, sizeof(int16_t) * std::min(values, 8u));
      for (uint32_t k = 8; k < values; ++k) {
        spread[16 - values + k] = column[k];
      }
      end[p] = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(spread));
    }
  }
  const int16_t* data;
  uint32_t length;
  __m256i end[kPixels];
};

template <class Weight>
NNLIB_ALWAYS_INLINE __m256i widen_bytes(__m128i bytes) {
  if constexpr (std::is_signed_v<Weight>) {
    return _mm256_cvtepi8_epi16(bytes);
  } else {
    return _mm256_cvtepu8_epi16(bytes);
  }
}

template <class Weight>
NNLIB_ALWAYS_INLINE __m256i load_bytes(const Weight* from) {
  return widen_bytes<Weight>(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from)));
}

// The last bytes of a row, reading nothing outside it.
template <class Weight>
NNLIB_ALWAYS_INLINE __m256i row_end(const Weight* row, uint32_t length) {
  if (length >= 16) {
    return load_bytes(row + length - 16);
  }
  if (length >= 8) {
    return widen_bytes<Weight>(
        _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(row)),
                           _mm_loadl_epi64(reinterpret_cast<const __m128i*>(row + length - 8))));
  }
  Weight bytes[16] = {};
  for (uint32_t k = 0; k < length; ++k) {
    bytes[k] = row[k];
  }
  return load_bytes(bytes);
}

template <uint32_t kPixels>
NNLIB_ALWAYS_INLINE void add_products(const __m256i* weights, const __m256i* values,
                                      __m256i* sums) {
  NNLIB_UNROLL
  for (uint32_t p = 0; p < kPixels; ++p) {
    NNLIB_UNROLL
    for (uint32_t r = 0; r < 8 / kPixels; ++r) {
      __m256i& sum = sums[p * (8 / kPixels) + r];
      sum = _mm256_add_epi32(sum, _mm256_madd_epi16(weights[r], values[p]));
    }
  }
}

NNLIB_ALWAYS_INLINE Tile reduce(const __m256i* s) {
  const __m256i a = _mm256_hadd_epi32(_mm256_hadd_epi32(s[0], s[1]), _mm256_hadd_epi32(s[2], s[3]));
  const __m256i b = _mm256_hadd_epi32(_mm256_hadd_epi32(s[4], s[5]), _mm256_hadd_epi32(s[6], s[7]));
  return _mm256_add_epi32(_mm256_permute2x128_si256(a, b, 0x20),
                          _mm256_permute2x128_si256(a, b, 0x31));
}

template <uint32_t kPixels, class Weight>
NNLIB_ALWAYS_INLINE Tile dot_tile(const Weight* const* rows, const Columns<kPixels>& columns) {
  constexpr uint32_t kRows = 8 / kPixels;
  __m256i sums[8];
  NNLIB_UNROLL
  for (__m256i& sum : sums) {
    sum = _mm256_setzero_si256();
  }
  __m256i weights[kRows];
  __m256i values[kPixels];
  const uint32_t whole = columns.length & ~15u;
  for (uint32_t k = 0; k < whole; k += 16) {
    NNLIB_UNROLL
    for (uint32_t r = 0; r < kRows; ++r) {
      weights[r] = load_bytes(rows[r] + k);
    }
    NNLIB_UNROLL
    for (uint32_t p = 0; p < kPixels; ++p) {
      values[p] = _mm256_loadu_si256(
          reinterpret_cast<const __m256i*>(columns.data + p * columns.length + k));
    }
    add_products<kPixels>(weights, values, sums);
  }
  if (whole != columns.length) {
    NNLIB_UNROLL
    for (uint32_t r = 0; r < kRows; ++r) {
      weights[r] = row_end(rows[r], columns.length);
    }
    add_products<kPixels>(weights, columns.end, sums);
  }
  return reduce(sums);
}

#else

struct Tile {
  int32_t sum[8];
};

template <uint32_t kPixels>
struct Columns {
  Columns(const int16_t* first, uint32_t values) : data(first), length(values) {}
  const int16_t* data;
  uint32_t length;
};

// Two rows by kPixels columns: what fits the registers of a small core. Separate sums of 16-bit
// products, so that compilers see a vector's multiply-add where there is one.
template <uint32_t kPixels, class Weight>
void dot_block(const Weight* row0, const Weight* row1, const Columns<kPixels>& columns,
               int32_t* sums) {
  const int16_t* column0 = columns.data;
  const int16_t* column1 = columns.data + (kPixels - 1) * columns.length;
  uint32_t sum00 = 0, sum01 = 0, sum10 = 0, sum11 = 0;  // column, row
#if NNLIB_DUAL_MAC
  for (uint32_t k = columns.length / 4; k > 0; --k, column0 += 4, column1 += 4) {
    const TwoPairs weights0 = take_pairs(row0);
    const TwoPairs weights1 = take_pairs(row1);
    const uint32_t first0 = load_pair(column0), second0 = load_pair(column0 + 2);
    sum00 = dual_mac(weights0.second, second0, dual_mac(weights0.first, first0, sum00));
    sum01 = dual_mac(weights1.second, second0, dual_mac(weights1.first, first0, sum01));
    if constexpr (kPixels == 2) {
      const uint32_t first1 = load_pair(column1), second1 = load_pair(column1 + 2);
      sum10 = dual_mac(weights0.second, second1, dual_mac(weights0.first, first1, sum10));
      sum11 = dual_mac(weights1.second, second1, dual_mac(weights1.first, first1, sum11));
    }
  }
  const uint32_t rest = columns.length % 4;
#else
  const uint32_t rest = columns.length;
#endif
  for (uint32_t k = 0; k < rest; ++k) {
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
  if constexpr (kPixels == 2) {
    sums[4] = static_cast<int32_t>(sum10);
    sums[5] = static_cast<int32_t>(sum11);
  }
}

template <uint32_t kPixels, class Weight>
Tile dot_tile(const Weight* const* rows, const Columns<kPixels>& columns) {
  Tile tile;
  for (uint32_t r = 0; r < 8 / kPixels; r += 2) {
    dot_block(rows[r], rows[r + 1], columns, tile.sum + r);
  }
  return tile;
}

#endif
