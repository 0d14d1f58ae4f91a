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

// All blocks of an output pixel. kThree: rows of three taps, one behind the other.
template <bool kThree>
__attribute__((noinline)) void depthwise_pixel(const DepthwisePixel& pixel, q7_t* out) {
  const FixedConv<q7_t>& conv = pixel.conv;
  const FixedShifts shifts = conv.shifts;
  const auto half = static_cast<int32_t>(fixed_start<q7_t>(nullptr, 0, shifts));
  const q7_t none[4] = {};
  const size_t step = conv.geometry.in_channels;
  const size_t pitch = conv.geometry.in_width * step;
  const size_t weight_pitch = conv.geometry.kernel_width * step;
  const size_t width = pixel.columns.count * step;
  const size_t bias_step = conv.bias != nullptr ? 4 : 0;
  const q7_t* bias = conv.bias != nullptr ? conv.bias : none;
  const q7_t* in = pixel.input(0, 0);
  const q7_t* weights = pixel.weights(0, 0);
  for (q7_t* stop = out + (step & ~3u); out != stop; out += 4, in += 4, weights += 4) {
    int32_t s[4];
    NNLIB_UNROLL
    for (uint32_t i = 0; i < 4; ++i) {
      const auto value = static_cast<uint32_t>(bias[i]);
      s[i] = wrapping_add(half, static_cast<int32_t>(value << (shifts.bias & 31)));
    }
    bias += bias_step;
    const q7_t* row = in;
    const q7_t* weight_row = weights;
    for (uint32_t left = pixel.rows.count; left > 0; --left) {
      if constexpr (kThree) {
        add_tap(dsp::load_word(row), dsp::load_word(weight_row), s);
        add_tap(dsp::load_word(row + step), dsp::load_word(weight_row + step), s);
        add_tap(dsp::load_word(row + 2 * step), dsp::load_word(weight_row + 2 * step), s);
      } else {
        const q7_t* weight = weight_row;
        for (const q7_t *at = row, *end = row + width; at != end; at += step, weight += step) {
          add_tap(dsp::load_word(at), dsp::load_word(weight), s);
        }
      }
      row += pitch;
      weight_row += weight_pitch;
    }
    int32_t values[4];
    finish_sums<q7_t>(ShiftedChannel{0, shifts.out}, s, values);
    NNLIB_UNROLL
    for (uint32_t i = 0; i < 4; ++i) {
      out[i] = static_cast<q7_t>(values[i]);
    }
  }
}

inline uint32_t depthwise_blocks(const FixedConv<q7_t>& conv) {
  for_pixels(conv, [](const DepthwisePixel& pixel, q7_t* out) {
    if (pixel.columns.count == 3) {
      depthwise_pixel<true>(pixel, out);
    } else {
      depthwise_pixel<false>(pixel, out);
    }
  });
  return conv.geometry.out_channels & ~3u;
}
