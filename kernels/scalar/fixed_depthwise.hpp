// SPDX-License-Identifier: MIT
// Blocks of Q7 channels without instructions of their own: four in registers.

inline uint32_t depthwise_blocks(const DepthwisePixel& pixel, q7_t* out) {
  uint32_t channel = 0;
  for (; channel + 4 <= pixel.conv.geometry.out_channels; channel += 4) {
    depthwise_channels<4>(pixel, channel, channel, out);
  }
  return channel;
}
