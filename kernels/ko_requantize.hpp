// SPDX-License-Identifier: MIT
// The arithmetic that ko_requantize.h states.
#ifndef NNLIB_KERNELS_KO_REQUANTIZE_HPP
#define NNLIB_KERNELS_KO_REQUANTIZE_HPP

#include <algorithm>
#include <cstdint>

#include "kernels/ko_types.hpp"
#include "kernels/saturate.hpp"
#include "kernels/vector.hpp"

namespace nnlib {

NNLIB_INLINE_FOR_SPEED int32_t requantize(int32_t acc, int32_t multiplier, int32_t shift,
                                          int32_t zeropoint) {
  const auto times = [multiplier](uint32_t factor) {
    return int64_t{static_cast<int32_t>(factor)} * multiplier;
  };
  if (shift > 0) {
    // The high half plus 2^(shift - 1), shifted, without 64-bit arithmetic; from 32 on every shift
    // leaves nothing.
    const int32_t high = static_cast<int32_t>(times(static_cast<uint32_t>(acc) << 1) >> 32);
    return (((high >> std::min(shift - 1, int32_t{31})) + 1) >> 1) + zeropoint;
  }
  const uint32_t shifted = shift > -31 ? static_cast<uint32_t>(acc) << (1 - shift) : 0;
  return static_cast<int32_t>((times(shifted) + (INT64_C(1) << 31)) >> 32) + zeropoint;
}

// The output of an output channel.
template <class Activation>
Activation requantize(const KoQuantization& q, uint32_t channel, int32_t acc) {
  const uint32_t entry = q.entry(channel);
  return saturate<Activation>(
      requantize(acc, q.multiplier[entry], q.shift[entry], q.out_zeropoint));
}

}  // namespace nnlib

#endif
