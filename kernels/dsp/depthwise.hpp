// SPDX-License-Identifier: MIT
#include "kernels/dsp/depthwise_fours.hpp"

template <class Activation>
uint32_t depthwise_blocks(const Depthwise<Activation>& d, uint32_t y, Activation* out) {
  return depthwise_fours<true>(d, y, 0, out);
}
