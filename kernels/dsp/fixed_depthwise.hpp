// SPDX-License-Identifier: MIT
// Blocks of four Q7 channels.

inline void depthwise_block(const DepthwisePixel& pixel, uint32_t channel, q7_t* out) {
  const FixedConv<q7_t>& conv = pixel.conv;
  const FixedShifts shifts = conv.shifts;
  const size_t step = conv.geometry.in_channels;
  const uint32_t width = pixel.columns.count;
  int32_t s[4];
  NNLIB_UNROLL
  for (uint32_t i = 0; i < 4; ++i) {
    s[i] = static_cast<int32_t>(fixed_start(conv.bias, channel + i, shifts));
  }
  for (uint32_t m = 0; m < pixel.rows.count; ++m) {
    const q7_t* in = pixel.input(m, 0) + channel;
    const q7_t* weights = pixel.weights(m, 0) + channel;
    for (const q7_t* stop = in + width * step; in != stop; in += step, weights += step) {
      uint32_t a = dsp::load_word(in);
      uint32_t w = dsp::load_word(weights);
      uint32_t even, even_weights;
      __asm__(
          "sxtb16 %[e], %[a]\n\tsxtb16 %[a], %[a], ror #8\n\tsxtb16 %[f], %[w]\n\t"
          "sxtb16 %[w], %[w], ror #8\n\tsmlabb %[s0], %[e], %[f], %[s0]\n\t"
          "smlabb %[s1], %[a], %[w], %[s1]\n\tsmlatt %[s2], %[e], %[f], %[s2]\n\t"
          "smlatt %[s3], %[a], %[w], %[s3]"
          : [a] "+r"(a), [w] "+r"(w), [e] "=&r"(even), [f] "=&r"(even_weights), [s0] "+r"(s[0]),
            [s1] "+r"(s[1]), [s2] "+r"(s[2]), [s3] "+r"(s[3]));
    }
  }
  NNLIB_UNROLL
  for (uint32_t i = 0; i < 4; ++i) {
    out[channel + i] = finish_sum<q7_t>(ShiftedChannel{0, shifts.out}, s[i]);
  }
}

inline uint32_t depthwise_blocks(const DepthwisePixel& pixel, q7_t* out) {
  uint32_t channel = 0;
  for (; channel + 4 <= pixel.conv.geometry.out_channels; channel += 4) {
    depthwise_block(pixel, channel, out);
  }
  return channel;
}
