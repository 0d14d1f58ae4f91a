// SPDX-License-Identifier: MIT
// Body of peaks.cpp, once for each number of lanes.

inline uint64_t multiply_add_chains(uint64_t rounds) {
  constexpr size_t kChains = 12;
  Vec factor = splat(1.0f);
  Vec x = factor;
  BENCH_RENEW(factor);  // not known to be 1
  Vec acc[kChains] = {};
  for (uint64_t round = 0; round < rounds; ++round) {
    NNLIB_UNROLL
    for (size_t i = 0; i < kChains; ++i) {
      BENCH_RENEW(x);
      acc[i] += x * factor;
    }
  }
  NNLIB_UNROLL
  for (size_t i = 0; i < kChains; ++i) {
    BENCH_RENEW(acc[i]);
  }
  return rounds * kChains * kLanes * 2;
}

#if NNLIB_VECTOR_WIDE

#if NNLIB_LANES == 8
using Pairs = __m256i;
NNLIB_ALWAYS_INLINE Pairs add_pairs(Pairs acc, Pairs a, Pairs b) {
  return _mm256_add_epi32(acc, _mm256_madd_epi16(a, b));
}
#else
using Pairs = __m128i;
NNLIB_ALWAYS_INLINE Pairs add_pairs(Pairs acc, Pairs a, Pairs b) {
  return _mm_add_epi32(acc, _mm_madd_epi16(a, b));
}
#endif

inline uint64_t multiply_add_pairs(uint64_t rounds) {
  constexpr size_t kChains = 12;
  Pairs x = {}, factor = {};
  BENCH_RENEW(factor);
  Pairs acc[kChains] = {};
  for (uint64_t round = 0; round < rounds; ++round) {
    NNLIB_UNROLL
    for (size_t i = 0; i < kChains; ++i) {
      BENCH_RENEW(x);
      acc[i] = add_pairs(acc[i], x, factor);
    }
  }
  NNLIB_UNROLL
  for (size_t i = 0; i < kChains; ++i) {
    BENCH_RENEW(acc[i]);
  }
  return rounds * kChains * kLanes * 4;
}

#else

inline uint64_t multiply_add_pairs(uint64_t /*rounds*/) {
  return 0;
}

#endif

inline void read_floats(const float* data, size_t count) {
  constexpr size_t kVectors = 8;
  for (size_t i = 0; i + kVectors * kLanes <= count; i += kVectors * kLanes) {
    NNLIB_UNROLL
    for (size_t v = 0; v < kVectors; ++v) {
      Vec read = load(data + i + v * kLanes);
      BENCH_RENEW(read);
    }
  }
}
