// SPDX-License-Identifier: MIT
// Thumb-1 has eight registers, and signed loads only with an index.
#if defined(__thumb__) && !defined(__thumb2__)
constexpr bool kFewRegisters = true;
#define NNLIB_UNROLL_INDEXED NNLIB_UNROLL_BY_FOUR
#else
constexpr bool kFewRegisters = false;
#define NNLIB_UNROLL_INDEXED
#endif

// Makes a compiler without vectors form the value here. Left to itself it loads and multiplies more
// at once than registers hold, and reaches one pointer's elements by way of another; which is best
// where registers are few.
template <class T>
NNLIB_ALWAYS_INLINE void keep([[maybe_unused]] T& value) {
#if defined(__GNUC__) && NNLIB_VECTOR_LANES == 1
  if constexpr (!kFewRegisters) {
    __asm__("" : "+r"(value) : : "memory");
  }
#endif
}
