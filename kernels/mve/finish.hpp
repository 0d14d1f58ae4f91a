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
    sums = vrshlq_n_s32(sums, -dsp::saturated_bits<6>(c.shift));
  } else {
    sums = vshlq_r_s32(sums, dsp::saturated_bits<6>(1 - c.shift));
    sums = vrmulhq_s32(sums, vdupq_n_s32(c.multiplier));
  }
  return saturated_lanes<Output>(vaddq_n_s32(sums, c.zeropoint));
}

template <class Output>
NNLIB_ALWAYS_INLINE int32x4_t finish_lanes(const ShiftedChannel& c, int32x4_t sums) {
  return saturated_lanes<Output>(vshlq_r_s32(sums, -static_cast<int32_t>(c.shift & 31)));
}

// Outputs of sums by shifts of either sign, negated and at least -33; not yet saturated.
__attribute__((noinline)) inline int32x4_t rescaled(int32x4_t sums, int32x4_t multipliers,
                                                    int32x4_t minus_shifts, int32_t zeropoint) {
  const int32x4_t left = vaddq_n_s32(vminq_s32(minus_shifts, vdupq_n_s32(32)), 1);
  const int32x4_t t = vshlq_s32(sums, vmaxq_s32(left, vdupq_n_s32(1)));
  const mve_pred16_t is_right = vcmpltq_n_s32(minus_shifts, 0);
  sums = vpselq_s32(vmulhq_s32(t, multipliers), vrmulhq_s32(t, multipliers), is_right);
  return vaddq_n_s32(vrshlq_s32(sums, vminq_s32(minus_shifts, vdupq_n_s32(0))), zeropoint);
}

// Four channels, less those whose lanes are not among `lanes`.
struct LaneChannels {
  LaneChannels(const KoQuantization& q, uint32x4_t four, mve_pred16_t of)
      : channels(four), lanes(of), zeropoint(q.out_zeropoint) {
    const uint32x4_t entries = vandq_u32(channels, vdupq_n_u32(q.channel_mask));
    multipliers = vldrwq_gather_shifted_offset_z_s32(q.multiplier, entries, lanes);
    // From 32 on every shift leaves the same.
    const int32x4_t shifts = vldrhq_gather_shifted_offset_z_s32(q.shift, entries, lanes);
    minus_shifts = vnegq_s32(vminq_s32(shifts, vdupq_n_s32(33)));
    to_the_right = (vcmpgeq_n_s32(minus_shifts, 0) & lanes) == 0;
  }

  // Zeros where there are none.
  int32x4_t load_biases(const int32_t* bias) const {
    return bias != nullptr ? vldrwq_gather_shifted_offset_z_s32(bias, channels, lanes)
                           : vdupq_n_s32(0);
  }

  // Outputs of sums, not yet saturated.
  template <size_t kCount>
  NNLIB_ALWAYS_INLINE void rescale(int32x4_t (&sums)[kCount]) const {
    if (to_the_right) {
      NNLIB_UNROLL
      for (int32x4_t& sum : sums) {
        sum = vrshlq_s32(vmulhq_s32(vshlq_n_s32(sum, 1), multipliers), minus_shifts);
        sum = vaddq_n_s32(sum, zeropoint);
      }
      return;
    }
    NNLIB_UNROLL
    for (int32x4_t& sum : sums) {
      sum = rescaled(sum, multipliers, minus_shifts, zeropoint);
    }
  }

  uint32x4_t channels;
  mve_pred16_t lanes;
  int32x4_t multipliers, minus_shifts;
  int32_t zeropoint;
  bool to_the_right;
};

// The four numbers as lanes.
NNLIB_ALWAYS_INLINE int32x4_t lanes_of(const int32_t (&values)[4]) {
  int32x4_t lanes;
  __asm__("vmov %q0[2], %q0[0], %1, %3\n\tvmov %q0[3], %q0[1], %2, %4"
          : "=&w"(lanes)
          : "r"(values[0]), "r"(values[1]), "r"(values[2]), "r"(values[3]));
  return lanes;
}

// Lanes of 16 bits from those of even and of odd channels, within the range of Output.
template <class Output>
NNLIB_ALWAYS_INLINE int16x8_t narrowed_lanes(int32x4_t even, int32x4_t odd) {
  constexpr int16_t low = std::numeric_limits<Output>::min();
  constexpr int16_t high = std::numeric_limits<Output>::max();
  const int16x8_t values = vqmovntq_s32(vqmovnbq_s32(vreinterpretq_s16_s32(even), even), odd);
  return vminq_s16(vmaxq_s16(values, vdupq_n_s16(low)), vdupq_n_s16(high));
}
