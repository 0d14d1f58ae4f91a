// SPDX-License-Identifier: MIT
// Outputs of four sums at a time, the same bits as those of the scalar finish.

#include "kernels/dsp/finish.hpp"

// Lanes within the range of Output.
template <class Output>
NNLIB_ALWAYS_INLINE int32x4_t saturated_lanes(int32x4_t values) {
  constexpr int32_t low = std::numeric_limits<Output>::min();
  constexpr int32_t high = std::numeric_limits<Output>::max();
  return vminq_s32(vmaxq_s32(values, vdupq_n_s32(low)), vdupq_n_s32(high));
}

// The sums of one channel, which contain its start. From 32 on every shift leaves the same.
template <class Output>
NNLIB_ALWAYS_INLINE int32x4_t finish_lanes(const RequantizedChannel& c, int32x4_t sums) {
  if (c.shift > 0) {
    sums = vmulhq_s32(vshlq_n_s32(sums, 1), vdupq_n_s32(c.multiplier));
    sums = vrshlq_n_s32(sums, -std::min(c.shift, int32_t{33}));
  } else {
    sums = vshlq_r_s32(sums, std::min(1 - c.shift, int32_t{33}));
    sums = vrmulhq_s32(sums, vdupq_n_s32(c.multiplier));
  }
  return saturated_lanes<Output>(vaddq_n_s32(sums, c.zeropoint));
}

template <class Output>
NNLIB_ALWAYS_INLINE int32x4_t finish_lanes(const ShiftedChannel& c, int32x4_t sums) {
  return saturated_lanes<Output>(vshlq_r_s32(sums, -static_cast<int32_t>(c.shift & 31)));
}

// The same for lanes of four neighbouring channels.
struct LaneChannels {
  LaneChannels(const KoQuantization& q, uint32_t channel)
      : multipliers(q.of_channels() ? vldrwq_s32(q.multiplier + channel)
                                    : vdupq_n_s32(*q.multiplier)),
        zeropoint(q.out_zeropoint) {
    const int32x4_t shifts =
        q.of_channels() ? vldrhq_s32(q.shift + channel) : vdupq_n_s32(*q.shift);
    const int32x4_t most = vdupq_n_s32(33);
    const int32x4_t one = vdupq_n_s32(1);
    is_right = vcmpgtq_n_s32(shifts, 0);
    left = vminq_s32(vmaxq_s32(vsubq_s32(one, shifts), one), most);
    minus_right = vnegq_s32(vminq_s32(vmaxq_s32(shifts, vdupq_n_s32(0)), most));
  }

  template <class Output, size_t kCount>
  NNLIB_ALWAYS_INLINE void finish(int32x4_t (&sums)[kCount]) const {
    if (is_right == 0xFFFF) {
      NNLIB_UNROLL
      for (int32x4_t& sum : sums) {
        sum = vrshlq_s32(vmulhq_s32(vshlq_n_s32(sum, 1), multipliers), minus_right);
        sum = saturated_lanes<Output>(vaddq_n_s32(sum, zeropoint));
      }
      return;
    }
    NNLIB_UNROLL
    for (int32x4_t& sum : sums) {
      sum = saturated_lanes<Output>(rescaled(sum));
    }
  }

  // By shifts of either sign.
  __attribute__((noinline)) int32x4_t rescaled(int32x4_t sum) const {
    const int32x4_t t = vshlq_s32(sum, left);
    sum = vpselq_s32(vmulhq_s32(t, multipliers), vrmulhq_s32(t, multipliers), is_right);
    return vaddq_n_s32(vrshlq_s32(sum, minus_right), zeropoint);
  }

  int32x4_t multipliers, left, minus_right;
  int32_t zeropoint;
  mve_pred16_t is_right;
};
