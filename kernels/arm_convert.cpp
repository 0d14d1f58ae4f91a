// SPDX-License-Identifier: MIT
#include "kernels/arm_convert.h"

#include <bit>

#include "kernels/map_elements.hpp"
#include "kernels/round_quantized.hpp"

namespace {

using nnlib::plus_half_away;

// -2^31 up to what is below 2^31.
bool fits_32_bits(float value) {
  const auto bits = std::bit_cast<uint32_t>(value);
  return bits << 1 < std::bit_cast<uint32_t>(0x1p31f) << 1 ||
         bits == std::bit_cast<uint32_t>(-0x1p31f);
}

q7_t float_to_q7(float value) {
  const float rounded = plus_half_away(value * 128.0f);
  return fits_32_bits(rounded)
             ? nnlib::saturate<q7_t>(int32_t{static_cast<int16_t>(static_cast<int32_t>(rounded))})
             : nnlib::saturate<q7_t>(rounded);
}

q15_t float_to_q15(float value) {
  return nnlib::saturate<q15_t>(plus_half_away(value * 32768.0f));
}

}  // namespace

void arm_q7_to_q15(const q7_t* pSrc, q15_t* pDst, uint32_t blockSize) {
  nnlib::map_elements(pSrc, pDst, blockSize,
                      [](q7_t element) { return static_cast<q15_t>(element * 256); });
}

void arm_q15_to_q7(const q15_t* pSrc, q7_t* pDst, uint32_t blockSize) {
  nnlib::map_elements(pSrc, pDst, blockSize,
                      [](q15_t element) { return static_cast<q7_t>(element >> 8); });
}

void arm_q7_to_float(const q7_t* pSrc, float32_t* pDst, uint32_t blockSize) {
  nnlib::map_elements(pSrc, pDst, blockSize,
                      [](q7_t element) { return static_cast<float>(element) * 0x1p-7f; });
}

void arm_q15_to_float(const q15_t* pSrc, float32_t* pDst, uint32_t blockSize) {
  nnlib::map_elements(pSrc, pDst, blockSize,
                      [](q15_t element) { return static_cast<float>(element) * 0x1p-15f; });
}

void arm_float_to_q7(const float32_t* pSrc, q7_t* pDst, uint32_t blockSize) {
  nnlib::map_elements(pSrc, pDst, blockSize, float_to_q7);
}

void arm_float_to_q15(const float32_t* pSrc, q15_t* pDst, uint32_t blockSize) {
  nnlib::map_elements(pSrc, pDst, blockSize, float_to_q15);
}
