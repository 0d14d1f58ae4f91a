// SPDX-License-Identifier: MIT
// Body of float_pool.cpp, once for each number of lanes.

template <class V>
NNLIB_ALWAYS_INLINE V greater(V a, V b) {
  return a > b ? a : b;
}
#if NNLIB_MVE_FLOAT
// Compilers make four branches of the same.
NNLIB_ALWAYS_INLINE Vec greater(Vec a, Vec b) {
  return vpselq_f32(a, b, vcmpgtq_f32(a, b));
}
#endif

template <Pooling kind, class V>
NNLIB_ALWAYS_INLINE V fold(V folded, V cell) {
  if constexpr (kind == Pooling::kMax) {
    return greater(folded, cell);
  } else {
    return folded + cell;
  }
}

template <Pooling kind, class V>
NNLIB_ALWAYS_INLINE V finish(V folded, float count) {
  if constexpr (kind == Pooling::kScaledSum) {
    return folded * (1.0f / count);
  } else if constexpr (kind == Pooling::kMean) {
    return folded / count;
  } else {
    return folded;
  }
}

// A single float as one: a compiler may take a copy of its bytes through integer registers.
template <class V>
NNLIB_ALWAYS_INLINE V load_cells(const float* from) {
  if constexpr (std::is_same_v<V, float>) {
    return *from;
  } else {
    V value;
    std::memcpy(&value, from, sizeof(V));
    return value;
  }
}

// One pixel, for as many channels as Count values V have.
template <Pooling kind, class V, size_t Count>
NNLIB_ALWAYS_INLINE void pool_channels(const WindowCells& cells, float start, float count,
                                       const float* in, float* out) {
  constexpr size_t kStep = sizeof(V) / sizeof(float);
  V folded[Count];
  NNLIB_UNROLL
  for (size_t i = 0; i < Count; ++i) {
    folded[i] = start - V{};
  }
  for (uint32_t y = 0; y < cells.rows; ++y, in += cells.row_pitch) {
    const float* cell = in;
    for (uint32_t x = 0; x < cells.columns; ++x, cell += cells.channels) {
      NNLIB_UNROLL
      for (size_t i = 0; i < Count; ++i) {
        folded[i] = fold<kind>(folded[i], load_cells<V>(cell + i * kStep));
      }
    }
  }
  NNLIB_UNROLL
  for (size_t i = 0; i < Count; ++i) {
    const V result = finish<kind>(folded[i], count);
    if constexpr (std::is_same_v<V, float>) {
      out[i] = result;
    } else {
      std::memcpy(out + i * kStep, &result, sizeof(V));
    }
  }
}

// From channel c on as many as Count values V have, again and again; returns the first one left.
template <Pooling kind, class V, size_t Count>
NNLIB_ALWAYS_INLINE uint32_t pool_tiles(const WindowCells& cells, float start, float count,
                                        const float* in, float* out, uint32_t c) {
  constexpr uint32_t kTile = Count * sizeof(V) / sizeof(float);
  for (; cells.channels - c >= kTile; c += kTile) {
    pool_channels<kind, V, Count>(cells, start, count, in + c, out + c);
  }
  return c;
}

template <Pooling kind>
void pool_pixel(const WindowCells& cells, float start, float count, const float* in, float* out) {
  using Half = VectorOf<float, (kLanes + 1) / 2>::type;
  uint32_t c = pool_tiles<kind, Vec, 4>(cells, start, count, in, out, 0);
  c = pool_tiles<kind, Vec, 1>(cells, start, count, in, out, c);
  c = pool_tiles<kind, Half, 1>(cells, start, count, in, out, c);
  pool_tiles<kind, float, 1>(cells, start, count, in, out, c);
}

template <Pooling kind>
void pool(PoolGeometry g, PoolOptions options, const float* in, float* out) {
  const size_t row_pitch = size_t{g.in_width} * g.channels;
  for (uint32_t y = 0; y < g.out_height; ++y) {
    const Window rows = g.rows(y);
    for (uint32_t x = 0; x < g.out_width; ++x, out += g.channels) {
      const Window columns = g.columns(x);
      const WindowCells cells = {rows.count, columns.count, row_pitch, g.channels};
      if (options.skip_empty && cells.number() == 0) {
        continue;
      }
      const uint32_t count = options.count != 0 ? options.count : cells.number();
      pool_pixel<kind>(cells, options.start, static_cast<float>(count),
                       in + rows.begin * row_pitch + size_t{columns.begin} * g.channels, out);
    }
  }
}
