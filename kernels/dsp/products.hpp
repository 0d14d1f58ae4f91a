// SPDX-License-Identifier: MIT
// Tiles of two rows by two interleaved columns or four rows by one column, four values at a time:
// each is a block of assembly, which compilers keep in registers with -Os as well.

template <uint32_t kPixels>
constexpr uint32_t kTileRows = kPixels == 2 ? kAllRows : 4;

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

// A group of two rows by two columns.
#define NNLIB_GROUP(Weight) \
  NNLIB_LOAD_##Weight("w0") "ldrd %[x0], %[y0], [%[column]], #8\n\t"                              \
                            "ldrd %[x1], %[y1], [%[column]], #8\n\t" NNLIB_MULTIPLY(              \
                                "s0", "x0", "y0") NNLIB_MULTIPLY("s1", "x1", "y1")                \
                                NNLIB_LOAD_##Weight("w1") NNLIB_MULTIPLY("s2", "x0", "y0")        \
                                    NNLIB_MULTIPLY("s3", "x1", "y1")
#define NNLIB_GROUP_OPERANDS                                                                  \
  [a] "=&r"(a), [b] "=&r"(b), [x0] "=&r"(x0), [y0] "=&r"(y0), [x1] "=&r"(x1), [y1] "=&r"(y1), \
      [w0] "+r"(w0), [w1] "+r"(w1), [column] "+r"(column), [s0] "+r"(s[0]), [s1] "+r"(s[1]),  \
      [s2] "+r"(s[2]), [s3] "+r"(s[3])

// So many in a round of their loop.
#if NNLIB_FOR_SPEED
#define NNLIB_GROUPS(Weight) NNLIB_GROUP(Weight) NNLIB_GROUP(Weight)
#else
#define NNLIB_GROUPS(Weight) NNLIB_GROUP(Weight)
#endif

#define NNLIB_TILES(Weight)                                                                        \
  /* sums: row 0 with both columns, row 1 with both */                                             \
  NNLIB_ALWAYS_INLINE void add_group(const Weight*& w0, const Weight*& w1, const int16_t*& column, \
                                     int32_t(&s)[4]) {                                             \
    uint32_t a, b, x0, y0, x1, y1;                                                                 \
    __asm__(NNLIB_GROUP(Weight) : NNLIB_GROUP_OPERANDS : : "memory");                              \
  }                                                                                                \
  /* The same of whole rounds of groups, up to `stop`, for which no register is left. */           \
  NNLIB_ALWAYS_INLINE void add_groups(const Weight*& w0, const Weight*& w1, const int16_t* column, \
                                      const int16_t* const& stop, int32_t(&s)[4]) {                \
    uint32_t a, b, x0, y0, x1, y1;                                                                 \
    __asm__("1:\n\t" NNLIB_GROUPS(Weight) "ldr %[a], %[stop]\n\tcmp %[column], %[a]\n\tbne 1b"     \
            : NNLIB_GROUP_OPERANDS                                                                 \
            : [stop] "m"(stop)                                                                     \
            : "cc", "memory");                                                                     \
  }                                                                                                \
  /* sums: four rows with a column in natural order, up to `stop`; a call of its own, as it has    \
     many sums and needs all registers */                                                          \
  inline __attribute__((noinline)) void add_groups(const Weight*(&w)[4], const int16_t* column,    \
                                                   const int16_t* stop, int32_t(&s)[4]) {          \
    const Weight *w0 = w[0], *w1 = w[1], *w2 = w[2], *w3 = w[3];                                   \
    int32_t s0 = s[0], s1 = s[1], s2 = s[2], s3 = s[3];                                            \
    while (column != stop) {                                                                       \
      uint32_t a, b, x, y;                                                                         \
      __asm__(NNLIB_TAKE_##Weight NNLIB_LOAD_##Weight("w0") NNLIB_MULTIPLY("s0", "x", "y")         \
                  NNLIB_LOAD_##Weight("w1") NNLIB_MULTIPLY("s1", "x", "y")                         \
                      NNLIB_LOAD_##Weight("w2") NNLIB_MULTIPLY("s2", "x", "y")                     \
                          NNLIB_LOAD_##Weight("w3") NNLIB_MULTIPLY("s3", "x", "y")                 \
              : [a] "=&r"(a), [b] "=&r"(b), [x] "=&r"(x), [y] "=&r"(y), [w0] "+r"(w0),             \
                [w1] "+r"(w1), [w2] "+r"(w2), [w3] "+r"(w3), [column] "+r"(column), [s0] "+r"(s0), \
                [s1] "+r"(s1), [s2] "+r"(s2), [s3] "+r"(s3)                                        \
              :                                                                                    \
              : "memory");                                                                         \
    }                                                                                              \
    w[0] = w0, w[1] = w1, w[2] = w2, w[3] = w3;                                                    \
    s[0] = s0, s[1] = s1, s[2] = s2, s[3] = s3;                                                    \
  }
