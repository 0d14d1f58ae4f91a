// SPDX-License-Identifier: MIT
// Body of integer_depthwise.cpp, once for each instance.

template <class Activation>
struct Depthwise {
  const ConvGeometry& g;
  const Activation* in;
  const int32_t* bias;  // may be null
  const KoQuantization& quantization;
  AdaptedWeights order;
  const int16_t* weights;  // adapted
  Activation* window;      // room for order.channels * order.taps values

  RequantizedChannel channel(uint32_t c) const {
    return quantized_channel(quantization, bias != nullptr ? bias[c] : 0, c);
  }
};

#include NNLIB_PART(finish)

// Calls visit(y, outputs) for the rows of a map.
template <class Activation, class Visit>
NNLIB_ALWAYS_INLINE void for_rows(const Depthwise<Activation>& d, Activation* out, Visit visit) {
  const size_t row_length = size_t{d.g.out_width} * d.g.in_channels;
  for (uint32_t y = 0; y < d.g.out_height; ++y, out += row_length) {
    visit(y, out);
  }
}

#include NNLIB_PART(depthwise)

// One output of a channel that belongs to no block.
template <class Activation>
void depthwise_output(const Depthwise<Activation>& d, const Window& rows, const Window& columns,
                      uint32_t channel, Activation* out) {
  const size_t channels = d.order.channels;
  uint32_t sum = 0;
  for (uint32_t ky = 0; ky < rows.count && !columns.empty(); ++ky) {
    const auto* in =
        d.in + (size_t{rows.begin + ky} * d.g.in_width + columns.begin) * channels + channel;
    const uint32_t row_tap = (rows.tap + ky) * d.g.kernel_width + columns.tap;
    for (uint32_t tap = row_tap; tap < row_tap + columns.count; ++tap, in += channels) {
      sum += static_cast<uint32_t>(d.weights[d.order.index(channel, tap)] *
                                   (*in - d.quantization.in_zeropoint));
    }
  }
  out[channel] = finish<Activation>(d.channel(channel), static_cast<int32_t>(sum));
}

template <class Activation>
void convolve_channels(const ConvGeometry& g, const Activation* in, const int32_t* bias,
                       const KoQuantization& quantization, int16_t* scratch, Activation* out) {
  const AdaptedWeights order = {g.in_channels, g.kernel_width * g.kernel_height};
  const Depthwise<Activation> d = {g,
                                   in,
                                   bias,
                                   quantization,
                                   order,
                                   scratch + order.start(),
                                   reinterpret_cast<Activation*>(scratch)};
  const uint32_t done = depthwise_blocks(d, out);
  if (done == g.in_channels) {
    return;
  }
  for_rows(d, out, [&](uint32_t y, Activation* row) {
    const Window rows = g.rows(y);
    for (uint32_t x = 0; x < g.out_width; ++x, row += g.in_channels) {
      const Window columns = g.columns(x);
      for (uint32_t channel = done; channel < g.in_channels; ++channel) {
        depthwise_output(d, rows, columns, channel, row);
      }
    }
  });
}
