// SPDX-License-Identifier: MIT
#include "kernels/scalar/depthwise_fours.hpp"

template <class Activation>
uint32_t depthwise_blocks(const Depthwise<Activation>& d, uint32_t y, Activation* out) {
  return depthwise_fours<NNLIB_FOR_SPEED>(d, y, 0, out);
}