NNLIB_TILES(int8_t)
NNLIB_TILES(uint8_t)
NNLIB_TILES(int16_t)
#undef NNLIB_TILES
#undef NNLIB_GROUP_OPERANDS
#undef NNLIB_GROUPS
#undef NNLIB_GROUP
#undef NNLIB_MULTIPLY
#undef NNLIB_TAKE_int16_t
#undef NNLIB_TAKE_uint8_t
#undef NNLIB_TAKE_int8_t
#undef NNLIB_LOAD_int16_t
#undef NNLIB_LOAD_uint8_t
#undef NNLIB_LOAD_int8_t

template <uint32_t kPixels, class Rows>
class TileProduct;

// Rows of weights by two columns.
class ColumnPair {
 public:
  ColumnPair(const Columns& columns, uint32_t length)
      : data_(columns.data()),
        head_(columns.head()),
        stop_(data_ + (length & ~3u) * 2),
        head_repeats_(-length % 4),
        odd_(length / 4 % 2 != 0),
        plain_(length % 8 == 0) {}

  // Adds the products of two rows. Returns the second one's end.
  template <class Weight>
  NNLIB_ALWAYS_INLINE const Weight* add_rows(const Weight* w0, const Weight* w1,
                                             int32_t (&sums)[4]) const {
    const int16_t* column = data_;
    if (!NNLIB_FOR_SPEED) {
      if (head_repeats_ != 0) {
        column = head_;
        add_group(w0, w1, column, sums);
        w0 -= head_repeats_;
        w1 -= head_repeats_;
        column = data_;
      }
      add_groups(w0, w1, column, stop_, sums);
      return w1;
    }
    if (!plain_) {
      if (head_repeats_ != 0) {
        column = head_;
        add_group(w0, w1, column, sums);
        w0 -= head_repeats_;  // what is done again met zeros
        w1 -= head_repeats_;
        column = data_;
      }
      if (odd_) {
        add_group(w0, w1, column, sums);
        if (column == stop_) {
          return w1;
        }
      }
    }
    add_groups(w0, w1, column, stop_, sums);
    return w1;
  }

  // Adds the values of both columns.
  void add_values(int32_t (&sums)[2]) const {
    for (const int16_t* at = data_; at != stop_; at += 8) {
      add_group_values(at, sums);
    }
    add_group_values(head_, sums);
  }

 private:
  static NNLIB_ALWAYS_INLINE void add_group_values(const int16_t* group, int32_t (&sums)[2]) {
    for (uint32_t i = 0; i < 4; ++i) {
      sums[i / 2] = dsp::multiply_pairs(dsp::load_word(group + 2 * i), dsp::twice(1), sums[i / 2]);
    }
  }

  const int16_t* const data_;
  const int16_t* const head_;
  const int16_t* const stop_;
  const uint32_t head_repeats_;  // weights of the head's group that belong to the next one
  const bool odd_;
  const bool plain_;
};

// One row, given with itself so that it is a tile.
template <class Weight>
__attribute__((noinline)) void add_single_row(const ColumnPair& columns, const Weight* row,
                                              int32_t (&sums)[2]) {
  int32_t both[4] = {sums[0], sums[1]};
  columns.add_rows(row, row, both);
  sums[0] = both[0];
  sums[1] = both[1];
}

