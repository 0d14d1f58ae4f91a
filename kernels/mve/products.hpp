// SPDX-License-Identifier: MIT
// Tiles of one row by four columns, or of four rows by one column of 16-bit values, in loops that
// the processor ends by itself, tails included.

// sums[i] += `shared` times `each[i]`, over `count` elements. GCC 12 makes no such loops. in: the
// constraints of the pointers; loads that widen take low registers only.
#define NNLIB_DOT_FOUR(size, load_shared, in_shared, load_each, in_each, multiply)         \
  __asm__ volatile(                                                                        \
      "wlstp." size " lr, %[n], 2f\n1:\n\t" load_shared " q0, [%[s]], %[ss]\n\t" load_each \
      " q1, [%[p0]], %[es]\n\t" multiply " %[a0], q0, q1\n\t" load_each                    \
      " q2, [%[p1]], %[es]\n\t" multiply " %[a1], q0, q2\n\t" load_each                    \
      " q1, [%[p2]], %[es]\n\t" multiply " %[a2], q0, q1\n\t" load_each                    \
      " q2, [%[p3]], %[es]\n\t" multiply                                                   \
      " %[a3], q0, q2\n\t"                                                                 \
      "letp lr, 1b\n2:"                                                                    \
      : [s] in_shared(shared), [p0] in_each(p0), [p1] in_each(p1), [p2] in_each(p2),       \
        [p3] in_each(p3), [a0] "+Te"(a0), [a1] "+Te"(a1), [a2] "+Te"(a2), [a3] "+Te"(a3)   \
      : [n] "r"(count), [ss] "i"(kSharedStep), [es] "i"(kEachStep)                         \
      : "q0", "q1", "q2", "lr", "memory")

template <class Shared, class Each>
NNLIB_ALWAYS_INLINE void dot_four(const Shared* shared, const Each* const (&each)[4],
                                  uint32_t count, int32_t (&sums)[4]) {
  // Elements of the same kind are multiplied as bytes, others as 16-bit values.
  constexpr bool kBytes = std::is_same_v<Shared, Each> && sizeof(Each) == 1;
  constexpr int kSharedStep = kBytes ? 16 : 8 * static_cast<int>(sizeof(Shared));
  constexpr int kEachStep = kBytes ? 16 : 8 * static_cast<int>(sizeof(Each));
  const Each *p0 = each[0], *p1 = each[1], *p2 = each[2], *p3 = each[3];
  int32_t a0 = sums[0], a1 = sums[1], a2 = sums[2], a3 = sums[3];
  if constexpr (kBytes && std::is_signed_v<Each>) {
    NNLIB_DOT_FOUR("8", "vldrb.8", "+r", "vldrb.8", "+r", "vmladava.s8");
  } else if constexpr (kBytes) {
    NNLIB_DOT_FOUR("8", "vldrb.8", "+r", "vldrb.8", "+r", "vmladava.u8");
  } else if constexpr (sizeof(Shared) == 1) {
    static_assert(std::is_signed_v<Shared> && std::is_same_v<Each, uint8_t>);
    NNLIB_DOT_FOUR("16", "vldrb.s16", "+l", "vldrb.u16", "+l", "vmladava.s16");
  } else if constexpr (sizeof(Each) == 2) {
    NNLIB_DOT_FOUR("16", "vldrh.16", "+r", "vldrh.16", "+r", "vmladava.s16");
  } else if constexpr (std::is_signed_v<Each>) {
    NNLIB_DOT_FOUR("16", "vldrh.16", "+r", "vldrb.s16", "+l", "vmladava.s16");
  } else {
    NNLIB_DOT_FOUR("16", "vldrh.16", "+r", "vldrb.u16", "+l", "vmladava.s16");
  }
  sums[0] = a0, sums[1] = a1, sums[2] = a2, sums[3] = a3;
}
#undef NNLIB_DOT_FOUR

// Four rows, or the first of them: what their sums start from, and their outputs.
template <class Types>
struct FourRows {
  using Rows = IntegerRows<Types>;
  FourRows(const Rows& of, uint32_t row, mve_pred16_t lanes)
      : rows(of), channels(of.quantization, vidupq_n_u32(row, 1), lanes) {}
  int32x4_t start(int32_t excess) const {
    const int32x4_t biases = channels.load_biases(rows.bias);
    if constexpr (Rows::kWeightZeropoint) {
      const KoQuantization& q = rows.quantization;
      const uint32x4_t entries = vandq_u32(channels.channels, vdupq_n_u32(q.channel_mask));
      return vmlaq_n_s32(biases,
                         vreinterpretq_s32_u32(vldrbq_gather_offset_z_u32(q.weight_zeropoints,
                                                                          entries, channels.lanes)),
                         -excess);
    }
    return biases;
  }
  void finish(int32x4_t sums, typename Rows::Output* out) const {
    int32x4_t values[1] = {sums};
    channels.rescale(values);
    vstrbq_p_s32(reinterpret_cast<int8_t*>(out), saturated_lanes<typename Rows::Output>(values[0]),
                 channels.lanes);
  }

