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

// A row of three taps.
NNLIB_ALWAYS_INLINE void add_three_taps(const q7_t* in, const q7_t* weights, size_t step,
                                        int32_t (&s)[4]) {
  add_tap(dsp::load_word(in), dsp::load_word(weights), s);
  add_tap(dsp::load_word(in + step), dsp::load_word(weights + step), s);
  add_tap(dsp::load_word(in + 2 * step), dsp::load_word(weights + 2 * step), s);
}

// All blocks of an output pixel. kThree: three rows of three taps.
template <bool kThree>
__attribute__((noinline)) void depthwise_pixel(const DepthwisePixel& pixel, q7_t* out) {
  const FixedConv<q7_t>& conv = pixel.conv;
  const FixedShifts shifts = conv.shifts;
  const auto half = static_cast<int32_t>(fixed_start<q7_t>(nullptr, 0, shifts));
  auto unit = static_cast<int32_t>(uint32_t{1} << (shifts.bias & 31));  // of a bias
  __asm__("" : "+r"(unit));  // a product with the sum, not a shift
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
      s[i] = wrapping_add(half, wrapping_multiply(bias[i], unit));
    }
    bias += bias_step;
    const q7_t* row = in;
    const q7_t* weight_row = weights;
    if constexpr (kThree) {
      NNLIB_UNROLL_FOR_SPEED
      for (uint32_t left = 3; left > 0; --left) {
        add_three_taps(row, weight_row, step, s);
        row += pitch;
        weight_row += weight_pitch;
        __asm__("" : "+r"(row), "+r"(weight_row));  // no distances from the first
      }
    } else {
      for (uint32_t left = pixel.rows.count; left > 0; --left) {
        const q7_t* weight = weight_row;
        for (const q7_t *at = row, *end = row + width; at != end; at += step, weight += step) {
          add_tap(dsp::load_word(at), dsp::load_word(weight), s);
        }
        row += pitch;
        weight_row += weight_pitch;
      }
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
    if (pixel.columns.count == 3 && pixel.rows.count == 3) {
      depthwise_pixel<true>(pixel, out);
    } else {
      depthwise_pixel<false>(pixel, out);
    }
  });
  return conv.geometry.out_channels & ~3u;
}
