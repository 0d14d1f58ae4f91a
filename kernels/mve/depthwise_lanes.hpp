// SPDX-License-Identifier: MIT
// Depthwise convolution of blocks of up to eight channels in lanes of 16 bits: products and sums of
// the even channels and of the odd ones are 32 bits wide, apart. Included behind finish.hpp by
// bodies that supply a Block:
//
//   weights, lanes  of the block's first channel and first tap; how far it is from tap to tap
//   start           what the sums of even and of odd channels start from
//   mask            the block's channels as lanes of 16 bits
//   zeropoint       of the inputs
//   finish          makes lanes of 32 bits, not yet saturated, of sums of even or of odd channels

#include "kernels/mve/load_widened.hpp"

// The part of a window that lies inside the map.
template <class Weight>
struct LaneTaps {
  size_t step;   // from tap to tap, in elements
  size_t pitch;  // from row to row
  uint32_t rows, columns;
  const Weight* weights;  // of the first tap inside
  size_t lanes;           // from weight to weight
  size_t weight_pitch;
};

// kPixels outputs whose windows have the same taps inside the map, the first one's from `in` on.
// kWhole: the block has eight channels.
template <uint32_t kPixels, bool kWhole, class Block, class Weight, class Activation>
NNLIB_ALWAYS_INLINE void depthwise_pixels(const Block& block, const LaneTaps<Weight>& taps,
                                          const Activation* in, size_t next, Activation* out) {
  int32x4_t even[kPixels], odd[kPixels];
  NNLIB_UNROLL
  for (uint32_t p = 0; p < kPixels; ++p) {
    even[p] = block.start[0];
    odd[p] = block.start[1];
  }
  const Weight* weight_row = taps.weights;
  for (uint32_t row = taps.rows; row > 0;
       --row, in += taps.pitch, weight_row += taps.weight_pitch) {
    const Weight* weights = weight_row;
    const Activation* at = in;
    for (uint32_t left = taps.columns; left > 0; --left, at += taps.step, weights += taps.lanes) {
      const int16x8_t w = load_eight<kWhole>(weights, block.mask);
      const Activation* pixel = at;
      NNLIB_UNROLL
      for (uint32_t p = 0; p < kPixels; ++p, pixel += next) {
        const int16x8_t value = vsubq_n_s16(load_eight<kWhole>(pixel, block.mask), block.zeropoint);
        even[p] = vaddq_s32(even[p], vmullbq_int_s16(value, w));
        odd[p] = vaddq_s32(odd[p], vmulltq_int_s16(value, w));
      }
    }
  }
  block.finish(0, even);
  block.finish(1, odd);
  NNLIB_UNROLL
  for (uint32_t p = 0; p < kPixels; ++p, out += taps.step) {
    const int16x8_t values = narrowed_lanes<Activation>(even[p], odd[p]);
    if constexpr (kWhole) {
      vstrbq_s16(reinterpret_cast<int8_t*>(out), values);
    } else {
      vstrbq_p_s16(reinterpret_cast<int8_t*>(out), values, block.mask);
    }
  }
}

// The outputs of a row whose windows lie inside the map from left to right.
struct WholeWindows {
  explicit WholeWindows(const ConvGeometry& g) : begin(0), end(g.out_width) {
    const auto whole = [&g](uint32_t x) { return g.columns(x).count == g.kernel_width; };
    while (begin < end && !whole(begin)) {
      ++begin;
    }
    while (end > begin && !whole(end - 1)) {
      --end;
    }
  }
  uint32_t begin, end;
};

// A block's outputs of a whole map; in and out begin at its first channel.
template <bool kWhole, class Block, class Activation>
NNLIB_NOINLINE void depthwise_map(const ConvGeometry& g, const WholeWindows& whole,
                                  const Block& block, const Activation* in, Activation* out) {
  const size_t step = g.in_channels;
  const size_t next = step * g.stride_x;
  const size_t lanes = block.lanes;
  for (uint32_t y = 0; y < g.out_height; ++y) {
    const Window rows = g.rows(y);
    const Activation* row = in + rows.begin * (step * g.in_width);
    const auto* weights = block.weights + rows.tap * (lanes * g.kernel_width);
    LaneTaps<std::remove_cvref_t<decltype(*weights)>> taps = {
        step, step * g.in_width, rows.count, 0, weights, lanes, lanes * g.kernel_width};
    for (uint32_t x = 0; x < g.out_width;) {
      const Window columns = g.columns(x);
      const Activation* first = row + columns.begin * step;
      taps.columns = columns.count;
      taps.weights = weights + columns.tap * lanes;
      if (x >= whole.begin && x + 2 <= whole.end) {
        for (; x + 2 <= whole.end; x += 2, out += 2 * step, first += 2 * next) {
          depthwise_pixels<2, kWhole>(block, taps, first, next, out);
        }
        continue;
      }
      depthwise_pixels<1, kWhole>(block, taps, first, next, out);
      ++x;
      out += step;
    }
  }
}

// The outputs of all channels in blocks of `count`, each as make_block(first channel) gives it. The
// last one goes back over what is done. Returns whether there are blocks: where size counts, only
// those of eight channels are worth theirs.
template <class Activation, class MakeBlock>
NNLIB_ALWAYS_INLINE bool depthwise_blocks_of(const ConvGeometry& g, uint32_t count,
                                             const Activation* in, Activation* out,
                                             const MakeBlock& make_block) {
  if (!NNLIB_FOR_SPEED && count < 8) {
    return false;
  }
  const WholeWindows whole(g);
  for (uint32_t next = 0; next < g.in_channels; next += count) {
    const uint32_t channel = std::min(next, g.in_channels - count);
    const auto block = make_block(channel);
    if (!NNLIB_FOR_SPEED || count == 8) {
      depthwise_map<true>(g, whole, block, in + channel, out + channel);
    } else {
      depthwise_map<!NNLIB_FOR_SPEED>(g, whole, block, in + channel, out + channel);
    }
  }
  return true;
}
