// SPDX-License-Identifier: MIT
// Depthwise convolution of four channels at a time over whole windows: one that lies partly outside
// the map is copied into the scratch, the outside as the zero point. Included by kernel bodies
// behind an instruction set's
//
//   Offset               what add_taps takes the zero point off with; offset_of(zero point)
//   in_words             whether the weights lie as add_taps<true> wants them
//   add_taps, add_tap    four channels' products of two taps, or of an odd last one; they move the
//                        weights on
//   quick_shifts         whether finish_four, outputs from sums of four channels, may take its
//                        quick way with some shifts
//   keep_in_memory       for a value that is not needed while registers are

// A whole window, of the map or of the copy.
template <class Activation>
struct TapRows {
  const Activation* first;
  size_t step;   // from tap to tap
  size_t pitch;  // from row to row
};

template <class Activation>
NNLIB_ALWAYS_INLINE void add_window(TapRows<Activation> in, uint32_t width, uint32_t taps,
                                    Offset offset, const int16_t*& weights, int32_t (&sums)[4]) {
  const Activation* at = in.first;
  uint32_t left = width;
  const auto next = [&]() __attribute__((always_inline)) {
    const Activation* tap = at;
    at += in.step;
    if (--left == 0) {
      left = width;
      at += in.pitch - width * in.step;
    }
    return tap;
  };
  for (; taps >= 2; taps -= 2) {
    const Activation* first = next();
    add_taps<false>(first, next(), offset, weights, sums);
  }
  if (taps != 0) {
    add_tap(at, offset, weights, sums);
  }
}

template <class Activation>
NNLIB_ALWAYS_INLINE void add_window_3x3(TapRows<Activation> in, Offset offset,
                                        const int16_t*& weights, int32_t (&sums)[4]) {
  const size_t step = in.step;
  const Activation* row = in.first;
  add_taps<true>(row, row + step, offset, weights, sums);
  const Activation* third = row + 2 * step;
  row += in.pitch;
  add_taps<true>(third, row, offset, weights, sums);
  add_taps<true>(row + step, row + 2 * step, offset, weights, sums);
  row += in.pitch;
  add_taps<true>(row, row + step, offset, weights, sums);
  add_tap(row + 2 * step, offset, weights, sums);
}

// Blocks of four channels: what they start from, are multiplied and requantized with.
template <class Activation>
struct FourChannels {
  FourChannels(const Depthwise<Activation>& d, uint32_t channel)
      : zeropoint(d.quantization.out_zeropoint),
        bias_step(d.bias != nullptr ? 4 : 0),
        step(d.quantization.of_channels() ? 4 : 0),
        channels((d.order.channels & ~3u) - channel),
        offset(offset_of(d.quantization.in_zeropoint)),
        width(d.g.kernel_width),
        taps(d.order.taps),
        bias(d.bias != nullptr ? d.bias + channel : none),
        multipliers(same_multipliers),
        shifts(same_shifts),
        weights(d.weights + size_t{channel} * d.order.taps) {
    const KoQuantization& q = d.quantization;
    std::fill_n(same_multipliers, 4, *q.multiplier);
    std::fill_n(same_shifts, 4, *q.shift);
    if (q.of_channels()) {
      multipliers = q.multiplier + channel;
      shifts = q.shift + channel;
    }
    quick = quick_shifts(shifts, step != 0 ? channels : 4);
  }
  FourChannels(const FourChannels&) = delete;

  const int32_t zeropoint;
  const size_t bias_step, step;  // from block to block
  const uint32_t channels;
  const Offset offset;
  const uint32_t width, taps;
  // Of the first block.
  const int32_t* const bias;
  const int32_t* multipliers;
  const int16_t* shifts;
  const int16_t* const weights;
  bool quick;

 private:
  const int32_t none[4] = {};
  int32_t same_multipliers[4];
  int16_t same_shifts[4];
};

// All blocks of one output pixel. three: whether the kernel is one of 3x3, as a type for speed, as
// a bool in one code for size.
template <class Three, class Activation>
NNLIB_NOINLINE void depthwise_pixel(const FourChannels<Activation>& four, TapRows<Activation> in,
                                    Activation* out, Three three) {
  struct {
    const int32_t* bias;
    const int32_t* multipliers;
    const int16_t* shifts;
    Activation* out;
  } at = {four.bias, four.multipliers, four.shifts, out};
  const int16_t* weights = four.weights;
  const Offset offset = four.offset;
  for (uint32_t left = four.channels; left > 0; left -= 4, in.first += 4) {
    int32_t sums[4];
    NNLIB_UNROLL
    for (uint32_t i = 0; i < 4; ++i) {
      sums[i] = at.bias[i];
    }
    keep_in_memory(at);
    keep_in_memory(left);
    if (three) {
      add_window_3x3(in, offset, weights, sums);
    } else {
      add_window(in, four.width, four.taps, offset, weights, sums);
    }
    finish_four(at.multipliers, at.shifts, four.zeropoint, four.quick, sums, at.out);
    at.bias += four.bias_step;
    at.multipliers += four.step;
    at.shifts += four.step;
    at.out += 4;
  }
}

template <class Activation>
TapRows<Activation> copy_window(const Depthwise<Activation>& d, const Window& rows,
                                const Window& columns) {
  const size_t step = d.order.channels;
  const size_t pitch = d.g.kernel_width * step;
  std::memset(d.window, d.quantization.in_zeropoint, d.order.taps * step);
  if (!columns.empty()) {
    const auto* in = d.in + (size_t{rows.begin} * d.g.in_width + columns.begin) * step;
    auto* to = d.window + rows.tap * pitch + columns.tap * step;
    for (uint32_t row = 0; row < rows.count; ++row, in += d.g.in_width * step, to += pitch) {
      std::memcpy(to, in, columns.count * step);
    }
  }
  return {d.window, step, pitch};
}

// Channels from `channel` on of a row of outputs, as far as they fill blocks; returns the first
// channel left. kUnrolled: kernels of 3x3 have code of their own.
template <bool kUnrolled, class Activation>
uint32_t depthwise_fours(const Depthwise<Activation>& d, uint32_t y, uint32_t channel,
                         Activation* out) {
  const uint32_t end = d.order.channels & ~3u;
  if (channel == end) {
    return end;
  }
  const size_t step = d.order.channels;
  const size_t pitch = d.g.in_width * step;
  const bool three = kUnrolled && d.g.kernel_width == 3 && d.order.taps == 9 && in_words(d.weights);
  const Window rows = d.g.rows(y);
  const bool whole_rows = rows.count == d.g.kernel_height;
  const auto* row = d.in + rows.begin * pitch;
  const FourChannels<Activation> four(d, channel);
  for (uint32_t x = 0; x < d.g.out_width; ++x, out += step) {
    const Window columns = d.g.columns(x);
    TapRows<Activation> in = {row + columns.begin * step, step, pitch};
    if (!whole_rows || columns.count != d.g.kernel_width) {
      in = copy_window(d, rows, columns);
    }
    in.first += channel;
    if (kUnrolled && !NNLIB_FOR_SPEED) {
      depthwise_pixel(four, in, out + channel, three);
    } else if (three) {
      depthwise_pixel(four, in, out + channel, std::bool_constant<kUnrolled>());
    } else {
      depthwise_pixel(four, in, out + channel, std::false_type());
    }
  }
  return end;
}
