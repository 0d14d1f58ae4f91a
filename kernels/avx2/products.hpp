// SPDX-License-Identifier: MIT
// Tiles of four rows by two columns or eight rows by one. Sums wrap, so their order is free.

#include "kernels/avx2/row_lanes.hpp"

template <uint32_t kPixels>
constexpr uint32_t kTileRows = 8 / kPixels;

// The 16 values at `at`, as of which only the last `count` are new: the others count as zero.
NNLIB_ALWAYS_INLINE __m256i last_values(const int16_t* at, uint32_t count) {
  static constexpr int16_t kMask[32] = {0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,
                                        0,  0,  0,  0,  0,  -1, -1, -1, -1, -1, -1,
                                        -1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
  return _mm256_and_si256(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(at)),
                          _mm256_loadu_si256(reinterpret_cast<const __m256i*>(kMask + count)));
}

// Columns one behind the other, with the values that fill no whole step of 16 set out to meet what
// row_end reads.
template <uint32_t kPixels>
struct TileColumns {
  NNLIB_ALWAYS_INLINE TileColumns(const int16_t* first, uint32_t values)
      : data(first), length(values) {
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

NNLIB_ALWAYS_INLINE __m256i row_end(const q15_t* row, uint32_t length) {
  if (length >= 16) {
    return load_bytes(row + length - 16);
  }
  q15_t spread[16] = {};
  for (uint32_t k = 0; k < length; ++k) {
    spread[k < 8 ? k : 16 - length + k] = row[k];
  }
  return load_bytes(spread);
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

NNLIB_ALWAYS_INLINE __m256i reduce(const __m256i* s) {
  const __m256i a = _mm256_hadd_epi32(_mm256_hadd_epi32(s[0], s[1]), _mm256_hadd_epi32(s[2], s[3]));
  const __m256i b = _mm256_hadd_epi32(_mm256_hadd_epi32(s[4], s[5]), _mm256_hadd_epi32(s[6], s[7]));
  return _mm256_add_epi32(_mm256_permute2x128_si256(a, b, 0x20),
                          _mm256_permute2x128_si256(a, b, 0x31));
}

template <uint32_t kPixels, class Weight>
NNLIB_ALWAYS_INLINE __m256i dot_tile(const Weight* const* rows,
                                     const TileColumns<kPixels>& columns) {
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

// The first `count` of the four elements in the low bytes of quad.
template <class Out>
NNLIB_ALWAYS_INLINE void store_fixed_quad(__m128i quad, Out* out, uint32_t count) {
  if (count == 4 && sizeof(Out) == 1) {
    const int32_t elements = _mm_cvtsi128_si32(quad);
    std::memcpy(out, &elements, sizeof(elements));
  } else if (count == 4) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out), quad);
  } else {
    Out elements[16 / sizeof(Out)];
    _mm_storeu_si128(reinterpret_cast<__m128i*>(elements), quad);
    std::memcpy(out, elements, count * sizeof(Out));
  }
}

// The biases of `count` rows, in order over the eight lanes, of four rows twice.
template <uint32_t kRows, class Weight, class Out>
NNLIB_ALWAYS_INLINE __m256i bias_lanes(const FixedRows<Weight, Out>& rows, uint32_t row,
                                       uint32_t count) {
  if (rows.bias == nullptr) {
    return _mm256_setzero_si256();
  }
  const Weight* bias = rows.bias + row;
  Weight some[kRows] = {};
  if (count < kRows) {
    std::memcpy(some, bias, count * sizeof(Weight));
    bias = some;
  }
  constexpr size_t kBytes = kRows * sizeof(Weight);
  __m128i raw;
  if constexpr (kBytes == 4) {
    int32_t word;
    std::memcpy(&word, bias, sizeof(word));
    raw = _mm_set1_epi32(word);
  } else if constexpr (kBytes == 8) {
    raw = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(bias));
    raw = kRows == 4 ? _mm_unpacklo_epi64(raw, raw) : raw;
  } else {
    raw = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bias));
  }
  return sizeof(Weight) == 1 ? _mm256_cvtepi8_epi32(raw) : _mm256_cvtepi16_epi32(raw);
}

template <uint32_t kPixels, class Rows>
class TileProduct;

