// SPDX-License-Identifier: MIT
#include "kernels/arm_convert.h"

#include <algorithm>
#include <cmath>

#include "kernels/saturate.hpp"

namespace {

float away_from_zero(float value) {
  return value + std::copysign(0.5f, value);
}

bool fits_32_bits(float value) {
  return value >= -2147483648.0f && value < 2147483648.0f;
}

q7_t float_to_q7(float value) {
  const float rounded = away_from_zero(value * 128.0f);
  return fits_32_bits(rounded)
             ? nnlib::saturate<q7_t>(int32_t{static_cast<int16_t>(static_cast<int32_t>(rounded))})
             : nnlib::saturate<q7_t>(rounded);
}

q15_t float_to_q15(float value) {
  return nnlib::saturate<q15_t>(away_from_zero(value * 32768.0f));
}

}  // namespace

void arm_q7_to_q15(const q7_t* pSrc, q15_t* pDst, uint32_t blockSize) {
  std::transform(pSrc, pSrc + blockSize, pDst,
                 [](q7_t element) { return static_cast<q15_t>(element * 256); });
}

void arm_q15_to_q7(const q15_t* pSrc, q7_t* pDst, uint32_t blockSize) {
  std::transform(pSrc, pSrc + blockSize, pDst,
                 [](q15_t element) { return static_cast<q7_t>(element >> 8); });
}

void arm_q7_to_float(const q7_t* pSrc, float32_t* pDst, uint32_t blockSize) {
  std::transform(pSrc, pSrc + blockSize, pDst,
                 [](q7_t element) { return static_cast<float>(element) * 0x1p-7f; });
}

void arm_q15_to_float(const q15_t* pSrc, float32_t* pDst, uint32_t blockSize) {
  std::transform(pSrc, pSrc + blockSize, pDst,
                 [](q15_t element) { return static_cast<float>(element) * 0x1p-15f; });
}

void arm_float_to_q7(const float32_t* pSrc, q7_t* pDst, uint32_t blockSize) {
  std::transform(pSrc, pSrc + blockSize, pDst, float_to_q7);
}

void arm_float_to_q15(const float32_t* pSrc, q15_t* pDst, uint32_t blockSize) {
  std::transform(pSrc, pSrc + blockSize, pDst, float_to_q15);
}
