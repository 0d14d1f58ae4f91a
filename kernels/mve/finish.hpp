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
