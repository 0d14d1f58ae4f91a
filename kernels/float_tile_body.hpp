// SPDX-License-Identifier: MIT
// The register block of every float product: P rows of `a` (pixels, positions) times NV vectors of
// columns of `b` (output channels), k strictly in order. Included by bodies; see vector.hpp.
//
// Between chunks of k the partial sums rest in the output, which changes no bit.

// Vectors of sums in registers: enough to hide an addition's latency. A core that takes one float
// at a time has instructions to save: with 16 sums, half as many loads.
#if NNLIB_LANES == 1 && defined(__ARM_FP) && !defined(__OPTIMIZE_SIZE__)
constexpr size_t kBlockSums = 16;
constexpr size_t kTileVectors = 4;
constexpr size_t kRowVectors = 8;  // of a single row
#elif !NNLIB_FOR_SPEED && (defined(__SOFTFP__) || defined(__riscv_float_abi_soft))
constexpr size_t kBlockSums = 2;  // operations are calls, next to which loads count for little
constexpr size_t kTileVectors = 1;
constexpr size_t kRowVectors = 2;
#elif NNLIB_MVE_FLOAT
constexpr size_t kBlockSums = 4;
constexpr size_t kTileVectors = 1;
constexpr size_t kRowVectors = 4;
#else
constexpr size_t kBlockSums = 8;
constexpr size_t kTileVectors = 2;
constexpr size_t kRowVectors = NNLIB_LANES == 1 ? 4 : 8;
#endif
constexpr size_t kTileColumns = kTileVectors * kLanes;

// With vectors, columns are packed into a tile on the stack, 128 k at a time (8 KiB on wide
// vectors): it stays in the first-level cache while all rows pass over it. Without, or where
// vectors are gathered, they are read in place.
constexpr bool kPacks = kLanes > 1 && !kGathers;
constexpr size_t kTileDepth = kPacks ? 128 : SIZE_MAX;
struct alignas(kPacks ? 64 : alignof(float)) TileBuffer {
  float data[kPacks ? kTileColumns * 128 : 1];
};

// Column c of k is data[k * k_pitch + c / kLanes * vector_pitch] in lane c % kLanes.
struct Tile {
  const float* data;
  size_t k_pitch;
  size_t vector_pitch;
  ColumnLanes lanes;
};

// Rows of a block of NV vectors; where those are read in place at most 4, for which there are
// pointers.
template <size_t NV>
constexpr size_t kBlockRows = kPacks || kBlockSums / NV < 4 ? kBlockSums / NV : 4;

// Some columns of b: whole vectors, or one with fewer columns than lanes.
struct Columns {
  size_t first;
  size_t vectors;
  size_t lanes;  // of the last vector
  size_t next;   // the first column behind them
};

// The next columns from `first` on: most_vectors, or that halved until it fits. What is left at the
// end is made a whole vector with columns before it: those are computed a second time, from the
// start, with the same result.
inline Columns columns_from(size_t first, size_t total, size_t most_vectors = kTileVectors) {
  const size_t left = total - first;
  if (left >= kLanes) {
    size_t vectors = most_vectors;
    while (vectors * kLanes > left) {
      vectors /= 2;
    }
    return {first, vectors, kLanes, first + vectors * kLanes};
  }
  return total >= kLanes ? Columns{total - kLanes, 1, kLanes, total} : Columns{0, 1, total, total};
}

// acc[p][v] += a[p * row_pitch + k * a_k] * (vector v of k), for k < depth.
template <size_t P, size_t NV>
NNLIB_ALWAYS_INLINE void accumulate(Vec (&acc)[P][NV], const float* a, size_t row_pitch, size_t a_k,
                                    Tile tile, size_t depth) {
  const float* b = tile.data;
  for (; depth != 0; --depth) {
    Vec columns[NV];
    NNLIB_UNROLL
    for (size_t v = 0; v < NV; ++v) {
      columns[v] = tile.lanes.at(b + v * tile.vector_pitch);
    }
    NNLIB_UNROLL
    for (size_t p = 0; p < P; ++p) {
      const auto x = splat(a[p * row_pitch]);
      NNLIB_UNROLL
      for (size_t v = 0; v < NV; ++v) {
        acc[p][v] = multiply_add(acc[p][v], x, columns[v]);
      }
    }
    a += a_k;
    b += tile.k_pitch;
  }
}

