// SPDX-License-Identifier: MIT
// Tiles of two rows by two interleaved columns or four rows by one column, four values at a time:
// each is a block of assembly, which compilers keep in registers with -Os as well.

template <uint32_t kPixels>
constexpr uint32_t kTileRows = kPixels == 2 ? 2 : 4;

// Loads the next four weights of row `w` as two pairs into the registers a and b.
#define NNLIB_LOAD_int8_t(w) \
  "ldr %[a], [%[" w "]], #4\n\tsxtb16 %[b], %[a], ror #8\n\tsxtb16 %[a], %[a]\n\t"
#define NNLIB_LOAD_uint8_t(w) \
  "ldr %[a], [%[" w "]], #4\n\tuxtb16 %[b], %[a], ror #8\n\tuxtb16 %[a], %[a]\n\t"
#define NNLIB_LOAD_int16_t(w) "ldr %[a], [%[" w "]], #4\n\tldr %[b], [%[" w "]], #4\n\t"

// Loads four values in natural order as two pairs, in the order that the weights come in.
#define NNLIB_TAKE_int8_t                                      \
  "ldr %[a], [%[column]], #4\n\tldr %[y], [%[column]], #4\n\t" \
  "pkhbt %[x], %[a], %[y], lsl #16\n\tpkhtb %[y], %[y], %[a], asr #16\n\t"
#define NNLIB_TAKE_uint8_t NNLIB_TAKE_int8_t
#define NNLIB_TAKE_int16_t "ldr %[x], [%[column]], #4\n\tldr %[y], [%[column]], #4\n\t"

#define NNLIB_MULTIPLY(sum, first, second)                                                \
  "smlad %[" sum "], %[a], %[" first "], %[" sum "]\n\tsmlad %[" sum "], %[b], %[" second \
  "], %[" sum "]\n\t"

#define NNLIB_TILES(Weight)                                                                          \
  /* sums: row 0 with both columns, row 1 with both */                                               \
  NNLIB_ALWAYS_INLINE void add_group(const Weight*& w0, const Weight*& w1, const int16_t*& column,   \
                                     int32_t(&s)[4]) {                                               \
    uint32_t a, b, x0, y0, x1, y1;                                                                   \
    __asm__(NNLIB_LOAD_##Weight("w0") "ldrd %[x0], %[y0], [%[column]], #8\n\t"                     \
            "ldrd %[x1], %[y1], [%[column]], #8\n\t" NNLIB_MULTIPLY("s0", "x0", "y0")              \
            NNLIB_MULTIPLY("s1", "x1", "y1") NNLIB_LOAD_##Weight("w1")                             \
            NNLIB_MULTIPLY("s2", "x0", "y0") NNLIB_MULTIPLY("s3", "x1", "y1")                      \
            : [a] "=&r"(a), [b] "=&r"(b), [x0] "=&r"(x0), [y0] "=&r"(y0), [x1] "=&r"(x1),          \
              [y1] "=&r"(y1), [w0] "+r"(w0), [w1] "+r"(w1), [column] "+r"(column),                 \
              [s0] "+r"(s[0]), [s1] "+r"(s[1]), [s2] "+r"(s[2]), [s3] "+r"(s[3])                   \
            :                                                                                      \
            : "memory"); \
  }                                                                                                  \
  /* sums: four rows with a column in natural order, up to `stop`; a call of its own, as it has      \
     many sums and needs all registers */                                                            \
  inline __attribute__((noinline)) void add_groups(const Weight*(&w)[4], const int16_t* column,      \
                                                   const int16_t* stop, int32_t(&s)[4]) {            \
    const Weight *w0 = w[0], *w1 = w[1], *w2 = w[2], *w3 = w[3];                                     \
    int32_t s0 = s[0], s1 = s[1], s2 = s[2], s3 = s[3];                                              \
    while (column != stop) {                                                                         \
      uint32_t a, b, x, y;                                                                           \
      __asm__(NNLIB_TAKE_##Weight NNLIB_LOAD_##Weight("w0") NNLIB_MULTIPLY("s0", "x", "y")           \
                  NNLIB_LOAD_##Weight("w1") NNLIB_MULTIPLY("s1", "x", "y")                           \
                      NNLIB_LOAD_##Weight("w2") NNLIB_MULTIPLY("s2", "x", "y")                       \
                          NNLIB_LOAD_##Weight("w3") NNLIB_MULTIPLY("s3", "x", "y")                   \
              : [a] "=&r"(a), [b] "=&r"(b), [x] "=&r"(x), [y] "=&r"(y), [w0] "+r"(w0),               \
                [w1] "+r"(w1), [w2] "+r"(w2), [w3] "+r"(w3), [column] "+r"(column), [s0] "+r"(s0),   \
                [s1] "+r"(s1), [s2] "+r"(s2), [s3] "+r"(s3)                                          \
              :                                                                                      \
              : "memory");                                                                           \
    }                                                                                                \
    w[0] = w0, w[1] = w1, w[2] = w2, w[3] = w3;                                                      \
    s[0] = s0, s[1] = s1, s[2] = s2, s[3] = s3;                                                      \
  }
NNLIB_TILES(int8_t)
NNLIB_TILES(uint8_t)
NNLIB_TILES(int16_t)
#undef NNLIB_TILES
#undef NNLIB_MULTIPLY
#undef NNLIB_TAKE_int16_t
#undef NNLIB_TAKE_uint8_t
#undef NNLIB_TAKE_int8_t
#undef NNLIB_LOAD_int16_t
#undef NNLIB_LOAD_uint8_t
#undef NNLIB_LOAD_int8_t

template <uint32_t kPixels, class Rows>
class TileProduct;

