// SPDX-License-Identifier: MIT
// exp, sigmoid and tanh of arrays, in vectors of doubles where the target has them: the same bits
// as the scalar functions (Ops), at a fraction of the time.
#ifndef NNLIB_KERNELS_EXACT_ARRAYS_HPP
#define NNLIB_KERNELS_EXACT_ARRAYS_HPP

#include <cstddef>

#include "kernels/vector.hpp"

namespace nnlib {

// Whether the target has them: they take the first half of a double in memory for its lower one.
#if NNLIB_VECTOR_LANES == 4 && defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
#define NNLIB_EXACT_ARRAYS 1
#else
#define NNLIB_EXACT_ARRAYS 0
#endif
inline constexpr bool kHasExactArrays = NNLIB_EXACT_ARRAYS != 0;

// out[i] = f(in[i]) for i < count; out is in, or overlaps it nowhere.
void exp_f32(float* out, const float* in, size_t count);
void sigmoid_f32(float* out, const float* in, size_t count);
void tanh_f32(float* out, const float* in, size_t count);

}  // namespace nnlib

#endif
