// SPDX-License-Identifier: MIT
// Blocks of four channels in lanes of 32 bits, of four neighbouring pixels at a time. Kernels of
// more taps than the stack has room for are left to the loop over channels.

constexpr uint32_t kMostTaps = 64;

// What the outputs of four channels need.
struct BlockOfFour {
  template <class Activation>
  BlockOfFour(const Depthwise<Activation>& d, uint32_t channel)
      : bias(d.bias != nullptr ? vldrwq_s32(d.bias + channel) : vdupq_n_s32(0)),
        zeropoint(d.quantization.in_zeropoint),
        to_output(d.quantization, channel) {
    const int16_t* adapted = d.weights + d.order.index(channel, 0);
    uint32_t tap = 0;
    for (; tap + 2 <= d.order.taps; tap += 2, adapted += 8) {
      int32x4_t pairs;
      std::memcpy(&pairs, adapted, sizeof(pairs));
      vstrhq_s32(weights[tap], pairs);
      vstrhq_s32(weights[tap + 1], vshrq_n_s32(pairs, 16));
    }
    if (tap < d.order.taps) {
      std::memcpy(weights[tap], adapted, sizeof(weights[tap]));
    }
  }

  int32x4_t bias;
  int32_t zeropoint;
  LaneChannels to_output;
  int16_t weights[kMostTaps][4];
};

template <class Activation>
NNLIB_ALWAYS_INLINE int32x4_t load_lanes(const Activation* from) {
  if constexpr (std::is_signed_v<Activation>) {
    return vldrbq_s32(from);
  } else {
    return vreinterpretq_s32_u32(vldrbq_u32(from));
  }
}

// Where the taps of a row of outputs are, in elements.
struct TapSteps {
  size_t step;   // from tap to tap
  size_t next;   // from output to output
  size_t pitch;  // from row to row
  uint32_t width, rows;
};

// The sum of the weights of `taps` columns of the window's rows, from `weights` on.
inline int32x4_t sum_weights(const TapSteps& s, const int16_t (*weights)[4], uint32_t taps) {
  int32x4_t sum = vdupq_n_s32(0);
  for (uint32_t row = s.rows; row > 0; --row, weights += s.width) {
    for (uint32_t tap = 0; tap < taps; ++tap) {
      sum = vaddq_s32(sum, vldrhq_s32(weights[tap]));
    }
  }
  return sum;
}

// What the sums of those taps' products with inputs as they are start from.
NNLIB_ALWAYS_INLINE int32x4_t start_of(const TapSteps& s, const BlockOfFour& block,
                                       const int16_t (*weights)[4], uint32_t taps) {
  return vsubq_s32(block.bias, vmulq_n_s32(sum_weights(s, weights, taps), block.zeropoint));
}

// sums[p] += the products of a row of taps with the inputs of output p.
template <size_t kPixels, class Activation>
NNLIB_ALWAYS_INLINE void add_row(const TapSteps& s, const int16_t (*weights)[4], uint32_t taps,
                                 const Activation* in, int32x4_t (&sums)[kPixels]) {
  for (; taps > 0; --taps, ++weights, in += s.step) {
    const int32x4_t w = vldrhq_s32(*weights);
    const Activation* pixel = in;
    NNLIB_UNROLL
    for (size_t p = 0; p < kPixels; ++p, pixel += s.next) {
      sums[p] = vaddq_s32(sums[p], vmulq_s32(load_lanes(pixel), w));
    }
  }
}

// The same for three taps and outputs side by side: each input is loaded once.
template <size_t kPixels, class Activation>
NNLIB_ALWAYS_INLINE void add_row_of_three(size_t step, const int16_t (*weights)[4],
                                          const Activation* in, int32x4_t (&sums)[kPixels]) {
  const int32x4_t first = vldrhq_s32(weights[0]);
  const int32x4_t second = vldrhq_s32(weights[1]);
  NNLIB_UNROLL
  for (size_t x = 0; x < kPixels + 2; ++x, in += step) {
    // Here the compiler would load ahead more than registers hold.
    __asm__ volatile("" : : : "memory");
    const int32x4_t values = load_lanes(in);
    if (x < kPixels) {
      sums[x] = vaddq_s32(sums[x], vmulq_s32(values, first));
    }
    if (x >= 1 && x - 1 < kPixels) {
      sums[x - 1] = vaddq_s32(sums[x - 1], vmulq_s32(values, second));
    }
    if (x >= 2) {
      sums[x - 2] = vaddq_s32(sums[x - 2], vmulq_s32(values, vldrhq_s32(weights[2])));
    }
  }
}

