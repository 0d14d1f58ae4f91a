// SPDX-License-Identifier: MIT
// Floats for the unit tests: irregular, so that a sum in another order has other bits.
#ifndef TEST_UNIT_FLOAT_DATA_HPP
#define TEST_UNIT_FLOAT_DATA_HPP

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

// count numbers of (-1, 1); the storage ends with the last one, which a sanitizer watches.
inline std::vector<float> irregular_floats(size_t count, uint32_t seed) {
  std::vector<float> values(count);
  for (float& value : values) {
    seed = seed * 1664525u + 1013904223u;
    value = static_cast<float>(static_cast<int32_t>(seed) >> 7) * 0x1p-24f;
  }
  return values;
}

// sum + a * b as the kernels of a build round it that fuses such sums, or does not.
inline float plus_product(float sum, float a, float b) {
#if defined(TEST_FUSED_KERNELS) && (defined(__FP_FAST_FMAF) || defined(__ARM_FEATURE_FMA))
  return std::fma(a, b, sum);
#else
  return sum + a * b;
#endif
}

// Where a build fuses in vectors, of a row's sums some parts may fuse and some not, as compilers
// and the number of columns have it: there close ones will do.
#if defined(TEST_FUSED_KERNELS) && (defined(__aarch64__) || defined(__x86_64__))
constexpr float kTolerance = 1e-4f;
#else
constexpr float kTolerance = -1.0f;
#endif

// Bit by bit where there is no tolerance.
inline bool same_floats(const float* a, const float* b, size_t count) {
  return std::equal(a, a + count, b, [](float x, float y) {
    return std::memcmp(&x, &y, sizeof(x)) == 0 ||
           std::fabs(x - y) <= kTolerance * std::max(1.0f, std::fabs(y));
  });
}
inline bool same_floats(const std::vector<float>& a, const std::vector<float>& b) {
  return a.size() == b.size() && same_floats(a.data(), b.data(), a.size());
}

#endif
