// SPDX-License-Identifier: MIT
// Blocks of Q7 channels without instructions of their own: four in registers.

inline uint32_t depthwise_blocks(const FixedConv<q7_t>& conv) {
  const uint32_t channels = conv.geometry.out_channels & ~3u;
  for_pixels(conv, [channels](const DepthwisePixel& pixel, q7_t* out) {
    for (uint32_t channel = 0; channel < channels; channel += 4) {
      depthwise_channels<4>(pixel, channel, channel, out);
    }
  });
  return channels;
}