  const Rows& rows;
  LaneChannels channels;
};

template <class Weight, class Output>
struct FourFixedRows {
  using Rows = FixedRows<Weight, Output>;
  FourFixedRows(const Rows& of, uint32_t at, mve_pred16_t some) : rows(of), row(at), lanes(some) {}
  int32x4_t start(int32_t /*excess*/) const {
    const auto half = static_cast<int32_t>(fixed_start<Weight>(nullptr, 0, rows.shifts));
    if (rows.bias == nullptr) {
      return vdupq_n_s32(half);
    }
    int32x4_t biases;
    if constexpr (sizeof(Weight) == 2) {
      biases = vldrhq_z_s32(rows.bias + row, lanes);
    } else {
      biases = vldrbq_z_s32(rows.bias + row, lanes);
    }
    biases = vshlq_r_s32(biases, static_cast<int32_t>(rows.shifts.bias & 31));
    return vaddq_n_s32(biases, half);
  }
  void finish(int32x4_t sums, Output* out) const {
    const int32x4_t values = finish_lanes<Output>(ShiftedChannel{0, rows.shifts.out}, sums);
    if constexpr (sizeof(Output) == 2) {
      vstrhq_p_s32(out, values, lanes);
    } else {
      vstrbq_p_s32(out, values, lanes);
    }
  }

  const Rows& rows;
  uint32_t row;
  mve_pred16_t lanes;
};

template <class Types>
FourRows<Types> four_rows(const IntegerRows<Types>& rows, uint32_t row, mve_pred16_t lanes) {
  return {rows, row, lanes};
}
template <class Weight, class Output>
FourFixedRows<Weight, Output> four_rows(const FixedRows<Weight, Output>& rows, uint32_t row,
                                        mve_pred16_t lanes) {
  return {rows, row, lanes};
}

template <uint32_t kPixels>
constexpr uint32_t kTileRows = 4;

template <uint32_t kPixels, class Rows>
class TileProduct;

template <class Rows>
class TileProduct<1, Rows> {
 public:
  TileProduct(const Rows& rows, const int16_t* column) : rows_(rows), column_(column) {
    if constexpr (Rows::kWeightZeropoint) {
      excess_ = column_excess(rows, column);
    }
  }
  TileProduct(const Rows& rows, const Columns& columns) : TileProduct(rows, columns.data()) {}

  void operator()(uint32_t row, uint32_t count, typename Rows::Output* out) const {
    const typename Rows::Weight* weights[4] = {rows_.weights + size_t{row} * rows_.length};
    for (uint32_t r = 1; r < 4; ++r) {  // past the last row: the last row again
      weights[r] = weights[r - 1] + (r < count ? rows_.length : 0);
    }
    int32_t sums[4] = {};
    dot_four(column_, weights, rows_.length, sums);
    const auto four = four_rows(rows_, row, vctp32q(count));
    four.finish(vaddq_s32(four.start(excess_), lanes_of(sums)), out);
  }

 private:
  const Rows& rows_;
  const int16_t* column_;
  int32_t excess_ = 0;
};

template <class Rows>
class TileProduct<2, Rows> {
 public:
  TileProduct(const Rows& rows, const Columns& columns)
      : first_(rows, columns.data()),
        second_(rows, columns.data() + rows.length),
        pitch_(rows.count) {}
  void operator()(uint32_t row, uint32_t count, typename Rows::Output* out) const {
    first_(row, count, out);
    second_(row, count, out + pitch_);
  }

 private:
  TileProduct<1, Rows> first_, second_;
  uint32_t pitch_;
};

// Stores an output of each of four pixels, `offsets` elements from `out`.
template <class Output>
NNLIB_ALWAYS_INLINE void store_pixels(Output* out, uint32x4_t offsets, int32x4_t values) {
  if constexpr (sizeof(Output) == 2) {
    vstrhq_scatter_shifted_offset_s32(out, offsets, values);
  } else {
    vstrbq_scatter_offset_s32(reinterpret_cast<int8_t*>(out), offsets, values);
  }
}

// All rows by up to four columns.
template <class Rows>
class RowsByFour {
  using Input = typename Rows::Input;
  using Output = typename Rows::Output;

 public:
  RowsByFour(const Rows& rows, Output* out) : rows_(rows), out_(out) {}