template <class Rows>
class TileProduct<2, Rows> {
  using Weight = typename Rows::Weight;
  using Output = typename Rows::Output;

 public:
  TileProduct(const Rows& rows, const Columns& columns)
      : rows_(rows), given_(rows), columns_(columns), pair_(columns, rows.length) {
    columns.interleave<typename Rows::Input>();
    if constexpr (Rows::kWeightZeropoint) {
      // Of the column, less what it would be of zero points.
      excess_[0] = excess_[1] =
          wrapping_multiply(static_cast<int32_t>(rows.length), -rows.column_zeropoint);
      pair_.add_values(excess_);
    }
  }

  NNLIB_ALWAYS_INLINE void operator()(Output* out) const {
    if constexpr (NNLIB_FOR_SPEED) {
      multiply_pairs(out);
    } else {
      multiply_any(out);
    }
  }

 private:
  // One loop for the last row, too, which is a pair with itself, and for all shifts.
  NNLIB_ALWAYS_INLINE void multiply_any(Output* out) const {
    const Weight* weights = rows_.weights;
    for (uint32_t row = 0; row < rows_.count; row += 2) {
      const bool both = row + 1 < rows_.count;
      int32_t sums[4];
      start(row, sums[0], sums[1]);
      start(row + both, sums[2], sums[3]);
      weights = pair_.add_rows(weights, both ? weights + rows_.length : weights, sums);
      if (both && finishes_pairs(rows_)) {
        finish_pair(rows_, row, sums, out);
      } else {
        finish_singly(given_, row, both, {{sums[0], sums[1], sums[2], sums[3]}}, out);
        out += 2;
      }
    }
  }
  struct Sums {
    int32_t of[4];
  };
  static __attribute__((noinline)) void finish_singly(const Rows& rows, uint32_t row, bool both,
                                                      Sums sums, Output* out) {
    for (uint32_t r = 0; r <= both; ++r) {
      for (uint32_t p = 0; p < 2; ++p) {
        out[r + p * rows.count] = finish_sum<Output>(rows.channel(row + r), sums.of[2 * r + p]);
      }
    }
  }

  NNLIB_ALWAYS_INLINE void multiply_pairs(Output* out) const {
    const uint32_t count = rows_.count;
    uint32_t row = 0;
    if (finishes_pairs(rows_) && count > 1) {
      const Weight* weights = rows_.weights;
      do {
        int32_t sums[4];
        start(row, sums[0], sums[1]);
        start(row + 1, sums[2], sums[3]);
        weights = pair_.add_rows(weights, weights + rows_.length, sums);
        __asm__("" : "+r"(row));  // what is made of it is not kept for long
        finish_pair(rows_, row, sums, out);
        row += 2;
      } while (row < count - 1);
    }
    if (row < count) {
      multiply_singly(given_, columns_, row, out);
    }
  }
  static __attribute__((noinline)) void multiply_singly(const Rows& rows, const Columns& columns,
                                                        uint32_t row, Output* out) {
    const TileProduct product(rows, columns);
    const Weight* weights = rows.weights + size_t{row} * rows.length;
    for (; row < rows.count; ++row, ++out, weights += rows.length) {
      int32_t sums[2];
      product.start(row, sums[0], sums[1]);
      add_single_row(product.pair_, weights, sums);
      for (uint32_t p = 0; p < 2; ++p) {
        out[p * rows.count] = finish_sum<Output>(rows.channel(row), sums[p]);
      }
    }
  }

  NNLIB_ALWAYS_INLINE void start(uint32_t row, int32_t& first, int32_t& second) const {
    first = second = rows_.column_start(row);
    if constexpr (Rows::kWeightZeropoint) {
      const int32_t zeropoint = rows_.zeropoint(row);
      first = wrapping_add(first, -wrapping_multiply(zeropoint, excess_[0]));
      second = wrapping_add(second, -wrapping_multiply(zeropoint, excess_[1]));
    }
  }

  const Rows rows_;  // a copy, which no store can change
  const Rows& given_;
  const Columns& columns_;
  const ColumnPair pair_;
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
