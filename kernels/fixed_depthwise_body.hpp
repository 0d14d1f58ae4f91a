// SPDX-License-Identifier: MIT
// Body of fixed_depthwise.cpp, once for each instance.

// What one output pixel sees of its window.
struct DepthwisePixel {
  const FixedConv<q7_t>& conv;
  Window rows;
  Window columns;

  NNLIB_ALWAYS_INLINE const q7_t* input(uint32_t m, uint32_t n) const {
    const ConvGeometry& g = conv.geometry;
    return conv.in +
           (size_t{rows.begin + m} * g.in_width + columns.begin + n) * size_t{g.in_channels};
  }
  NNLIB_ALWAYS_INLINE const q7_t* weights(uint32_t m, uint32_t n) const {
    const ConvGeometry& g = conv.geometry;
    return conv.weights +
           (size_t{rows.tap + m} * g.kernel_width + columns.tap + n) * size_t{g.out_channels};
  }
};

// kCount output channels from `channel` on, and as many input channels from in_channel on.
template <uint32_t kCount>
void depthwise_channels(const DepthwisePixel& pixel, uint32_t in_channel, uint32_t channel,
                        q7_t* out) {
  const FixedConv<q7_t>& conv = pixel.conv;
  uint32_t sums[kCount];
  NNLIB_UNROLL
  for (uint32_t i = 0; i < kCount; ++i) {
    sums[i] = fixed_start(conv.bias, channel + i, conv.shifts);
  }
  for (uint32_t m = 0; m < pixel.rows.count; ++m) {
    const q7_t* in = pixel.input(m, 0) + in_channel;
    const q7_t* weights = pixel.weights(m, 0) + channel;
    for (uint32_t n = pixel.columns.count; n > 0; --n) {
      NNLIB_UNROLL
      for (uint32_t i = 0; i < kCount; ++i) {
        sums[i] += fixed_product(in[i], weights[i]);
      }
      in += conv.geometry.in_channels;
      weights += conv.geometry.out_channels;
    }
  }
  NNLIB_UNROLL
  for (uint32_t i = 0; i < kCount; ++i) {
    out[channel + i] = fixed_finish<q7_t>(sums[i], conv.shifts);
  }
}

// Calls visit(pixel, outputs) for the output pixels of a map.
template <class Visit>
NNLIB_ALWAYS_INLINE void for_pixels(const FixedConv<q7_t>& conv, Visit visit) {
  const ConvGeometry& g = conv.geometry;
  q7_t* out = conv.out;
  for (uint32_t y = 0; y < g.out_height; ++y) {
    const Window rows = g.rows(y);
    for (uint32_t x = 0; x < g.out_width; ++x, out += g.out_channels) {
      Window columns = g.columns(x);
      columns = rows.empty() ? Window{0, 0, 0} : columns;
      visit(DepthwisePixel{conv, columns.empty() ? Window{0, 0, 0} : rows, columns}, out);
    }
  }
}

#include NNLIB_PART(finish)

#include NNLIB_PART(fixed_depthwise)

// Channels from `first` on, one after the other.
NNLIB_NOINLINE inline void convolve_rest(const FixedConv<q7_t>& conv, uint32_t first,
                                         uint32_t multiplier) {
  for_pixels(conv, [=, &conv](const DepthwisePixel& pixel, q7_t* out) {
    for (uint32_t channel = first; channel < conv.geometry.out_channels; ++channel) {
      depthwise_channels<1>(pixel, channel / multiplier, channel, out);
    }
  });
}

inline void convolve_channels(const FixedConv<q7_t>& conv) {
  const uint32_t channels = conv.geometry.out_channels;
  if (channels == 0) {
    return;
  }
  const uint32_t multiplier = channels / conv.geometry.in_channels;
  const uint32_t done = multiplier == 1 ? depthwise_blocks(conv) : 0;
  if (done != channels) {
    convolve_rest(conv, done, multiplier);
  }
}
