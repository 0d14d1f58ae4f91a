// SPDX-License-Identifier: MIT
#include "kernels/arm_shift.h"

#include <algorithm>

#include "kernels/saturate.hpp"

namespace {

template <class T>
void shift(const T* source, int count, T* destination, uint32_t elements) {
  constexpr int width = 8 * sizeof(T);
  if (count >= 0) {
    const int32_t factor = int32_t{1} << std::min(count, width);
    for (uint32_t i = 0; i < elements; ++i) {
      destination[i] = nnlib::saturate<T>(source[i] * factor);
    }
  } else {
    const int distance = std::min(-count, width - 1);
    for (uint32_t i = 0; i < elements; ++i) {
      destination[i] = static_cast<T>(source[i] >> distance);
    }
  }
}

}  // namespace

void arm_shift_q7(const q7_t* pSrc, int8_t shiftBits, q7_t* pDst, uint32_t blockSize) {
  shift(pSrc, shiftBits, pDst, blockSize);
}

void arm_shift_q15(const q15_t* pSrc, int8_t shiftBits, q15_t* pDst, uint32_t blockSize) {
  shift(pSrc, shiftBits, pDst, blockSize);
}