template <uint32_t kPixels, class Rows>
NNLIB_ALWAYS_INLINE __m256i tile_sums(const Rows& rows, const TileColumns<kPixels>& columns,
                                      uint32_t row, uint32_t count) {
  const typename Rows::Weight* weights[kTileRows<kPixels>];
  for (uint32_t r = 0; r < kTileRows<kPixels>; ++r) {  // past the last row: the last row again
    weights[r] = rows.weights + size_t{row + std::min(r, count - 1)} * rows.length;
  }
  return dot_tile<kPixels>(weights, columns);
}

template <uint32_t kPixels, class Types>
class TileProduct<kPixels, IntegerRows<Types>> {
  static constexpr uint32_t kRows = kTileRows<kPixels>;

 public:
  NNLIB_ALWAYS_INLINE TileProduct(const IntegerRows<Types>& rows, const Columns& columns)
      : TileProduct(rows, columns.data()) {}
  NNLIB_ALWAYS_INLINE TileProduct(const IntegerRows<Types>& rows, const int16_t* columns)
      : rows_(rows),
        columns_(columns, rows.length),
        to_output_(requantizer<kRows>(rows.quantization, 0, std::min(rows.count, kRows))) {
    if constexpr (Types::kWeightZeropoint) {
      excess_ = _mm256_set_m128i(
          _mm_set1_epi32(column_excess(rows, columns + size_t{kPixels - 1} * rows.length)),
          _mm_set1_epi32(column_excess(rows, columns)));
    }
  }

  NNLIB_ALWAYS_INLINE void operator()(uint32_t row, uint32_t count,
                                      typename Types::Activation* out) {
    const auto& q = rows_.quantization;
    __m256i sums = tile_sums(rows_, columns_, row, count);
    if (row != 0 && q.of_channels()) {
      to_output_ = requantizer<kRows>(q, row, count);
    }
    if (rows_.bias != nullptr) {
      sums = _mm256_add_epi32(sums, channel_lanes<kRows>(rows_.bias + row, count));
    }
    if constexpr (Types::kWeightZeropoint) {
      const __m256i zeropoints = q.of_channels()
                                     ? channel_lanes<kRows>(q.weight_zeropoints + row, count)
                                     : _mm256_set1_epi32(*q.weight_zeropoints);
      sums = _mm256_sub_epi32(sums, _mm256_mullo_epi32(zeropoints, excess_));
    }
    const uint32_t first = std::min(count, 4u);
    store_quads(to_output_(sums), out, first, out + (kPixels == 2 ? rows_.count : first),
                kPixels == 2 ? count : count - first);
  }

 private:
  const IntegerRows<Types>& rows_;
  const TileColumns<kPixels> columns_;
  Requantizer to_output_;
  __m256i excess_;
};

template <uint32_t kPixels, class Weight, class Out>
class TileProduct<kPixels, FixedRows<Weight, Out>> {
  static constexpr uint32_t kRows = kTileRows<kPixels>;

 public:
  NNLIB_ALWAYS_INLINE TileProduct(const FixedRows<Weight, Out>& rows, const Columns& columns)
      : TileProduct(rows, columns.data()) {}
  NNLIB_ALWAYS_INLINE TileProduct(const FixedRows<Weight, Out>& rows, const int16_t* columns)
      : rows_(rows), columns_(columns, rows.length) {}

  NNLIB_ALWAYS_INLINE void operator()(uint32_t row, uint32_t count, Out* out) {
    const __m128i bias_shift = _mm_cvtsi32_si128(static_cast<int>(rows_.shifts.bias & 31));
    const __m128i out_shift = _mm_cvtsi32_si128(static_cast<int>(rows_.shifts.out & 31));
    const auto half = static_cast<int32_t>(fixed_start<Weight>(nullptr, 0, rows_.shifts));
    __m256i sums = tile_sums(rows_, columns_, row, count);
    sums =
        _mm256_add_epi32(sums, _mm256_sll_epi32(bias_lanes<kRows>(rows_, row, count), bias_shift));
    sums = _mm256_sra_epi32(_mm256_add_epi32(sums, _mm256_set1_epi32(half)), out_shift);
    __m256i packed = _mm256_packs_epi32(sums, sums);
    if constexpr (sizeof(Out) == 1) {
      packed = _mm256_packs_epi16(packed, packed);
    }
    const uint32_t first = std::min(count, 4u);
    store_fixed_quad(_mm256_castsi256_si128(packed), out, first);
    store_fixed_quad(_mm256_extracti128_si256(packed, 1),
                     out + (kPixels == 2 ? rows_.count : first),
                     kPixels == 2 ? count : count - first);
  }

 private:
  const FixedRows<Weight, Out>& rows_;
  const TileColumns<kPixels> columns_;
};
