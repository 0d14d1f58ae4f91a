// SPDX-License-Identifier: MIT
// Blocks of four channels without instructions of their own.

// Adds the products of one tap; kStep: the distance of its weights.
template <size_t kStep, class Activation>
NNLIB_ALWAYS_INLINE void add_tap(const Activation* in, const int16_t* weights, int32_t zeropoint,
                                 uint32_t (&sums)[4]) {
  NNLIB_UNROLL
  for (uint32_t i = 0; i < 4; ++i) {
    sums[i] += static_cast<uint32_t>(weights[i * kStep] * (in[i] - zeropoint));
  }
}

// One pixel's outputs of a block.
template <class Activation>
void depthwise_outputs(const Depthwise<Activation>& d, const Window& rows, const Window& columns,
                       uint32_t channel, Activation* out) {
  const size_t channels = d.order.channels;
  const int32_t zeropoint = d.quantization.in_zeropoint;
  const int16_t* weights = d.weights + d.order.index(channel, 0);
  const uint32_t paired = d.order.taps & ~1u;
  uint32_t sums[4] = {};
  for (uint32_t ky = 0; ky < rows.count && !columns.empty(); ++ky) {
    const auto* in =
        d.in + (size_t{rows.begin + ky} * d.g.in_width + columns.begin) * channels + channel;
    const uint32_t row_tap = (rows.tap + ky) * d.g.kernel_width + columns.tap;
    for (uint32_t tap = row_tap; tap < row_tap + columns.count; ++tap, in += channels) {
      if (tap < paired) {
        add_tap<2>(in, weights + (tap & ~1u) * 4 + (tap & 1), zeropoint, sums);
      } else {
        add_tap<1>(in, weights + tap * 4, zeropoint, sums);
      }
    }
  }
  NNLIB_UNROLL
  for (uint32_t i = 0; i < 4; ++i) {
    out[channel + i] = finish<Activation>(d.channel(channel + i), static_cast<int32_t>(sums[i]));
  }
}

// Channels from `from` on of a row of outputs, as far as they fill blocks.
template <class Activation>
uint32_t depthwise_fours(const Depthwise<Activation>& d, uint32_t y, uint32_t from,
                         Activation* out) {
  const uint32_t channels = from + ((d.order.channels - from) & ~3u);
  const Window rows = d.g.rows(y);
  for (uint32_t x = 0; x < d.g.out_width; ++x, out += d.order.channels) {
    const Window columns = d.g.columns(x);
    for (uint32_t channel = from; channel < channels; channel += 4) {
      depthwise_outputs(d, rows, columns, channel, out);
    }
  }
  return channels;
}
