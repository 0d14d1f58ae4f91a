// SPDX-License-Identifier: MIT
#include "bench/peaks.hpp"

#include "kernels/vector.hpp"

// Makes the compiler take a value in a register for a new one.
#if defined(__x86_64__) || defined(__i386__)
#define BENCH_RENEW(value) __asm__ volatile("" : "+x"(value))
#elif defined(__aarch64__)
#define BENCH_RENEW(value) __asm__ volatile("" : "+w"(value))
#else
#define BENCH_RENEW(value) __asm__ volatile("" : "+m"(value))
#endif

#define NNLIB_VECTOR_BODY "bench/peaks_body.hpp"
#include "kernels/vector_bodies.hpp"

namespace bench {

uint64_t multiply_add_chains(uint64_t rounds) {
  return NNLIB_VECTOR(multiply_add_chains)(rounds);
}

uint64_t multiply_add_pairs(uint64_t rounds) {
  return NNLIB_VECTOR(multiply_add_pairs)(rounds);
}

uint64_t multiply_add_chain(uint64_t rounds) {
  float acc = 0.0f, x = 1.0f, factor = 1.0f;
  BENCH_RENEW(factor);
  for (uint64_t round = 0; round < rounds; ++round) {
    BENCH_RENEW(x);
    acc += x * factor;
  }
  BENCH_RENEW(acc);
  return 2 * rounds;
}

void read_floats(const float* data, size_t count) {
  NNLIB_VECTOR(read_floats)(data, count);
}

}  // namespace bench
