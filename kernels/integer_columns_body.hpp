// SPDX-License-Identifier: MIT
#include "kernels/dot_tile_lanes.hpp"

#include "kernels/column_lanes.hpp"
#include "kernels/requantize_lanes.hpp"
#include "kernels/row_lanes.hpp"

template <class Activation>
void widen(const Activation* in, uint32_t count, int32_t subtracted, int16_t* column) {
  widen_run(in, count, subtracted, column);
}

// What the zero points leave to take from each product sum, in units of the weight zero point.
template <class Types>
int32_t column_excess(const KoMatrix<Types>& m, const int16_t* column) {
  uint32_t sum = 0;
  uint32_t k = 0;
#if NNLIB_LANES == 8
  __m256i sums = _mm256_setzero_si256();
  for (; k + 16 <= m.length; k += 16) {
    const __m256i values = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(column + k));
    sums = _mm256_add_epi32(sums, _mm256_madd_epi16(values, _mm256_set1_epi16(1)));
  }
  uint32_t lanes[8];
  std::memcpy(lanes, &sums, sizeof(lanes));
  for (uint32_t lane : lanes) {
    sum += lane;
  }
#endif
  for (; k < m.length; ++k) {
    sum += static_cast<uint32_t>(static_cast<int32_t>(column[k]));
  }
  return static_cast<int32_t>(sum - m.length * static_cast<uint32_t>(m.column_zeropoint));
}

#if NNLIB_LANES == 8

template <uint32_t kPixels, class Types>
NNLIB_ALWAYS_INLINE void finish_tile(const KoMatrix<Types>& m, const Requantizer& to_output,
                                     Tile sums, const int32_t* excess, uint32_t row, uint32_t count,
                                     typename Types::Activation* out) {
  constexpr uint32_t kRows = 8 / kPixels;
  if (m.bias != nullptr) {
    sums = _mm256_add_epi32(sums, channel_lanes<kRows>(m.bias + row, count));
  }
  if constexpr (Types::kWeightZeropoint) {
    const auto& q = m.quantization;
    const __m256i zeropoints = q.of_channels()
                                   ? channel_lanes<kRows>(q.weight_zeropoints + row, count)
                                   : _mm256_set1_epi32(*q.weight_zeropoints);
    const __m256i excesses =
        _mm256_set_m128i(_mm_set1_epi32(excess[kPixels - 1]), _mm_set1_epi32(excess[0]));
    sums = _mm256_sub_epi32(sums, _mm256_mullo_epi32(zeropoints, excesses));
  }
  const uint32_t first = std::min(count, 4u);
  store_quads(to_output(sums), out + row, first, out + row + (kPixels == 2 ? m.rows : first),
              kPixels == 2 ? count : count - first);
}

#else

template <uint32_t kPixels, class Types>
void finish_tile(const KoMatrix<Types>& m, const Tile& tile, const int32_t* excess, uint32_t row,
                 uint32_t count, typename Types::Activation* out) {
  for (uint32_t p = 0; p < kPixels; ++p, out += m.rows) {
    for (uint32_t r = 0; r < count; ++r) {
      int32_t acc = tile.sum[p * (8 / kPixels) + r];
      if (m.bias != nullptr) {
        acc = wrapping_add(acc, m.bias[row + r]);
      }
      if constexpr (Types::kWeightZeropoint) {
        const int32_t zeropoint = weight_zeropoint<Types>(m.quantization, row + r);
        acc = wrapping_add(acc, wrapping_multiply(-zeropoint, excess[p]));
      }
      out[row + r] = requantize<typename Types::Activation>(m.quantization, row + r, acc);
    }
  }
}

#endif

