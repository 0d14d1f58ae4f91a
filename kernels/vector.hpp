// SPDX-License-Identifier: MIT
// Kernels written once over a number of lanes, and the choice between their instances.
//
// A kernel's body is a header of its own that kernels/vector_bodies.hpp includes once for each
// instance, into a namespace where kLanes and the types and functions of vector_lanes.hpp are
// defined:
//
//   float_x.cpp:        #include ... everything that the body needs
//                       #define NNLIB_VECTOR_BODY "kernels/float_x_body.hpp"
//                       #include "kernels/vector_bodies.hpp"
//                       void x_f32(float* out) { NNLIB_VECTOR(x)(out); }
//   float_x_body.hpp:   void x(float* out) { ... Vec ... }      (no include guard; includes nothing
//                       but other bodies)
//
// What a body calls and is not inlined belongs into a body too: a call from the wide instance into
// code compiled without AVX2 costs hundreds of cycles.
//
// With NNLIB_FUSED_MULTIPLY_ADD the build lets the compiler fuse product and sum in the float
// kernels; the wide instances then need a processor with such instructions, and the narrow ones
// take the float vectors of MVE, which gather what they read in place (mve/float_lanes.hpp).
//
// narrow:: is what the target has anyway: 4 lanes of float32, or 1 where there is no vector unit
// with IEEE arithmetic. wide:: is compiled for AVX2 (without fused multiply-add), 8 lanes, and runs
// where the processor has it. A kernel keeps each output's sum sequential in either, so that all
// instances give the same bits (of a NaN, neither sign nor payload).
#ifndef NNLIB_KERNELS_VECTOR_HPP
#define NNLIB_KERNELS_VECTOR_HPP

#include <cstddef>
#include <cstdint>
#include <cstring>

#if !defined(NNLIB_FUSED_MULTIPLY_ADD)
#define NNLIB_FUSED_MULTIPLY_ADD 0
#endif

// Float vectors of Arm's M profile flush denormals: not for sums that round after each product.
#if NNLIB_FUSED_MULTIPLY_ADD && defined(__ARM_FEATURE_MVE) && !defined(NNLIB_VECTOR_LANES)
#define NNLIB_MVE_FLOAT ((__ARM_FEATURE_MVE & 2) != 0)
#else
#define NNLIB_MVE_FLOAT 0
#endif

#if NNLIB_MVE_FLOAT
#include <arm_mve.h>
#endif

// A build may set NNLIB_VECTOR_LANES to 1: no vectors at all.
#if !defined(NNLIB_VECTOR_LANES)
#if NNLIB_MVE_FLOAT || \
    (defined(__GNUC__) && (defined(__SSE2__) || defined(__aarch64__) || defined(__VSX__)))
#define NNLIB_VECTOR_LANES 4
#else
#define NNLIB_VECTOR_LANES 1
#endif
#endif

#if NNLIB_VECTOR_LANES == 4 && (defined(__x86_64__) || defined(__i386__))
#define NNLIB_VECTOR_WIDE 1
#else
#define NNLIB_VECTOR_WIDE 0
#endif

#if NNLIB_VECTOR_WIDE
#include <immintrin.h>
#endif

// NNLIB_INDEPENDENT: no iteration of the loop depends on what another stores.
#if defined(__clang__)
#define NNLIB_UNROLL _Pragma("clang loop unroll(full)")
#define NNLIB_INDEPENDENT _Pragma("clang loop vectorize(assume_safety)")
#define NNLIB_ALWAYS_INLINE inline __attribute__((always_inline))
#elif defined(__GNUC__)
#define NNLIB_UNROLL _Pragma("GCC unroll 16")  // at -O2 nothing else keeps a block in registers
#define NNLIB_INDEPENDENT _Pragma("GCC ivdep")
#define NNLIB_ALWAYS_INLINE inline __attribute__((always_inline))
#else
#define NNLIB_UNROLL
#define NNLIB_INDEPENDENT
#define NNLIB_ALWAYS_INLINE inline
#endif

// For bodies; Clang takes no noinline beside the target of the wide instances.
#if defined(__GNUC__) && !defined(__clang__)
#define NNLIB_NOINLINE __attribute__((noinline))
#else
#define NNLIB_NOINLINE
#endif

// What is worth its size only where speed is asked for.
#if defined(__OPTIMIZE_SIZE__)
#define NNLIB_FOR_SPEED 0
#define NNLIB_INLINE_FOR_SPEED inline
#define NNLIB_CALL_FOR_SIZE NNLIB_NOINLINE inline
#define NNLIB_UNROLL_FOR_SPEED
#else
#define NNLIB_FOR_SPEED 1
#define NNLIB_INLINE_FOR_SPEED NNLIB_ALWAYS_INLINE
#define NNLIB_CALL_FOR_SIZE NNLIB_ALWAYS_INLINE
#define NNLIB_UNROLL_FOR_SPEED NNLIB_UNROLL
#endif

// Of loops that become vectors where there are any.
#if defined(__GNUC__) && !defined(__clang__) && NNLIB_VECTOR_LANES == 1
#define NNLIB_UNROLL_BY_FOUR _Pragma("GCC unroll 4")
#else
#define NNLIB_UNROLL_BY_FOUR
#endif

namespace nnlib {

// Count elements of T as one value, for the operators of the language; T itself for one element.
template <class T, int Count>
struct VectorOf {
  typedef T type __attribute__((vector_size(sizeof(T) * Count)));
};
template <class T>
struct VectorOf<T, 1> {
  typedef T type;
};

// Whether the wide instances run. Set at start-up by what the processor has; before that, the
// narrow ones run.
bool vector_wide();

// For tests: lets the wide instances run (where the processor has them) or not.
void vector_allow_wide(bool allow);

// Lanes of the wide instance.
inline constexpr size_t kWideLanes = 8;

// The instance of a kernel to call; NNLIB_VECTOR_IF is the narrow one when wide vectors do not suit
// the sizes at hand.
#if NNLIB_VECTOR_WIDE
#define NNLIB_VECTOR_IF(suits, kernel) \
  ((suits) && ::nnlib::vector_wide() ? ::nnlib::wide::kernel : ::nnlib::narrow::kernel)
#else
#define NNLIB_VECTOR_IF(suits, kernel) ((suits) ? ::nnlib::narrow::kernel : ::nnlib::narrow::kernel)
#endif
#define NNLIB_VECTOR(kernel) NNLIB_VECTOR_IF(true, kernel)

}  // namespace nnlib

#endif
