// SPDX-License-Identifier: MIT
// Outputs of eight sums at a time, the same bits as those of the scalar finish.

#include "kernels/scalar/finish.hpp"

// The values of kCount channels as 32-bit lanes, four of them twice; count of them exist.
template <uint32_t kCount, class T>
NNLIB_ALWAYS_INLINE __m256i channel_lanes(const T* values, uint32_t count) {
  T some[kCount] = {};
  if (count < kCount) {
    std::memcpy(some, values, count * sizeof(T));
    values = some;
  }
  __m128i raw = _mm_setzero_si128();
  if constexpr (sizeof(T) * kCount == 32) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(values));
  } else {
    std::memcpy(&raw, values, sizeof(T) * kCount);
  }
  if constexpr (kCount == 4 && sizeof(T) < 4) {
    raw = sizeof(T) == 2 ? _mm_unpacklo_epi64(raw, raw) : _mm_unpacklo_epi32(raw, raw);
  }
  if constexpr (sizeof(T) == 4) {
    return _mm256_broadcastsi128_si256(raw);
  } else if constexpr (sizeof(T) == 2) {
    return _mm256_cvtepi16_epi32(raw);
  } else {
    return _mm256_cvtepu8_epi32(raw);
  }
}

struct Requantizer {
  Requantizer() = default;
  NNLIB_ALWAYS_INLINE Requantizer(__m256i multipliers, __m256i shifts, int32_t zero)
      : multiplier(multipliers), zeropoint(_mm256_set1_epi32(zero)) {
    const __m256i one = _mm256_set1_epi32(1);
    const __m256i is_right = _mm256_cmpgt_epi32(shifts, _mm256_setzero_si256());
    left = _mm256_max_epi32(one, _mm256_sub_epi32(one, shifts));
    product_rounding = _mm256_andnot_si256(is_right, _mm256_set1_epi32(INT32_MIN));
    // From 31 on every shift leaves the same.
    right =
        _mm256_min_epi32(_mm256_max_epi32(shifts, _mm256_setzero_si256()), _mm256_set1_epi32(31));
    rounding = _mm256_srli_epi32(_mm256_sllv_epi32(one, right), 1);
  }

  NNLIB_ALWAYS_INLINE __m256i operator()(__m256i acc) const {
    const __m256i t = _mm256_sllv_epi32(acc, left);
    const __m256i low_half = _mm256_set1_epi64x(0xFFFFFFFF);
    const __m256i even = _mm256_add_epi64(_mm256_mul_epi32(t, multiplier),
                                          _mm256_and_si256(product_rounding, low_half));
    const __m256i odd = _mm256_add_epi64(
        _mm256_mul_epi32(_mm256_srli_epi64(t, 32), _mm256_srli_epi64(multiplier, 32)),
        _mm256_srli_epi64(product_rounding, 32));
    const __m256i product = _mm256_blend_epi32(_mm256_srli_epi64(even, 32), odd, 0xAA);
    return _mm256_add_epi32(_mm256_srav_epi32(_mm256_add_epi32(product, rounding), right),
                            zeropoint);
  }

  __m256i left, multiplier, product_rounding, rounding, right, zeropoint;
};

// The requantization of channels from `channel` on, count of which exist.
template <uint32_t kCount>
NNLIB_ALWAYS_INLINE Requantizer requantizer(const KoQuantization& q, uint32_t channel,
                                            uint32_t count) {
  if (q.of_channels()) {
    return Requantizer(channel_lanes<kCount>(q.multiplier + channel, count),
                       channel_lanes<kCount>(q.shift + channel, count), q.out_zeropoint);
  }
  return Requantizer(_mm256_set1_epi32(*q.multiplier), _mm256_set1_epi32(*q.shift),
                     q.out_zeropoint);
}

// Saturates eight values and writes count of the first four to `out`, and of the last four to
// `next`.
template <class Activation>
NNLIB_ALWAYS_INLINE void store_quads(__m256i values, Activation* out, uint32_t count,
                                     Activation* next, uint32_t next_count) {
  const __m256i words = _mm256_packs_epi32(values, values);
  const __m256i bytes = std::is_signed_v<Activation> ? _mm256_packs_epi16(words, words)
                                                     : _mm256_packus_epi16(words, words);
  const int32_t first = _mm_cvtsi128_si32(_mm256_castsi256_si128(bytes));
  const int32_t second = _mm_cvtsi128_si32(_mm256_extracti128_si256(bytes, 1));
  if (count == 4 && next_count == 4) {
    std::memcpy(out, &first, 4);
    std::memcpy(next, &second, 4);
  } else {
    std::memcpy(out, &first, count);
    std::memcpy(next, &second, next_count);
  }
}

// Saturates eight values and another eight.
template <class Activation>
NNLIB_ALWAYS_INLINE __m128i saturate_bytes(__m256i first, __m256i second) {
  const __m256i words = _mm256_permute4x64_epi64(_mm256_packs_epi32(first, second), 0xD8);
  const __m128i low = _mm256_castsi256_si128(words);
  const __m128i high = _mm256_extracti128_si256(words, 1);
  return std::is_signed_v<Activation> ? _mm_packs_epi16(low, high) : _mm_packus_epi16(low, high);
}