template <uint32_t kPixels, class Types>
void multiply_tiles(const KoMatrix<Types>& m, const int16_t* data,
                    typename Types::Activation* out) {
  constexpr uint32_t kRows = 8 / kPixels;
  const Columns<kPixels> columns(data, m.length);
  int32_t excess[kPixels] = {};
  if constexpr (Types::kWeightZeropoint) {
    for (uint32_t p = 0; p < kPixels; ++p) {
      excess[p] = column_excess(m, data + size_t{p} * m.length);
    }
  }
#if NNLIB_LANES == 8
  Requantizer to_output = requantizer<kRows>(m.quantization, 0, std::min(m.rows, kRows));
#endif
  for (uint32_t row = 0; row < m.rows; row += kRows) {
    const uint32_t count = std::min(m.rows - row, kRows);
    const typename Types::Weight* rows[kRows];
    for (uint32_t r = 0; r < kRows; ++r) {  // past the last row: the last row again
      rows[r] = m.weights + size_t{row + std::min(r, count - 1)} * m.length;
    }
    const Tile sums = dot_tile<kPixels>(rows, columns);
#if NNLIB_LANES == 8
    if (row != 0 && m.quantization.of_channels()) {
      to_output = requantizer<kRows>(m.quantization, row, count);
    }
    finish_tile<kPixels>(m, to_output, sums, excess, row, count, out);
#else
    finish_tile<kPixels>(m, sums, excess, row, count, out);
#endif
  }
}

template <class Types>
typename Types::Activation* multiply(const KoMatrix<Types>& m, const int16_t* columns,
                                     uint32_t pixels, typename Types::Activation* out) {
  if (pixels == 2) {
    multiply_tiles<2>(m, columns, out);
  } else {
    multiply_tiles<1>(m, columns, out);
  }
  return out + size_t{pixels} * m.rows;
}

template <class Types>
struct WholeRows {
  const KoMatrix<Types>& matrix;
  typename Types::Activation* out;
  void operator()(const int16_t* columns, uint32_t pixels, size_t pixel) const {
    multiply(matrix, columns, pixels, out + pixel * matrix.rows);
  }
};

#if NNLIB_LANES == 8

// A block of weight rows, less their zero points, and what becomes of their sums.
template <uint32_t kVectors, class Types>
struct IntegerRowLanes {
  IntegerRowLanes(const KoMatrix<Types>& m, uint32_t first_row, typename Types::Activation* to)
      : count(std::min(m.rows - first_row, kVectors * 8)),
        pitch(m.rows),
        out(to + first_row),
        rows(
            count, m.length,
            [&](uint32_t r) {
              const int32_t zeropoint = weight_zeropoint<Types>(m.quantization, first_row + r);
              return wrapping_add(m.bias != nullptr ? m.bias[first_row + r] : 0,
                                  wrapping_multiply(static_cast<int32_t>(m.length),
                                                    zeropoint * m.column_zeropoint));
            },
            [&](uint32_t r, uint32_t k) {
              return static_cast<int16_t>(m.weights[size_t{first_row + r} * m.length + k] -
                                          weight_zeropoint<Types>(m.quantization, first_row + r));
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

  NNLIB_ALWAYS_INLINE void operator()(const int16_t* columns, uint32_t pixels, size_t pixel) const {
    rows.multiply_pixels(columns, pixels, pixel,
                         [this](const __m256i(&sums)[kVectors], size_t at) { finish(sums, at); });
  }

  uint32_t count;
  uint32_t pitch;
  typename Types::Activation* out;
  RowLanes<kVectors> rows;
  Requantizer to_output[kVectors];
};

#endif

template <class Types>
void convolve(const KoMatrix<Types>& m, const ConvGeometry& g, const typename Types::Activation* in,
              int32_t subtracted, int16_t* columns, typename Types::Activation* out) {
  const auto fill = static_cast<int16_t>(m.quantization.in_zeropoint - subtracted);
#if NNLIB_LANES == 8
  const auto part = [&](auto vectors, uint32_t row) {
    for_columns(g, in, subtracted, fill, columns, 2,
                IntegerRowLanes<vectors(), Types>(m, row, out));
  };
  if (for_row_lanes(m.rows, m.length, g.pixels(), part)) {
    return;
  }
#endif
  for_columns(g, in, subtracted, fill, columns, 2, WholeRows<Types>{m, out});
}