template <class Rows>
class TileProduct<2, Rows> {
  using Weight = typename Rows::Weight;

 public:
  TileProduct(const Rows& rows, const Columns& columns)
      : rows_(rows), data_(columns.data()), end_(columns.end()) {
    if constexpr (Rows::kWeightZeropoint) {
      // Of the column, less what it would be of zero points.
      const int32_t outside =
          wrapping_multiply(static_cast<int32_t>(rows.length), -rows.column_zeropoint);
      excess_[0] = excess_[1] = outside;
      const int16_t* at = columns.data();
      for (const int16_t* stop = at + (rows.length & ~3u) * 2; at != stop; at += 8) {
        add_column_group(at);
      }
      add_column_group(columns.end());
    }
  }

  NNLIB_ALWAYS_INLINE void operator()(uint32_t row, uint32_t count,
                                      typename Rows::Output* out) const {
    const uint32_t length = rows_.length;
    const Weight* w0 = rows_.weights + size_t{row} * length;
    const Weight* w1 = w0 + (count - 1) * length;
    int32_t sums[4];
    start(row, sums[0], sums[1]);
    start(row + count - 1, sums[2], sums[3]);
    const int16_t* column = data_;
    const int16_t* stop = column + (length & ~3u) * 2;
    do {
      add_group(w0, w1, column, sums);
    } while (column != stop);
    if (length % 4 != 0) {
      w0 -= 4 - length % 4;  // what is done again meets zeros
      w1 -= 4 - length % 4;
      column = end_;
      add_group(w0, w1, column, sums);
    }
    store(row, {sums[0], sums[1]}, out);
    if (count == 2) {
      store(row + 1, {sums[2], sums[3]}, out + 1);
    }
  }

 private:
  NNLIB_ALWAYS_INLINE void add_column_group(const int16_t* group) {
    for (uint32_t p = 0; p < 2; ++p) {
      for (uint32_t i = 0; i < 4; i += 2) {
        excess_[p] =
            dsp::multiply_pairs(dsp::load_word(group + p * 4 + i), dsp::twice(1), excess_[p]);
      }
    }
  }
  NNLIB_ALWAYS_INLINE void start(uint32_t row, int32_t& first, int32_t& second) const {
    first = second = rows_.start(row);
    if constexpr (Rows::kWeightZeropoint) {
      const int32_t zeropoint = rows_.zeropoint(row);
      first = wrapping_add(first, -wrapping_multiply(zeropoint, excess_[0]));
      second = wrapping_add(second, -wrapping_multiply(zeropoint, excess_[1]));
    }
  }
  NNLIB_ALWAYS_INLINE void store(uint32_t row, const int32_t (&sums)[2],
                                 typename Rows::Output* out) const {
    int32_t finished[2];
    finish_sums<typename Rows::Output>(rows_.channel(row), sums, finished);
    out[0] = static_cast<typename Rows::Output>(finished[0]);
    out[rows_.count] = static_cast<typename Rows::Output>(finished[1]);
  }

  const Rows rows_;  // copies, which no store can change
  const int16_t* const data_;
  const int16_t* const end_;
  int32_t excess_[2];
};

// The last four weights of a row, behind whose groups `w` points: with those that are done again
// meet zeros. A row of less than four is copied into `few`.
template <class Weight>
const Weight* row_end(const Weight* w, uint32_t length, Weight (&few)[4]) {
  const uint32_t rest = length % 4;
  if (length > 4) {
    return w - (4 - rest);
  }
  for (uint32_t k = 0; k < 4; ++k) {
    few[k] = k + rest < 4 ? Weight{0} : w[k + rest - 4];
  }
  return few;
}

template <class Rows>
class TileProduct<1, Rows> {
  using Weight = typename Rows::Weight;

 public:
  TileProduct(const Rows& rows, const int16_t* column) : rows_(rows), column_(column) {
    const uint32_t rest = rows.length % 4;
    for (uint32_t k = 0; k < rest; ++k) {
      end_[4 - rest + k] = column[rows.length - rest + k];
    }
    if constexpr (Rows::kWeightZeropoint) {
      excess_ = column_excess(rows, column);
    }
  }
  TileProduct(const Rows& rows, const Columns& column) : TileProduct(rows, column.data()) {}

  void operator()(uint32_t row, uint32_t count, typename Rows::Output* out) const {
    const Weight* weights[4];
    int32_t sums[4];
    for (uint32_t r = 0; r < 4; ++r) {  // past the last row: the last row again
      const uint32_t at = row + std::min(r, count - 1);
      weights[r] = rows_.weights + size_t{at} * rows_.length;
      sums[r] = rows_.start(at);
      if constexpr (Rows::kWeightZeropoint) {
        sums[r] = wrapping_add(sums[r], -wrapping_multiply(rows_.zeropoint(at), excess_));
      }
    }
    add_groups(weights, column_, column_ + (rows_.length & ~3u), sums);
    if (rows_.length % 4 != 0) {
      Weight few[4][4];
      for (uint32_t r = 0; r < 4; ++r) {
        weights[r] = row_end(weights[r], rows_.length, few[r]);
      }
      add_groups(weights, end_, end_ + 4, sums);
    }
    for (uint32_t r = 0; r < count; ++r) {
      out[r] = finish_sum<typename Rows::Output>(rows_.channel(row + r), sums[r]);
    }
  }

 private:
  const Rows& rows_;
  const int16_t* column_;
  int32_t excess_;
  int16_t end_[4] = {};
};

template <class T>
constexpr bool kWholeMaps = false;

template <class Rows, class T>
bool convolve_map(const Rows&, const ConvGeometry&, const ColumnInputs<T>&, uint32_t, int16_t*,
                  typename Rows::Output*) {
  return false;
}
