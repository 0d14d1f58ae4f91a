// SPDX-License-Identifier: MIT
#include "kernels/ko_fxp_nl.h"

#include <algorithm>

#include "kernels/arm_nntables.h"
#include "kernels/byte_functions.hpp"

namespace {

constexpr int kTableIntegerBits = 3;

}  // namespace

void ko_fxp_relu_q7(q7_t* data, uint32_t count) {
  nnlib::raise_bytes<q7_t>(data, count, 0, data);
}

void ko_fxp_relu_q15(q15_t* data, uint32_t count) {
  for (uint32_t i = 0; i < count; ++i) {
    data[i] = std::max<q15_t>(data[i], 0);
  }
}

void ko_fxp_nn_activations_direct_q7(q7_t* data, uint32_t count, uint16_t int_width,
                                     uint16_t type) {
  const q7_t* table = type != 0 ? tanhTable_q7 : sigmoidTable_q7;
  const int shift = std::max(kTableIntegerBits - int_width, 0);
  for (uint32_t i = 0; i < count; ++i) {
    data[i] = table[static_cast<uint8_t>(data[i] >> shift)];
  }
}

void ko_fxp_nn_activations_direct_q15(q15_t* data, uint32_t count, uint16_t int_width,
                                      uint16_t type) {
  const q15_t* table = type != 0 ? tanhTable_q15 : sigmoidTable_q15;
  const int shift = 11 - std::min<int>(int_width, kTableIntegerBits);
  const int32_t one = int32_t{1} << shift;
  for (uint32_t i = 0; i < count; ++i) {
    const uint16_t element = static_cast<uint16_t>(data[i]);
    const uint32_t entry = static_cast<uint32_t>(element >> shift);
    const bool at_end = entry == 127 || entry == 255;  // of the positive or the negative half
    const int32_t fraction = element & (one - 1);
    const int32_t blend =
        table[entry] * (one - fraction) + table[at_end ? entry : entry + 1] * fraction;
    data[i] = static_cast<q15_t>(blend >> shift);
  }
}
