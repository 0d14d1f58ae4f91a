// SPDX-License-Identifier: MIT
#include "kernels/mve/depthwise_lanes.hpp"

struct FixedBlock {
  // Of `count` channels from `channel` on.
  FixedBlock(const FixedConv<q7_t>& conv, uint32_t channel, uint32_t count)
      : weights(conv.weights + channel),
        lanes(conv.geometry.in_channels),
        mask(vctp16q(count)),
        shift(conv.shifts.out) {
    const auto half = static_cast<int32_t>(fixed_start<q7_t>(nullptr, 0, conv.shifts));
    start[0] = start[1] = vdupq_n_s32(half);
    if (conv.bias != nullptr) {
      const int16x8_t bias = load_widened(conv.bias + channel, mask);
      const auto left = static_cast<int32_t>(conv.shifts.bias & 31);
      start[0] = vaddq_s32(start[0], vshlq_r_s32(vmovlbq_s16(bias), left));
      start[1] = vaddq_s32(start[1], vshlq_r_s32(vmovltq_s16(bias), left));
    }
  }

  template <size_t kCount>
  NNLIB_ALWAYS_INLINE void finish(uint32_t /*parity*/, int32x4_t (&sums)[kCount]) const {
    NNLIB_UNROLL
    for (int32x4_t& sum : sums) {
      sum = vshlq_r_s32(sum, -static_cast<int32_t>(shift & 31));
    }
  }

  static constexpr int16_t zeropoint = 0;
  const q7_t* weights;
  size_t lanes;
  mve_pred16_t mask;
  uint32_t shift;
  int32x4_t start[2];
};

inline uint32_t depthwise_blocks(const FixedConv<q7_t>& conv) {
  const uint32_t channels = conv.geometry.in_channels;
  const uint32_t count = std::min(channels, uint32_t{8});
  const bool done =
      depthwise_blocks_of(conv.geometry, count, conv.in, conv.out,
                          [&](uint32_t channel) { return FixedBlock(conv, channel, count); });
  return done ? channels : 0;
}
