// SPDX-License-Identifier: MIT
// What this core can do at most, in the arithmetic of the kernels: a product rounded, then a sum.
#ifndef BENCH_PEAKS_HPP
#define BENCH_PEAKS_HPP

#include <cstddef>
#include <cstdint>

namespace bench {

// Multiply-adds in registers, 12 independent chains of vectors, with the vector instance that the
// kernels use (nnlib::vector_allow_wide). Returns the number of floating-point operations.
uint64_t multiply_add_chains(uint64_t rounds);

// The same for products of 16-bit integers, added in pairs to 32 bits; 0 where the kernels use no
// instruction for that.
uint64_t multiply_add_pairs(uint64_t rounds);

// One chain of single numbers, each sum waiting for the one before: what a naive loop does.
uint64_t multiply_add_chain(uint64_t rounds);

// Reads count floats.
void read_floats(const float* data, size_t count);

}  // namespace bench

#endif
