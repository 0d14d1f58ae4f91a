// SPDX-License-Identifier: MIT
// Depthwise convolution on weights adapted to 16-bit lanes.
#ifndef NNLIB_KERNELS_INTEGER_DEPTHWISE_HPP
#define NNLIB_KERNELS_INTEGER_DEPTHWISE_HPP

#include "kernels/conv_geometry.hpp"
#include "kernels/ko_types.hpp"

namespace nnlib {

// The order of adapted weights in memory, with any byte order: channels in blocks of four, within a
// block the taps in pairs, of each pair the two values of channel 0, those of channel 1, 2 and 3.
// An odd last tap is four values. Of the 0 to 3 remaining channels, all taps of one follow those of
// the other.
struct AdaptedWeights {
  uint32_t channels;
  uint32_t taps;

  // 16-bit values in front of them in the scratch.
  constexpr size_t start() const { return (size_t{channels} * taps + 1) / 2; }
  constexpr size_t index(uint32_t channel, uint32_t tap) const {
    if (channel >= (channels & ~3u)) {
      return size_t{channel} * taps + tap;
    }
    const size_t block = size_t{channel & ~3u} * taps;
    const uint32_t lane = channel & 3;
    return block +
           (tap < (taps & ~1u) ? (tap / 2) * 8 + lane * 2 + (tap & 1) : (taps - 1) * 4 + lane);
  }

  // Calls visit(index) for the taps of a channel, one after the other.
  template <class Visit>
  constexpr void for_taps(uint32_t channel, Visit visit) const {
    const uint32_t to_next_pair = channel < (channels & ~3u) ? 7 : 1;
    size_t at = index(channel, 0);
    for (uint32_t tap = 0; tap < taps; ++tap) {
      if (tap % 2 == 0 && tap + 1 == taps) {
        at = index(channel, tap);
      }
      visit(at);
      at += tap % 2 == 0 ? 1 : to_next_pair;
    }
  }
};

// The outputs of a whole map; scratch as ko_<types>_DW_HWC_Wadapt leaves it.
template <class Activation>
void convolve_adapted(const ConvGeometry& geometry, const Activation* in, const int32_t* bias,
                      const KoQuantization& quantization, int16_t* scratch, Activation* out);

}  // namespace nnlib

#endif
