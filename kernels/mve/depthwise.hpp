// SPDX-License-Identifier: MIT
// Blocks of four channels in lanes of 32 bits, of four neighbouring pixels at a time.

#include "kernels/scalar/depthwise_fours.hpp"

constexpr uint32_t kMostTaps = 64;

// What the outputs of four channels need.
struct BlockOfFour {
  template <class Activation>
  BlockOfFour(const Depthwise<Activation>& d, uint32_t channel)
      : bias(d.bias != nullptr ? vldrwq_s32(d.bias + channel) : vdupq_n_s32(0)),
        zeropoint(d.quantization.in_zeropoint),
        to_output(d.quantization, channel) {
    const int16_t* adapted = d.weights + d.order.index(channel, 0);
    uint32_t tap = 0;
    for (; tap + 2 <= d.order.taps; tap += 2, adapted += 8) {
      int32x4_t pairs;
      std::memcpy(&pairs, adapted, sizeof(pairs));
      vstrhq_s32(weights[tap], pairs);
      vstrhq_s32(weights[tap + 1], vshrq_n_s32(pairs, 16));
    }
    if (tap < d.order.taps) {
      std::memcpy(weights[tap], adapted, sizeof(weights[tap]));
    }
  }

  int32x4_t bias;
  int32_t zeropoint;
  LaneChannels to_output;
  int16_t weights[kMostTaps][4];
};

template <class Activation>
NNLIB_ALWAYS_INLINE int32x4_t load_lanes(const Activation* from) {
  if constexpr (std::is_signed_v<Activation>) {
    return vldrbq_s32(from);
  } else {
    return vreinterpretq_s32_u32(vldrbq_u32(from));
  }
}

// kPixels neighbouring outputs whose windows have the same parts inside the map.
template <uint32_t kPixels, class Activation>
NNLIB_ALWAYS_INLINE void depthwise_pixels(const Depthwise<Activation>& d, const BlockOfFour& block,
                                          const Window& rows, const Window& columns,
                                          uint32_t channel, Activation* out) {
  const size_t step = d.order.channels;
  const size_t next = step * d.g.stride_x;
  const size_t pitch = step * d.g.in_width;
  const auto* row = d.in + rows.begin * pitch + columns.begin * step + channel;
  int32x4_t sums[kPixels];
  int32x4_t weight_sum = vdupq_n_s32(0);
  NNLIB_UNROLL
  for (int32x4_t& sum : sums) {
    sum = block.bias;
  }
  for (uint32_t ky = 0; ky < rows.count; ++ky, row += pitch) {
    const int16_t(*weights)[4] = block.weights + (rows.tap + ky) * d.g.kernel_width + columns.tap;
    const auto* at = row;
    for (uint32_t left = columns.count; left > 0; --left, ++weights, at += step) {
      const int32x4_t weight = vldrhq_s32(*weights);
      weight_sum = vaddq_s32(weight_sum, weight);
      const auto* pixel = at;
      NNLIB_UNROLL
      for (uint32_t p = 0; p < kPixels; ++p, pixel += next) {
        sums[p] = vaddq_s32(sums[p], vmulq_s32(load_lanes(pixel), weight));
      }
    }
  }
  const int32x4_t less = vmulq_n_s32(weight_sum, block.zeropoint);
  NNLIB_UNROLL
  for (uint32_t p = 0; p < kPixels; ++p, out += step) {
    const int32x4_t values = block.to_output.template finish<Activation>(vsubq_s32(sums[p], less));
    vstrbq_s32(reinterpret_cast<int8_t*>(out), values);
  }
}

template <class Activation>
void depthwise_row(const Depthwise<Activation>& d, const Window& rows, uint32_t whole_begin,
                   uint32_t whole_end, uint32_t channel, Activation* out) {
  const BlockOfFour block(d, channel);
  const size_t step = d.order.channels;
  out += channel;
  for (uint32_t x = 0; x < d.g.out_width;) {
    const bool four = x >= whole_begin && x < whole_end && whole_end - whole_begin >= 4;
    if (four) {
      // The last four go back over what is done.
      const uint32_t first = std::min(x, whole_end - 4);
      depthwise_pixels<4>(d, block, rows, d.g.columns(first), channel, out + first * step);
      x = first + 4;
    } else {
      Window columns = d.g.columns(x);
      const Window visible = columns.empty() ? Window{0, 0, 0} : rows;
      columns = visible.empty() ? Window{0, 0, 0} : columns;
      depthwise_pixels<1>(d, block, visible, columns, channel, out + x * step);
      ++x;
    }
  }
}

template <class Activation>
uint32_t depthwise_blocks(const Depthwise<Activation>& d, uint32_t y, Activation* out) {
  if (d.order.taps > kMostTaps) {
    return depthwise_fours(d, y, 0, out);
  }
  Window rows = d.g.rows(y);
  rows = rows.empty() ? Window{0, 0, 0} : rows;
  // The outputs whose windows lie inside the map from left to right.
  const auto whole = [&d](uint32_t x) { return d.g.columns(x).count == d.g.kernel_width; };
  uint32_t begin = 0;
  while (begin < d.g.out_width && !whole(begin)) {
    ++begin;
  }
  uint32_t end = begin;
  while (end < d.g.out_width && whole(end)) {
    ++end;
  }
  const uint32_t channels = d.order.channels & ~3u;
  for (uint32_t channel = 0; channel < channels; channel += 4) {
    depthwise_row(d, rows, rows.empty() ? 0 : begin, rows.empty() ? 0 : end, channel, out);
  }
  return channels;
}
