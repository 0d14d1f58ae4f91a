// SPDX-License-Identifier: MIT
// Body of fixed_columns.cpp, once for each number of lanes.

#if NNLIB_LANES == 8

// What lets the tile take 16-bit weights as well.
NNLIB_ALWAYS_INLINE __m256i load_bytes(const q15_t* from) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
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

#endif

#include "kernels/dot_tile_lanes.hpp"

#include "kernels/column_lanes.hpp"
#include "kernels/row_lanes.hpp"

#if NNLIB_LANES == 8

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
template <uint32_t kRows, class Weight>
NNLIB_ALWAYS_INLINE __m256i bias_lanes(const FixedRows<Weight>& rows, uint32_t row,
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

template <uint32_t kPixels, class Weight, class Out>
NNLIB_ALWAYS_INLINE void finish_fixed_tile(const FixedRows<Weight>& rows, Tile sums, uint32_t row,
                                           uint32_t count, Out* out) {
  constexpr uint32_t kRows = 8 / kPixels;
  const __m128i bias_shift = _mm_cvtsi32_si128(static_cast<int>(rows.shifts.bias & 31));
  const __m128i out_shift = _mm_cvtsi32_si128(static_cast<int>(rows.shifts.out & 31));
  const auto half = static_cast<int32_t>(fixed_start<Weight>(nullptr, 0, rows.shifts));
  sums = _mm256_add_epi32(sums, _mm256_sll_epi32(bias_lanes<kRows>(rows, row, count), bias_shift));
  sums = _mm256_sra_epi32(_mm256_add_epi32(sums, _mm256_set1_epi32(half)), out_shift);
  __m256i packed = _mm256_packs_epi32(sums, sums);
  if constexpr (sizeof(Out) == 1) {
    packed = _mm256_packs_epi16(packed, packed);
  }
  const uint32_t first = std::min(count, 4u);
  store_fixed_quad(_mm256_castsi256_si128(packed), out + row, first);
  store_fixed_quad(_mm256_extracti128_si256(packed, 1),
                   out + row + (kPixels == 2 ? rows.count : first),
                   kPixels == 2 ? count : count - first);
}

#else

template <uint32_t kPixels, class Weight, class Out>
void finish_fixed_tile(const FixedRows<Weight>& rows, const Tile& tile, uint32_t row,
                       uint32_t count, Out* out) {
  for (uint32_t p = 0; p < kPixels; ++p, out += rows.count) {
    for (uint32_t r = 0; r < count; ++r) {
      const uint32_t sum = static_cast<uint32_t>(tile.sum[p * (8 / kPixels) + r]);
      out[row + r] =
          fixed_finish<Out>(fixed_start(rows.bias, row + r, rows.shifts) + sum, rows.shifts);
    }
  }
}

#endif

template <uint32_t kPixels, class Weight, class Out>
void multiply_fixed_tiles(const FixedRows<Weight> rows, const q15_t* data, Out* out) {
  constexpr uint32_t kRows = 8 / kPixels;
  const Columns<kPixels> columns(data, rows.length);
  for (uint32_t row = 0; row < rows.count; row += kRows) {
    const uint32_t count = std::min(rows.count - row, kRows);
    const Weight* weights[kRows];
    for (uint32_t r = 0; r < kRows; ++r) {  // past the last row: the last row again
      weights[r] = rows.weights + size_t{row + std::min(r, count - 1)} * rows.length;
    }
    finish_fixed_tile<kPixels>(rows, dot_tile<kPixels>(weights, columns), row, count, out);
  }
}

template <class Product>
void multiply_fixed(const Product& product) {
  if (product.pixels == 2) {
    multiply_fixed_tiles<2>(product.rows, product.columns, product.out);
  } else {
    multiply_fixed_tiles<1>(product.rows, product.columns, product.out);
  }
}

template <class T>
struct FixedWholeRows {
  const FixedRows<T>& rows;
  T* out;
  void operator()(const q15_t* columns, uint32_t pixels, size_t pixel) const {
    multiply_fixed(FixedProduct<T, T>{rows, columns, pixels, out + pixel * rows.count});
  }
};

#if NNLIB_LANES == 8

// A block of weight rows and what becomes of their sums.
template <uint32_t kVectors, class T>
struct FixedRowLanes {
  FixedRowLanes(const FixedRows<T>& all, uint32_t first_row, T* to)
      : count(std::min(all.count - first_row, kVectors * 8)),
        pitch(all.count),
        out(to + first_row),
        out_shift(_mm_cvtsi32_si128(static_cast<int>(all.shifts.out & 31))),
        rows(
            count, all.length,
            [&](uint32_t r) {
              return static_cast<int32_t>(fixed_start(all.bias, first_row + r, all.shifts));
            },
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

  NNLIB_ALWAYS_INLINE void operator()(const q15_t* columns, uint32_t pixels, size_t pixel) const {
    rows.multiply_pixels(columns, pixels, pixel,
                         [this](const __m256i(&sums)[kVectors], size_t at) { finish(sums, at); });
  }

  uint32_t count;
  uint32_t pitch;
  T* out;
  __m128i out_shift;
  RowLanes<kVectors> rows;
};

#endif

// Pixels in row-major order, `columns` at a time.
template <class T>
void convolve_fixed(const FixedConv<T>& conv, uint32_t columns, q15_t* scratch) {
  const ConvGeometry& g = conv.geometry;
  const FixedRows<T> rows{conv.weights, conv.bias, g.out_channels, g.column_length(), conv.shifts};
#if NNLIB_LANES == 8
  const auto part = [&](auto vectors, uint32_t row) {
    for_columns(g, conv.in, 0, 0, scratch, columns,
                FixedRowLanes<vectors(), T>(rows, row, conv.out));
  };
  if (for_row_lanes(rows.count, rows.length, g.pixels(), part)) {
    return;
  }
#endif
  for_columns(g, conv.in, 0, 0, scratch, columns, FixedWholeRows<T>{rows, conv.out});
}