  void operator()(const ColumnsOf<Input>& columns, size_t pixel) const {
    multiply(columns.data(), columns.pixels(), pixel);
  }
  // The columns of `pixels` pixels, one behind the other.
  void multiply(const Input* first, uint32_t pixels, size_t pixel) const {
    const Rows rows = rows_;  // a copy, which no store can change
    const Input* column[4];
    int32_t excess[4];
    for (uint32_t p = 0; p < 4; ++p) {  // past the last column: the last column again
      column[p] = first + size_t{std::min(p, pixels - 1)} * rows.length;
      if constexpr (Rows::kWeightZeropoint) {
        excess[p] = column_excess(rows, column[p]);
      }
    }
    const uint32x4_t offsets =
        vmulq_n_u32(vminq_u32(vidupq_n_u32(0, 1), vdupq_n_u32(pixels - 1)), rows.count);
    const auto* weights = rows.weights;
    Output* out = out_ + pixel * rows.count;
    for (uint32_t row = 0; row < rows.count; ++row, weights += rows.length) {
      int32_t sums[4] = {};
      dot_four(weights, column, rows.length, sums);
      int32x4_t values = lanes_of(sums);
      const auto channel = rows.channel(row);
      values = vaddq_n_s32(values, channel.start);
      if constexpr (Rows::kWeightZeropoint) {
        values = vmlaq_n_s32(values, lanes_of(excess), -rows.zeropoint(row));
      }
      values = finish_lanes<Output>(channel, values);
      store_pixels(out++, offsets, values);
    }
  }

 private:
  const Rows& rows_;
  Output* out_;
};

// A row by fours of columns one behind the other; finish makes outputs of sums.
template <class Rows, class Finish>
NNLIB_ALWAYS_INLINE void multiply_row(const typename Rows::Weight* weights, uint32_t length,
                                      const typename Rows::Input* in, uint32_t fours,
                                      uint32_t count, typename Rows::Output* out,
                                      const Finish& finish) {
  const uint32x4_t offsets = vmulq_n_u32(vidupq_n_u32(0, 1), count);
  for (; fours > 0; --fours, in += 4 * size_t{length}, out += 4 * size_t{count}) {
    const auto* second = in + length;
    const auto* third = second + length;
    const typename Rows::Input* const columns[4] = {in, second, third, third + length};
    int32_t sums[4] = {};
    dot_four(weights, columns, length, sums);
    store_pixels(out, offsets, finish(lanes_of(sums)));
  }
}

// All rows by columns one behind the other, a row after the other: what a row takes stays in
// registers. Returns how many columns are done.
template <class Rows>
NNLIB_NOINLINE uint32_t multiply_fours(const Rows& of, const typename Rows::Input* in,
                                       uint32_t pixels, typename Rows::Output* out) {
  using Output = typename Rows::Output;
  const Rows rows = of;
  const auto* weights = rows.weights;
  for (uint32_t row = 0; row < rows.count; ++row, weights += rows.length, ++out) {
    const auto channel = rows.channel(row);
    const auto multiply = [&](const auto& finish) __attribute__((always_inline)) {
      multiply_row<Rows>(weights, rows.length, in, pixels / 4, rows.count, out, finish);
    };
    if constexpr (std::is_same_v<typename Rows::Channel, RequantizedChannel>) {
      if (channel.shift > 0) {
        const int32x4_t multipliers = vdupq_n_s32(channel.multiplier);
        const int32_t minus_shift = -dsp::saturated_bits<6>(channel.shift);
        multiply([ =, start = channel.start,
                   zeropoint = channel.zeropoint ](int32x4_t sums) __attribute__((always_inline)) {
          sums = vmulhq_s32(vshlq_n_s32(vaddq_n_s32(sums, start), 1), multipliers);
          return saturated_lanes<Output>(vaddq_n_s32(vrshlq_n_s32(sums, minus_shift), zeropoint));
        });
        continue;
      }
    }
    multiply([=](int32x4_t sums) __attribute__((always_inline)) {
      return finish_lanes<Output>(channel, vaddq_n_s32(sums, channel.start));
    });
  }
  return pixels & ~3u;
}

template <class T>
constexpr bool kWholeMaps = sizeof(T) == 1;

template <class Rows, class T>
bool convolve_map(const Rows& rows, const ConvGeometry& g, const ColumnInputs<T>& inputs,
                  uint32_t columns, int16_t* scratch, typename Rows::Output* out) {
  const RowsByFour<Rows> product(rows, out);
  if (g.is_product()) {
    uint32_t pixel = 0;
    if constexpr (NNLIB_FOR_SPEED && !Rows::kWeightZeropoint) {
      pixel = multiply_fours(rows, inputs.data, g.pixels(), out);
    }
    while (pixel < g.pixels()) {
      const uint32_t pixels = std::min(g.pixels() - pixel, uint32_t{4});
      product.multiply(inputs.data + size_t{pixel} * rows.length, pixels, pixel);
      pixel += pixels;
    }
    return true;
  }
  if constexpr (kWholeMaps<T>) {
    ColumnsOf<T> gathered(scratch, rows.length, columns);
    for_columns(g, inputs, gathered, product);
  }
  return kWholeMaps<T>;
}
