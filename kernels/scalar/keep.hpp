// SPDX-License-Identifier: MIT
// Makes a compiler without vectors form the value here. Left to itself it loads and multiplies more
// at once than registers hold, and reaches one pointer's elements by way of another.
template <class T>
NNLIB_ALWAYS_INLINE void keep([[maybe_unused]] T& value) {
#if defined(__GNUC__) && NNLIB_VECTOR_LANES == 1
  __asm__("" : "+r"(value) : : "memory");
#endif
}
