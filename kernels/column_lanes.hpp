// SPDX-License-Identifier: MIT
// Columns: what output pixels of a convolution see, as 16-bit values in the order kernel row,
// kernel column, channel. For kernel bodies (vector.hpp), which include it into their namespace
// after dot_tile_lanes.hpp.

constexpr uint32_t whole_steps(uint32_t count) {
  return (count + 15) & ~15u;
}

// `count` values, less `subtracted`. Loose: as many as fill whole steps may be read and written.
template <bool kLoose = false, class T>
NNLIB_ALWAYS_INLINE void widen_run(const T* in, uint32_t count, int32_t subtracted, int16_t* out) {
  uint32_t i = 0;
  if constexpr (sizeof(T) == sizeof(int16_t)) {
    if (!kLoose && subtracted == 0) {
      std::memcpy(out, in, count * sizeof(T));
      return;
    }
  }
#if NNLIB_LANES == 8
  const __m256i less = _mm256_set1_epi16(static_cast<int16_t>(subtracted));
  for (; i + (kLoose ? 1 : 16) <= count; i += 16) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i),
                        _mm256_sub_epi16(load_bytes(in + i), less));
  }
  if constexpr (!kLoose && sizeof(T) == 1) {
    // The rest in eights; the last of them goes back over what is done.
    for (; i < count && count >= 8; i += 8) {
      i = std::min(i, count - 8);
      const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(in + i));
      const __m256i words = _mm256_sub_epi16(widen_bytes<T>(bytes), less);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm256_castsi256_si128(words));
    }
  }
#endif
  for (; i < count; ++i) {
    out[i] = static_cast<int16_t>(in[i] - subtracted);
  }
}

// How many of a window's rows, from the first on, may be written loosely when they are whole: what
// comes of it is overwritten by the rows that follow.
constexpr uint32_t loose_rows(const Window& rows, uint32_t row_length) {
  uint32_t loose = 0;
  while (loose + 1 < rows.count && (rows.count - loose) * row_length >= whole_steps(row_length)) {
    ++loose;
  }
  return loose;
}

// The column of the output pixel whose window has the given parts inside the map, `fill` where it
// has none. loose: loose_rows of a whole row.
template <class T>
NNLIB_ALWAYS_INLINE void gather_column(const ConvGeometry& g, const T* in, const Window& rows,
                                       const Window& taps, uint32_t loose, int32_t subtracted,
                                       int16_t fill, int16_t* column) {
  const bool whole = taps.count == g.kernel_width;
  if (rows.count != g.kernel_height || !whole) {
    std::fill_n(column, g.column_length(), fill);
  }
  if (taps.empty()) {
    return;
  }
  const size_t row_length = size_t{g.kernel_width} * g.in_channels;
  const size_t in_row_length = size_t{g.in_width} * g.in_channels;
  const uint32_t count = taps.count * g.in_channels;
  in += rows.begin * in_row_length + size_t{taps.begin} * g.in_channels;
  column += rows.tap * row_length + size_t{taps.tap} * g.in_channels;
  uint32_t row = 0;
  for (; whole && row < loose; ++row, in += in_row_length, column += row_length) {
    widen_run<true>(in, count, subtracted, column);
  }
  for (; row < rows.count; ++row, in += in_row_length, column += row_length) {
    widen_run(in, count, subtracted, column);
  }
}

// Calls product(columns, pixels, first pixel) for each `at_a_time` pixels of the map, in memory
// order, and for those left over at the end. The columns' values are input - subtracted, `fill`
// where the window has no input.
template <class T, class Product>
NNLIB_ALWAYS_INLINE void for_columns(ConvGeometry g, const T* in, int32_t subtracted, int16_t fill,
                                     int16_t* columns, uint32_t at_a_time, const Product& product) {
  const uint32_t length = g.column_length();
  uint32_t ready = 0;
  size_t pixel = 0;
  for (uint32_t y = 0; y < g.out_height; ++y) {
    const Window rows = g.rows(y);
    const uint32_t loose = NNLIB_LANES == 8 ? loose_rows(rows, g.kernel_width * g.in_channels) : 0;
    for (uint32_t x = 0; x < g.out_width; ++x) {
      gather_column(g, in, rows, g.columns(x), loose, subtracted, fill,
                    columns + size_t{ready} * length);
      if (++ready == at_a_time) {
        product(columns, ready, pixel);
        pixel += ready;
        ready = 0;
      }
    }
  }
  if (ready != 0) {
    product(columns, ready, pixel);
  }
}
