// SPDX-License-Identifier: MIT
// Body of fixed_depthwise.cpp, once for each number of lanes.

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

#if NNLIB_LANES == 8

constexpr uint32_t kBlock = 8;

// Eight channels of two taps, as pairs of 16-bit lanes.
NNLIB_ALWAYS_INLINE __m256i pair_taps(const q7_t* first, const q7_t* second) {
  return _mm256_cvtepi8_epi16(
      _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(first)),
                        _mm_loadl_epi64(reinterpret_cast<const __m128i*>(second))));
}

// Eight channels from `channel` on.
NNLIB_ALWAYS_INLINE void depthwise_block(const DepthwisePixel& pixel, uint32_t channel, q7_t* out) {
  static constexpr q7_t kNoWeights[kBlock] = {};
  const FixedConv<q7_t>& conv = pixel.conv;
  const __m128i bias_shift = _mm_cvtsi32_si128(static_cast<int>(conv.shifts.bias & 31));
  const __m128i out_shift = _mm_cvtsi32_si128(static_cast<int>(conv.shifts.out & 31));
  const q7_t* bias = conv.bias != nullptr ? conv.bias + channel : kNoWeights;
  __m256i sums = _mm256_cvtepi8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(bias)));
  sums = _mm256_sll_epi32(sums, bias_shift);
  const uint32_t half = fixed_start<q7_t>(nullptr, 0, conv.shifts);
  sums = _mm256_add_epi32(sums, _mm256_set1_epi32(static_cast<int32_t>(half)));
  const size_t in_step = conv.geometry.in_channels;
  const size_t weight_step = conv.geometry.out_channels;
  for (uint32_t m = 0; m < pixel.rows.count; ++m) {
    const q7_t* in = pixel.input(m, 0) + channel;
    const q7_t* weights = pixel.weights(m, 0) + channel;
    uint32_t n = 0;
    for (; n + 2 <= pixel.columns.count; n += 2, in += 2 * in_step, weights += 2 * weight_step) {
      sums = _mm256_add_epi32(sums, _mm256_madd_epi16(pair_taps(in, in + in_step),
                                                      pair_taps(weights, weights + weight_step)));
    }
    if (n < pixel.columns.count) {
      sums = _mm256_add_epi32(sums,
                              _mm256_madd_epi16(pair_taps(in, in), pair_taps(weights, kNoWeights)));
    }
  }
  sums = _mm256_sra_epi32(sums, out_shift);
  const __m128i words =
      _mm_packs_epi32(_mm256_castsi256_si128(sums), _mm256_extracti128_si256(sums, 1));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(out + channel), _mm_packs_epi16(words, words));
}

#endif

inline void convolve_channels(const FixedConv<q7_t>& conv) {
  const ConvGeometry& g = conv.geometry;
  if (g.out_channels == 0) {
    return;
  }
  const uint32_t multiplier = g.out_channels / g.in_channels;
  q7_t* out = conv.out;
  for (uint32_t y = 0; y < g.out_height; ++y) {
    const Window rows = g.rows(y);
    for (uint32_t x = 0; x < g.out_width; ++x, out += g.out_channels) {
      Window columns = g.columns(x);
      columns = rows.empty() ? Window{0, 0, 0} : columns;
      const DepthwisePixel pixel = {conv, columns.empty() ? Window{0, 0, 0} : rows, columns};
      uint32_t channel = 0;
#if NNLIB_LANES == 8
      const bool blocks = multiplier == 1 && g.out_channels >= kBlock;
      for (; blocks && channel < g.out_channels; channel += kBlock) {
        // The last block goes back over what is done.
        depthwise_block(pixel, std::min(channel, g.out_channels - kBlock), out);
      }
#endif
      for (; multiplier == 1 && channel + 4 <= g.out_channels; channel += 4) {
        depthwise_channels<4>(pixel, channel, channel, out);
      }
      for (; channel < g.out_channels; ++channel) {
        depthwise_channels<1>(pixel, channel / multiplier, channel, out);
      }
    }
  }
}
