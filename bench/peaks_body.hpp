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
