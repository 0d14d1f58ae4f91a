// SPDX-License-Identifier: MIT
#include "kernels/mve/depthwise_lanes.hpp"

// Of so many taps blocks have eight channels, of twice as many four. More are left to the loop over
// channels.
constexpr uint32_t kMostTapsOfEight = 25;

// Weights that one load takes: lane after lane of a tap, tap after tap.
struct LaneWeights {
  size_t lanes;
  int16_t values[kMostTapsOfEight * 8];
};

struct IntegerBlock {
  // Of `count` channels from `channel` on.
  NNLIB_NOINLINE IntegerBlock(const KoQuantization& q, const int32_t* bias, uint32_t channel,
                              uint32_t count, const LaneWeights& of)
      : weights(of.values),
        lanes(of.lanes),
        mask(vctp16q(count)),
        zeropoint(static_cast<int16_t>(q.in_zeropoint)),
        channels{{q, vidupq_n_u32(channel, 2), vctp32q((count + 1) / 2)},
                 {q, vidupq_n_u32(channel + 1, 2), vctp32q(count / 2)}},
        start{channels[0].load_biases(bias), channels[1].load_biases(bias)} {}

  template <size_t kCount>
  NNLIB_ALWAYS_INLINE void finish(uint32_t parity, int32x4_t (&sums)[kCount]) const {
    channels[parity].rescale(sums);
  }

  const int16_t* weights;
  size_t lanes;
  mve_pred16_t mask;
  int16_t zeropoint;
  LaneChannels channels[2];
  int32x4_t start[2];
};

NNLIB_NOINLINE inline void load_weights(const AdaptedWeights& order, const int16_t* adapted,
                                        uint32_t channel, uint32_t count, LaneWeights& weights) {
  for (uint32_t lane = 0; lane < count; ++lane) {
    int16_t* to = weights.values + lane;
    order.for_taps(channel + lane, [&](size_t index) {
      *to = adapted[index];
      to += weights.lanes;
    });
  }
}

template <class Activation>
uint32_t depthwise_blocks(const Depthwise<Activation>& d, Activation* out) {
  const uint32_t channels = d.order.channels;
  if (d.order.taps > 2 * kMostTapsOfEight) {
    return 0;
  }
  LaneWeights weights;
  weights.lanes = d.order.taps <= kMostTapsOfEight ? 8 : 4;
  const uint32_t count = std::min(channels, static_cast<uint32_t>(weights.lanes));
  const bool done = depthwise_blocks_of(d.g, count, d.in, out, [&](uint32_t channel) {
    load_weights(d.order, d.weights, channel, count, weights);
    return IntegerBlock(d.quantization, d.bias, channel, count, weights);
  });
  return done ? channels : 0;
}
