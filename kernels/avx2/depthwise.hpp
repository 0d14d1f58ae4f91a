// SPDX-License-Identifier: MIT
// Blocks of eight channels, taps in pairs.

#include "kernels/scalar/depthwise_fours.hpp"

constexpr uint32_t kMostTaps = 64;

// The taps of eight channels at one pixel: where they are, in elements from the first one, and
// their weights. A lone last tap is its own partner, with zero weights.
struct Taps {
  uint32_t count;
  size_t inside[kMostTaps];    // of a window inside the map
  size_t gathered[kMostTaps];  // of a copied one
  __m256i weights[kMostTaps / 2];
};

template <class Activation>
NNLIB_ALWAYS_INLINE __m256i pair_of_taps(const Activation* first, const Activation* second) {
  const __m128i a = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(first));
  const __m128i b = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(second));
  const __m128i pairs = _mm_unpacklo_epi8(a, b);
  return std::is_signed_v<Activation> ? _mm256_cvtepi8_epi16(pairs) : _mm256_cvtepu8_epi16(pairs);
}

// Weights of eight channels as 32-bit lanes of two taps each; the lone last tap has a zero beside.
template <class Activation>
NNLIB_ALWAYS_INLINE void load_weights(const Depthwise<Activation>& d, uint32_t channel,
                                      Taps& taps) {
  const int16_t* block = d.weights + d.order.index(channel, 0);
  const int16_t* next = d.weights + d.order.index(channel + 4, 0);
  uint32_t k = 0;
  for (; k + 2 <= taps.count; k += 2) {
    taps.weights[k / 2] =
        _mm256_set_m128i(_mm_loadu_si128(reinterpret_cast<const __m128i*>(next + 4 * k)),
                         _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + 4 * k)));
  }
  if (k < taps.count) {
    taps.weights[k / 2] = _mm256_cvtepu16_epi32(
        _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(block + 4 * k)),
                           _mm_loadl_epi64(reinterpret_cast<const __m128i*>(next + 4 * k))));
  }
}

// Copies a window that lies partly outside the map, the outside as the zero point.
template <class Activation>
void gather_window(const Depthwise<Activation>& d, const Window& rows, const Window& columns,
                   uint32_t channel, uint32_t taps) {
  std::memset(d.window, d.quantization.in_zeropoint, size_t{taps} * 8);
  for (uint32_t ky = 0; ky < rows.count && !columns.empty(); ++ky) {
    for (uint32_t kx = 0; kx < columns.count; ++kx) {
      const uint32_t tap = (rows.tap + ky) * d.g.kernel_width + columns.tap + kx;
      const size_t pixel = size_t{rows.begin + ky} * d.g.in_width + columns.begin + kx;
      std::memcpy(d.window + size_t{tap} * 8, d.in + pixel * d.order.channels + channel, 8);
    }
  }
}

// Eight channels of a row of outputs.
template <class Activation>
void depthwise_row(const Depthwise<Activation>& d, uint32_t y, uint32_t channel, Taps& taps,
                   Activation* out) {
  load_weights(d, channel, taps);
  // Inputs stay as they are: the biases take up the input zero point.
  __m256i weight_sum = _mm256_setzero_si256();
  for (uint32_t k = 0; k < taps.count; k += 2) {
    weight_sum =
        _mm256_add_epi32(weight_sum, _mm256_madd_epi16(taps.weights[k / 2], _mm256_set1_epi16(1)));
  }
  const __m256i bias =
      d.bias != nullptr ? channel_lanes<8>(d.bias + channel, 8) : _mm256_setzero_si256();
  const __m256i start = _mm256_sub_epi32(
      bias, _mm256_mullo_epi32(weight_sum, _mm256_set1_epi32(d.quantization.in_zeropoint)));
  const Requantizer to_output = requantizer<8>(d.quantization, channel, 8);

  const ConvGeometry g = d.g;  // a copy, which no store can change
  const size_t channels = d.order.channels;
  const uint32_t count = taps.count;
  const Window rows = g.rows(y);
  const auto* row = d.in + size_t{rows.begin} * g.in_width * channels + channel;
  for (uint32_t x = 0; x < g.out_width; ++x, out += channels) {
    const Window columns = g.columns(x);
    const bool inside = rows.count == g.kernel_height && columns.count == g.kernel_width;
    const auto* first = row + columns.begin * channels;
    const size_t* offsets = taps.inside;
    if (!inside) {
      gather_window(d, rows, columns, channel, count);
      first = d.window;
      offsets = taps.gathered;
    }
    __m256i sum = start;
    for (size_t k = 0; k < count; k += 2) {
      const __m256i values = pair_of_taps(first + offsets[k], first + offsets[k + 1]);
      sum = _mm256_add_epi32(sum, _mm256_madd_epi16(values, taps.weights[k / 2]));
    }
    store_quads(to_output(sum), out, 4, out + 4, 4);
  }
}

template <class Activation>
uint32_t depthwise_blocks(const Depthwise<Activation>& d, Activation* out) {
  const uint32_t eights = d.order.taps > kMostTaps ? 0 : d.order.channels & ~7u;
  Taps taps;
  taps.count = eights == 0 ? 0 : d.order.taps;
  for (uint32_t k = 0; k < ((taps.count + 1) & ~1u); ++k) {
    const uint32_t tap = std::min(k, taps.count - 1);
    const size_t row = tap / d.g.kernel_width;
    taps.inside[k] = (row * d.g.in_width + tap % d.g.kernel_width) * d.order.channels;
    taps.gathered[k] = size_t{tap} * 8;
  }
  for_rows(d, out, [&](uint32_t y, Activation* row) {
    for (uint32_t c = 0; c < eights; c += 8) {
      depthwise_row(d, y, c, taps, row + c);
    }
    depthwise_fours<true>(d, y, eights, row);
  });
  return d.order.channels & ~3u;
}
