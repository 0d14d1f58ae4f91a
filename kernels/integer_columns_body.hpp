#include "kernels/dot_tile_lanes.hpp"
#include "kernels/requantize_lanes.hpp"

// `rows` runs of `count` values, less `subtracted`, between rows of the given pitches.
template <class Activation>
void widen_rows(const Activation* in, size_t in_pitch, uint32_t rows, uint32_t count,
                int32_t subtracted, int16_t* out, size_t out_pitch) {
  for (uint32_t row = 0; row < rows; ++row, in += in_pitch, out += out_pitch) {
    uint32_t i = 0;
#if NNLIB_LANES == 8
    const __m256i less = _mm256_set1_epi16(static_cast<int16_t>(subtracted));
    for (; i + 16 <= count; i += 16) {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i),
                          _mm256_sub_epi16(load_bytes(in + i), less));
    }
    // The rest in eights; the last of them goes back over what is done.
    for (; i < count && count >= 8; i += 8) {
      i = std::min(i, count - 8);
      const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(in + i));
      const __m256i words = _mm256_sub_epi16(widen_bytes<Activation>(bytes), less);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm256_castsi256_si128(words));
    }
#endif
    for (; i < count; ++i) {
      out[i] = static_cast<int16_t>(in[i] - subtracted);
    }
  }
}

