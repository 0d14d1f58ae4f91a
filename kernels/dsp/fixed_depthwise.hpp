// SPDX-License-Identifier: MIT
// Blocks of four Q7 channels.

// Adds the products of four channels of a tap.
NNLIB_ALWAYS_INLINE void add_tap(uint32_t a, uint32_t w, int32_t (&s)[4]) {
  uint32_t even, even_weights;
  __asm__(
      "sxtb16 %[e], %[a]\n\tsxtb16 %[a], %[a], ror #8\n\tsxtb16 %[f], %[w]\n\t"
      "sxtb16 %[w], %[w], ror #8\n\tsmlabb %[s0], %[e], %[f], %[s0]\n\t"
      "smlabb %[s1], %[a], %[w], %[s1]\n\tsmlatt %[s2], %[e], %[f], %[s2]\n\t"
      "smlatt %[s3], %[a], %[w], %[s3]"
      : [a] "+r"(a), [w] "+r"(w), [e] "=&r"(even), [f] "=&r"(even_weights), [s0] "+r"(s[0]),
        [s1] "+r"(s[1]), [s2] "+r"(s[2]), [s3] "+r"(s[3]));
}

inline void depthwise_pixel(const DepthwisePixel& pixel, q7_t* out) {
  const FixedConv<q7_t>& conv = pixel.conv;
  const size_t step = conv.geometry.in_channels;
  const size_t pitch = conv.geometry.in_width * step;
  const size_t weight_pitch = conv.geometry.kernel_width * step;
  const size_t width = pixel.columns.count * step;
  const uint32_t rows = pixel.rows.count;
  const FixedShifts shifts = conv.shifts;
  const auto half = static_cast<int32_t>(fixed_start<q7_t>(nullptr, 0, shifts));
  const q7_t* bias = conv.bias;
  const q7_t* in = pixel.input(0, 0);
  const q7_t* weights = pixel.weights(0, 0);
  const uint32_t channels = conv.geometry.out_channels & ~3u;
  for (q7_t* stop = out + channels; out != stop; out += 4, in += 4, weights += 4) {
    int32_t s[4] = {half, half, half, half};
    if (bias != nullptr) {
      NNLIB_UNROLL
      for (int32_t& sum : s) {
        sum = wrapping_add(
            sum, static_cast<int32_t>(static_cast<uint32_t>(*bias++) << (shifts.bias & 31)));
      }
    }
    const q7_t* row = in;
    const q7_t* weight_row = weights;
    for (uint32_t left = rows; left > 0; --left, row += pitch, weight_row += weight_pitch) {
      const q7_t* weight = weight_row;
      for (const q7_t *at = row, *end = row + width; at != end; at += step, weight += step) {
        add_tap(dsp::load_word(at), dsp::load_word(weight), s);
      }
    }
    NNLIB_UNROLL
    for (uint32_t i = 0; i < 4; ++i) {
      out[i] = finish_sum<q7_t>(ShiftedChannel{0, shifts.out}, s[i]);
    }
  }
}

inline uint32_t depthwise_blocks(const FixedConv<q7_t>& conv) {
  for_pixels(conv, depthwise_pixel);
  return conv.geometry.out_channels & ~3u;
}
