// SPDX-License-Identifier: MIT
// The arithmetic that all fixed-point convolutions, matrix and dense kernels share.
#ifndef NNLIB_KERNELS_FIXED_POINT_HPP
#define NNLIB_KERNELS_FIXED_POINT_HPP

#include <cstdint>

#include "kernels/arm_types.h"
#include "kernels/saturate.hpp"

namespace nnlib {

// bias: left shift of the bias into accumulator scale, 0 to 31; out: rounding right shift of the
// accumulator into output scale, 0 to 30. More is the caller's error.
struct FixedShifts {
  uint32_t bias;
  uint32_t out;
};

// What a sum starts from: the bias, absent counting as 0, and the half that the shift rounds by
// (halves toward plus infinity). Accumulators are 32 bits and wrap, so the order of a sum is free.
template <class Bias>
uint32_t fixed_start(const Bias* bias, uint32_t channel, FixedShifts shifts) {
  const uint32_t value = bias == nullptr ? 0 : static_cast<uint32_t>(bias[channel]);
  return (value << (shifts.bias & 31)) + ((uint32_t{1} << (shifts.out & 31)) >> 1);
}

constexpr uint32_t fixed_product(q15_t a, q15_t b) {
  return static_cast<uint32_t>(int32_t{a} * b);
}

template <class Out>
Out fixed_finish(uint32_t sum, FixedShifts shifts) {
  return saturate<Out>(static_cast<int32_t>(sum) >> (shifts.out & 31));
}

}  // namespace nnlib

#endif
