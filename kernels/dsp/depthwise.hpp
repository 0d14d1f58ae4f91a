// SPDX-License-Identifier: MIT
// Blocks of four channels, taps in pairs as the adapted weights have them. A window that lies
// partly outside the map is copied into the scratch, the outside as the zero point.

// Adds the products of four channels: of the two taps whose bytes a and b are.
template <class Activation>
NNLIB_ALWAYS_INLINE void add_taps(uint32_t a, uint32_t b, uint32_t less, const int16_t*& weights,
                                  int32_t (&s)[4]) {
  const uint32_t even_a = dsp::even_bytes<Activation>(less, a);
  const uint32_t odd_a = dsp::odd_bytes<Activation>(less, a);
  const uint32_t even_b = dsp::even_bytes<Activation>(less, b);
  const uint32_t odd_b = dsp::odd_bytes<Activation>(less, b);
  uint32_t w, pair;
  __asm__(
      "ldr %[w], [%[at]], #4\n\tpkhbt %[pair], %[ea], %[eb], lsl #16\n\t"
      "smlad %[s0], %[pair], %[w], %[s0]\n\t"
      "ldr %[w], [%[at]], #4\n\tpkhbt %[pair], %[oa], %[ob], lsl #16\n\t"
      "smlad %[s1], %[pair], %[w], %[s1]\n\t"
      "ldr %[w], [%[at]], #4\n\tpkhtb %[pair], %[eb], %[ea], asr #16\n\t"
      "smlad %[s2], %[pair], %[w], %[s2]\n\t"
      "ldr %[w], [%[at]], #4\n\tpkhtb %[pair], %[ob], %[oa], asr #16\n\t"
      "smlad %[s3], %[pair], %[w], %[s3]"
      : [w] "=&r"(w), [pair] "=&r"(pair), [at] "+r"(weights), [s0] "+r"(s[0]), [s1] "+r"(s[1]),
        [s2] "+r"(s[2]), [s3] "+r"(s[3])
      : [ea] "r"(even_a), [oa] "r"(odd_a), [eb] "r"(even_b), [ob] "r"(odd_b)
      : "memory");
}

// Of an odd last tap.
template <class Activation>
NNLIB_ALWAYS_INLINE void add_tap(uint32_t a, uint32_t less, const int16_t*& weights,
                                 int32_t (&s)[4]) {
  const uint32_t even = dsp::even_bytes<Activation>(less, a);
  const uint32_t odd = dsp::odd_bytes<Activation>(less, a);
  const uint32_t first = dsp::load_word(weights);
  const uint32_t second = dsp::load_word(weights + 2);
  weights += 4;
  __asm__("smlabb %0, %1, %2, %0" : "+r"(s[0]) : "r"(even), "r"(first));
  __asm__("smlabt %0, %1, %2, %0" : "+r"(s[1]) : "r"(odd), "r"(first));
  __asm__("smlatb %0, %1, %2, %0" : "+r"(s[2]) : "r"(even), "r"(second));
  __asm__("smlatt %0, %1, %2, %0" : "+r"(s[3]) : "r"(odd), "r"(second));
}

// A whole window: of the map or of the copy.
template <class Activation>
struct TapRows {
  const Activation* first;
  size_t step;   // from tap to tap
  size_t pitch;  // from row to row
};

// Sums of any kernel.
template <class Activation>
NNLIB_ALWAYS_INLINE void add_window(TapRows<Activation> in, uint32_t width, uint32_t taps,
                                    uint32_t less, const int16_t*& weights, int32_t (&s)[4]) {
  const Activation* at = in.first;
  uint32_t left = width;
  const auto next = [&] {
    const uint32_t bytes = dsp::load_word(at);
    at += in.step;
    if (--left == 0) {
      left = width;
      at += in.pitch - width * in.step;
    }
    return bytes;
  };
  for (; taps >= 2; taps -= 2) {
    const uint32_t a = next();
    const uint32_t b = next();
    add_taps<Activation>(a, b, less, weights, s);
  }
  if (taps != 0) {
    add_tap<Activation>(dsp::load_word(at), less, weights, s);
  }
}

template <class Activation>
NNLIB_ALWAYS_INLINE void add_window_3x3(TapRows<Activation> in, uint32_t less,
                                        const int16_t*& weights, int32_t (&s)[4]) {
  const Activation* at = in.first;
  const auto tap = [&](uint32_t column) { return dsp::load_word(at + column * in.step); };
  add_taps<Activation>(tap(0), tap(1), less, weights, s);
  const uint32_t third = tap(2);
  at += in.pitch;
  add_taps<Activation>(third, tap(0), less, weights, s);
  add_taps<Activation>(tap(1), tap(2), less, weights, s);
  at += in.pitch;
  add_taps<Activation>(tap(0), tap(1), less, weights, s);
  add_tap<Activation>(tap(2), less, weights, s);
}

// All whole blocks of one output pixel.
template <bool kThree, class Activation>
__attribute__((noinline)) void depthwise_pixel(const Depthwise<Activation>& d,
                                               TapRows<Activation> in, Activation* out) {
  FourChannels four(d.quantization);
  const int32_t* bias = d.bias;
  const uint32_t less = dsp::twice(-d.quantization.in_zeropoint);
  const int16_t* weights = d.weights;
  for (Activation* stop = out + (d.order.channels & ~3u); out != stop; out += 4, in.first += 4) {
    int32_t sums[4] = {};
    if (bias != nullptr) {
      NNLIB_UNROLL
      for (int32_t& sum : sums) {
        sum = *bias++;
      }
    }
    if constexpr (kThree) {
      add_window_3x3(in, less, weights, sums);
    } else {
      add_window(in, d.g.kernel_width, d.order.taps, less, weights, sums);
    }
    finish_four(four, sums, out);
    four.advance();
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

template <class Activation>
uint32_t depthwise_blocks(const Depthwise<Activation>& d, uint32_t y, Activation* out) {
  const size_t step = d.order.channels;
  const Window rows = d.g.rows(y);
  for (uint32_t x = 0; x < d.g.out_width; ++x, out += step) {
    const Window columns = d.g.columns(x);
    const bool inside = rows.count == d.g.kernel_height && columns.count == d.g.kernel_width;
    const auto* first = d.in + (size_t{rows.begin} * d.g.in_width + columns.begin) * step;
    const TapRows<Activation> in = inside ? TapRows<Activation>{first, step, d.g.in_width * step}
                                          : copy_window(d, rows, columns);
    if (d.g.kernel_width == 3 && d.order.taps == 9) {
      depthwise_pixel<true>(d, in, out);
    } else {
      depthwise_pixel<false>(d, in, out);
    }
  }
  return d.order.channels & ~3u;
}