template <class Activation>
void widen(const Activation* in, uint32_t count, int32_t subtracted, int16_t* column) {
  widen_rows(in, 0, 1, count, subtracted, column, 0);
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
    const __m256i zeropoints = Types::kChannels
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
        const int32_t zeropoint = m.quantization.weight_zeropoint(row + r);
        acc = wrapping_add(acc, wrapping_multiply(-zeropoint, excess[p]));
      }
      out[row + r] = requantize(m.quantization, row + r, acc);
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
    if constexpr (Types::kChannels) {
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

// Calls product(columns, pixels, first pixel) for each two pixels of the map and for the odd last
// one.
template <class Types, class Product>
NNLIB_ALWAYS_INLINE void for_columns(const KoMatrix<Types>& m, const ConvGeometry& g,
                                     const typename Types::Activation* in, int32_t subtracted,
                                     int16_t* columns, const Product& product) {
  const uint32_t row_length = g.kernel_width * g.in_channels;
  const auto fill = static_cast<int16_t>(m.quantization.in_zeropoint - subtracted);
  uint32_t ready = 0;
  size_t pixel = 0;
  for (uint32_t y = 0; y < g.out_height; ++y) {
    const Window rows = g.rows(y);
    for (uint32_t x = 0; x < g.out_width; ++x) {
      const Window taps = g.columns(x);
      int16_t* column = columns + size_t{ready} * m.length;
      if (rows.count != g.kernel_height || taps.count != g.kernel_width) {
        std::fill_n(column, m.length, fill);
      }
      if (!rows.empty() && !taps.empty()) {
        widen_rows(
            in + (size_t{rows.begin} * g.in_width + taps.begin) * g.in_channels,
            size_t{g.in_width} * g.in_channels, rows.count, taps.count * g.in_channels, subtracted,
            column + size_t{rows.tap} * row_length + size_t{taps.tap} * g.in_channels, row_length);
      }
      if (++ready == 2) {
        product(columns, 2, pixel);
        pixel += 2;
        ready = 0;
      }
    }
  }
  if (ready == 1) {
    product(columns, 1, pixel);
  }
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

// For short columns: sixteen weight rows (or the last eight) side by side, less their zero points,
// so that each output is a lane and nothing is to be summed up across lanes. Rows that are missing
// have zero weights.
constexpr uint32_t kShortColumn = 256;

template <uint32_t kVectors, class Types>
struct RowLanes {
  RowLanes(const KoMatrix<Types>& m, uint32_t first_row, typename Types::Activation* to)
      : matrix(m), row(first_row), count(std::min(m.rows - first_row, kVectors * 8)), out(to) {
    for (uint32_t v = 0; v < kVectors; ++v) {
      load_rows_of_vector(v, row + v * 8, std::min(m.rows - row - v * 8, 8u));
    }
  }

  void load_rows_of_vector(uint32_t v, uint32_t first, uint32_t exist) {
    const KoMatrix<Types>& m = matrix;
    to_output[v] = requantizer<8>(m.quantization, first, exist);
    int32_t starts[8] = {};
    for (uint32_t r = 0; r < exist; ++r) {
      const int32_t zeropoint = m.quantization.weight_zeropoint(first + r);
      starts[r] = wrapping_add(
          m.bias != nullptr ? m.bias[first + r] : 0,
          wrapping_multiply(static_cast<int32_t>(m.length), zeropoint * m.column_zeropoint));
      const auto* weight = m.weights + size_t{first + r} * m.length;
      for (uint32_t k = 0; k < m.length; ++k) {
        pairs[k / 2][v][r][k % 2] = static_cast<int16_t>(weight[k] - zeropoint);
      }
    }
    start[v] = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(starts));
  }

  // The outputs of a column.
  NNLIB_ALWAYS_INLINE void finish(const __m256i* sums, size_t pixel) const {
    const __m256i first = to_output[0](sums[0]);
    const __m256i second = kVectors == 2 ? to_output[kVectors - 1](sums[kVectors - 1]) : first;
    const __m128i bytes = saturate_bytes<typename Types::Activation>(first, second);
    auto* to = out + pixel * matrix.rows + row;
    if (count == 16) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
    } else {
      std::memcpy(to, &bytes, count);
    }
  }

  template <uint32_t kPixels>
  NNLIB_ALWAYS_INLINE void multiply_lanes(const int16_t* columns, size_t pixel) const {
    __m256i sums[kPixels][kVectors];
    NNLIB_UNROLL
    for (uint32_t p = 0; p < kPixels; ++p) {
      NNLIB_UNROLL
      for (uint32_t v = 0; v < kVectors; ++v) {
        sums[p][v] = start[v];
      }
    }
    const uint32_t length = matrix.length;
    for (uint32_t k = 0; k < length; k += 2) {
      NNLIB_UNROLL
      for (uint32_t p = 0; p < kPixels; ++p) {
        // Of an odd length the last pair reaches one value further, which meets a zero weight.
        int32_t pair;
        std::memcpy(&pair, columns + p * length + k, sizeof(pair));
        const __m256i values = _mm256_set1_epi32(pair);
        NNLIB_UNROLL
        for (uint32_t v = 0; v < kVectors; ++v) {
          const __m256i weights =
              _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pairs[k / 2][v]));
          sums[p][v] = _mm256_add_epi32(sums[p][v], _mm256_madd_epi16(values, weights));
        }
      }
    }
    NNLIB_UNROLL
    for (uint32_t p = 0; p < kPixels; ++p) {
      finish(sums[p], pixel + p);
    }
  }

  void operator()(const int16_t* columns, uint32_t pixels, size_t pixel) const {
    if (pixels == 2) {
      multiply_lanes<2>(columns, pixel);
    } else {
      multiply_lanes<1>(columns, pixel);
    }
  }

  const KoMatrix<Types>& matrix;
  uint32_t row;
  uint32_t count;
  typename Types::Activation* out;
  __m256i start[kVectors];
  Requantizer to_output[kVectors];
  int16_t pairs[kShortColumn / 2][kVectors][8][2] = {};  // lanes of two weights each
};

#endif

template <class Types>
void convolve(const KoMatrix<Types>& m, const ConvGeometry& g, const typename Types::Activation* in,
              int32_t subtracted, int16_t* columns, typename Types::Activation* out) {
#if NNLIB_LANES == 8
  if (m.length <= kShortColumn && g.pixels() >= 16) {
    uint32_t row = 0;
    for (; m.rows - row > 8; row += std::min(m.rows - row, 16u)) {
      for_columns(m, g, in, subtracted, columns, RowLanes<2, Types>(m, row, out));
    }
    if (row < m.rows) {
      for_columns(m, g, in, subtracted, columns, RowLanes<1, Types>(m, row, out));
    }
    return;
  }
#endif
  for_columns(m, g, in, subtracted, columns, WholeRows<Types>{m, out});
}
