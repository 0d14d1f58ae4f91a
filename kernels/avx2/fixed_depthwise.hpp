// SPDX-License-Identifier: MIT
// Blocks of eight Q7 channels.

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

inline uint32_t depthwise_blocks(const FixedConv<q7_t>& conv) {
  const uint32_t channels = conv.geometry.out_channels;
  if (channels < kBlock) {
    for_pixels(conv, [channels](const DepthwisePixel& pixel, q7_t* out) {
      for (uint32_t channel = 0; channel + 4 <= channels; channel += 4) {
        depthwise_channels<4>(pixel, channel, channel, out);
      }
    });
    return channels & ~3u;
  }
  for_pixels(conv, [channels](const DepthwisePixel& pixel, q7_t* out) {
    for (uint32_t channel = 0; channel < channels; channel += kBlock) {
      // The last block goes back over what is done.
      depthwise_block(pixel, std::min(channel, channels - kBlock), out);
    }
  });
  return channels;
}