// As accumulate, contiguous in a and b, for a depth of 1 and more: a pointer for each row and
// vector, which loads move on, so that small cores need no arithmetic for addresses.
template <size_t P, size_t NV>
NNLIB_ALWAYS_INLINE void accumulate_contiguous(Vec (&acc)[P][NV], const float* a, size_t row_pitch,
                                               Tile tile, size_t depth) {
  const float* rows[P];
  const float* columns[NV];
  NNLIB_UNROLL
  for (size_t p = 0; p < P; ++p) {
    rows[p] = a + p * row_pitch;
  }
  NNLIB_UNROLL
  for (size_t v = 0; v < NV; ++v) {
    columns[v] = tile.data + v * tile.vector_pitch;
  }
  do {
    Vec w[NV];
    NNLIB_UNROLL
    for (size_t v = 0; v < NV; ++v) {
      w[v] = tile.lanes.at(columns[v]++);
    }
    NNLIB_UNROLL
    for (size_t p = 0; p < P; ++p) {
      const auto x = splat(*rows[p]++);
      NNLIB_UNROLL
      for (size_t v = 0; v < NV; ++v) {
        acc[p][v] = multiply_add(acc[p][v], x, w[v]);
      }
    }
  } while (--depth != 0);
}

template <size_t P, size_t NV>
NNLIB_ALWAYS_INLINE void copy_block(Vec (&to)[P][NV], const Vec (&from)[P][NV]) {
  NNLIB_UNROLL
  for (size_t p = 0; p < P; ++p) {
    NNLIB_UNROLL
    for (size_t v = 0; v < NV; ++v) {
      to[p][v] = from[p][v];
    }
  }
}

template <size_t P, size_t NV>
NNLIB_ALWAYS_INLINE void load_block(Vec (&acc)[P][NV], const float* from, size_t row_pitch,
                                    size_t lanes) {
  NNLIB_UNROLL
  for (size_t p = 0; p < P; ++p) {
    NNLIB_UNROLL
    for (size_t v = 0; v < NV - 1; ++v) {
      acc[p][v] = load(from + p * row_pitch + v * kLanes);
    }
    const float* last = from + p * row_pitch + (NV - 1) * kLanes;
    acc[p][NV - 1] = kLanes == 1 || lanes == kLanes ? load(last) : load_part(last, lanes);
  }
}

template <size_t P, size_t NV>
NNLIB_ALWAYS_INLINE void store_block(float* to, const Vec (&acc)[P][NV], size_t row_pitch,
                                     size_t lanes) {
  NNLIB_UNROLL
  for (size_t p = 0; p < P; ++p) {
    NNLIB_UNROLL
    for (size_t v = 0; v < NV - 1; ++v) {
      store(to + p * row_pitch + v * kLanes, acc[p][v]);
    }
    float* last = to + p * row_pitch + (NV - 1) * kLanes;
    if (kLanes == 1 || lanes == kLanes) {
      store(last, acc[p][NV - 1]);
    } else {
      store_part(last, acc[p][NV - 1], lanes);
    }
  }
}

// Packs depth k of the columns, vector by vector, to tile[k][vector][lane], lanes without a column
// 0. Column c of k is b[c * column_pitch + k * k_pitch].
inline void pack(float* tile, const float* b, size_t column_pitch, size_t k_pitch,
                 const Columns& columns, size_t depth) {
  const size_t width = columns.vectors * kLanes;
  for (size_t v = 0; v < columns.vectors; ++v) {
    const float* from = b + v * kLanes * column_pitch;
    float* to = tile + v * kLanes;
    size_t k = 0;
#if NNLIB_LANES > 1 && !NNLIB_MVE_FLOAT
    if (columns.lanes == kLanes && k_pitch == 1) {
      for (; k + 4 <= depth; k += 4) {
        Vec quads[4];
        NNLIB_UNROLL
        for (size_t i = 0; i < 4; ++i) {
          quads[i] = load_quads(from + k, column_pitch, i);
        }
        transpose_quads(quads);
        NNLIB_UNROLL
        for (size_t i = 0; i < 4; ++i, to += width) {
          store(to, quads[i]);
        }
      }
    }
#endif
    for (; k < depth; ++k, to += width) {
      for (size_t lane = 0; lane < kLanes; ++lane) {
        to[lane] = lane < columns.lanes ? from[lane * column_pitch + k * k_pitch] : 0.0f;
      }
    }
  }
}
