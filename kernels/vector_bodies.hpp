// SPDX-License-Identifier: MIT
// Includes the kernel body NNLIB_VECTOR_BODY once for each instance; see vector.hpp. Headers that
// the body needs come before: nothing but the body may be compiled for a wider instruction set.
#include "kernels/instruction_set.hpp"
#include "kernels/vector.hpp"

// Sources of one program may differ in their vectors.
#if NNLIB_MVE_FLOAT
namespace nnlib::narrow::inline fused {
#else
namespace nnlib::narrow {
#endif
#define NNLIB_LANES NNLIB_VECTOR_LANES
#define NNLIB_SET NNLIB_NARROW_SET
#include "kernels/vector_lanes.hpp"
#include NNLIB_VECTOR_BODY
#undef NNLIB_SET
#undef NNLIB_LANES
}

#if NNLIB_VECTOR_WIDE
#if defined(__clang__) && NNLIB_FUSED_MULTIPLY_ADD
#pragma clang attribute push(__attribute__((target("avx2,fma"))), apply_to = function)
#elif defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#elif NNLIB_FUSED_MULTIPLY_ADD
#pragma GCC push_options
#pragma GCC target("avx2,fma")
#else
#pragma GCC push_options
#pragma GCC target("avx2")
#endif

namespace nnlib::wide {
#define NNLIB_LANES 8
#define NNLIB_SET avx2
#include "kernels/vector_lanes.hpp"
#include NNLIB_VECTOR_BODY
#undef NNLIB_SET
#undef NNLIB_LANES
}  // namespace nnlib::wide

#if defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif
#endif

#undef NNLIB_VECTOR_BODY