// kPixels neighbouring outputs of the same taps: `taps` of each row, the first of them at `in` and
// with the weights at `weights`. start: start_of those taps.
template <uint32_t kPixels, class Activation>
NNLIB_ALWAYS_INLINE void depthwise_pixels(const TapSteps& s, const BlockOfFour& block,
                                          int32x4_t start, const int16_t (*weights)[4],
                                          uint32_t taps, const Activation* in, Activation* out) {
  int32x4_t sums[kPixels];
  NNLIB_UNROLL
  for (int32x4_t& sum : sums) {
    sum = start;
  }
  const bool three = NNLIB_FOR_SPEED && kPixels > 1 && taps == 3 && s.next == s.step;
  for (uint32_t row = s.rows; row > 0; --row, in += s.pitch, weights += s.width) {
    if (three) {
      add_row_of_three(s.step, weights, in, sums);
    } else {
      add_row(s, weights, taps, in, sums);
    }
  }
  block.to_output.template finish<Activation>(sums);
  NNLIB_UNROLL
  for (uint32_t p = 0; p < kPixels; ++p, out += s.step) {
    vstrbq_s32(reinterpret_cast<int8_t*>(out), sums[p]);
  }
}

// One output after the other, from x to end.
template <class Activation>
__attribute__((noinline)) void depthwise_ones(const ConvGeometry& g, const TapSteps& s,
                                              const BlockOfFour& block, const int16_t (*weights)[4],
                                              const Activation* row, uint32_t x, uint32_t end,
                                              Activation* out) {
  for (; x < end; ++x) {
    const Window columns = g.columns(x);
    const auto* of_columns = weights + columns.tap;
    depthwise_pixels<1>(s, block, start_of(s, block, of_columns, columns.count), of_columns,
                        columns.count, row + columns.begin * s.step, out + x * s.step);
  }
}

// Four channels of a row of outputs; of those from begin to end all columns of the window are
// inside the map.
template <class Activation>
void depthwise_row(const Depthwise<Activation>& d, const Window& rows, uint32_t begin, uint32_t end,
                   uint32_t channel, Activation* out) {
  const BlockOfFour block(d, channel);
  const size_t step = d.order.channels;
  const TapSteps steps = {step, step * d.g.stride_x, step * d.g.in_width, d.g.kernel_width,
                          rows.count};
  const Activation* row = d.in + rows.begin * steps.pitch + channel;
  const int16_t(*weights)[4] = block.weights + rows.tap * steps.width;
  out += channel;
  if (end - begin < 4) {
    begin = end = 0;
  }
  if (begin < end) {
    const int32x4_t start = start_of(steps, block, weights, steps.width);
    const Activation* whole = row + d.g.columns(begin).begin * step;
    for (uint32_t x = begin; x < end; x += 4) {
      x = std::min(x, end - 4);  // the last four go back over what is done
      depthwise_pixels<4>(steps, block, start, weights, steps.width,
                          whole + (x - begin) * steps.next, out + x * step);
    }
  }
  if (begin > 0) {
    depthwise_ones(d.g, steps, block, weights, row, 0, begin, out);
  }
  if (end < d.g.out_width) {
    depthwise_ones(d.g, steps, block, weights, row, end, d.g.out_width, out);
  }
}

template <class Activation>
uint32_t depthwise_blocks(const Depthwise<Activation>& d, uint32_t y, Activation* out) {
  if (d.order.taps > kMostTaps) {
    return 0;
  }
  Window rows = d.g.rows(y);
  rows = rows.empty() ? Window{0, 0, 0} : rows;
  // The outputs whose windows lie inside the map from left to right.
  const auto whole = [&d](uint32_t x) { return d.g.columns(x).count == d.g.kernel_width; };
  uint32_t begin = 0;
  while (begin < d.g.out_width && !whole(begin)) {
    ++begin;
  }
  uint32_t end = d.g.out_width;
  while (end > begin && !whole(end - 1)) {
    --end;
  }
  const uint32_t channels = d.order.channels & ~3u;
  for (uint32_t channel = 0; channel < channels; channel += 4) {
    depthwise_row(d, rows, begin, end, channel, out);
  }
  return channels;
}
