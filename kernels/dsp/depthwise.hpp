// SPDX-License-Identifier: MIT
#include "kernels/dsp/depthwise_fours.hpp"

template <class Activation>
uint32_t depthwise_blocks(const Depthwise<Activation>& d, Activation* out) {
  for_rows(d, out, [&](uint32_t y, Activation* row) { depthwise_fours<true>(d, y, 0, row); });
  return d.order.channels & ~3u;
}
