// SPDX-License-Identifier: MIT
// Blocks of four Q7 channels in lanes of 32 bits.

inline void depthwise_block(const DepthwisePixel& pixel, uint32_t channel, mve_pred16_t lanes,
                            q7_t* out) {
  const FixedConv<q7_t>& conv = pixel.conv;
  const size_t step = conv.geometry.in_channels;
  int32x4_t sums = vdupq_n_s32(0);
  if (conv.bias != nullptr) {
    sums = vshlq_r_s32(vldrbq_z_s32(conv.bias + channel, lanes),
                       static_cast<int32_t>(conv.shifts.bias & 31));
  }
  const uint32_t half = fixed_start<q7_t>(nullptr, 0, conv.shifts);
  sums = vaddq_n_s32(sums, static_cast<int32_t>(half));
  const q7_t* in = pixel.input(0, 0) + channel;
  const q7_t* weights = pixel.weights(0, 0) + channel;
  const size_t pitch = conv.geometry.in_width * step;
  const size_t weight_pitch = conv.geometry.kernel_width * step;
  for (uint32_t m = pixel.rows.count; m > 0; --m, in += pitch, weights += weight_pitch) {
    const q7_t* at = in;
    const q7_t* weight = weights;
    for (uint32_t left = pixel.columns.count; left > 0; --left, at += step, weight += step) {
      sums = vaddq_s32(sums, vmulq_s32(vldrbq_z_s32(at, lanes), vldrbq_z_s32(weight, lanes)));
    }
  }
  vstrbq_p_s32(out + channel, finish_lanes<q7_t>(ShiftedChannel{0, conv.shifts.out}, sums), lanes);
}

inline uint32_t depthwise_blocks(const DepthwisePixel& pixel, q7_t* out) {
  const uint32_t channels = pixel.conv.geometry.out_channels;
  for (uint32_t channel = 0; channel < channels; channel += 4) {
    depthwise_block(pixel, channel, vctp32q(channels - channel), out);
  }
  return channels;
}
