// SPDX-License-Identifier: MIT
// A vector of floats as two of doubles, for bodies that compute in double. Included by bodies into
// the namespace of each instance.

using Doubles = VectorOf<double, kLanes / 2>::type;
using Longs = VectorOf<uint64_t, kLanes / 2>::type;
using Words = VectorOf<uint32_t, kLanes>::type;
using Mask = VectorOf<int32_t, kLanes>::type;  // of every lane all bits or none

struct TwoDoubles {
  Doubles low, high;
};

// GCC finds no single instructions for these by itself.
#if NNLIB_LANES == 8

NNLIB_ALWAYS_INLINE TwoDoubles widened(Vec x) {
  return {_mm256_cvtps_pd(_mm256_castps256_ps128(x)), _mm256_cvtps_pd(_mm256_extractf128_ps(x, 1))};
}
NNLIB_ALWAYS_INLINE Vec narrowed(const TwoDoubles& x) {
  return _mm256_set_m128(_mm256_cvtpd_ps(x.high), _mm256_cvtpd_ps(x.low));
}
// NaN passes.
NNLIB_ALWAYS_INLINE Vec clamped(Vec x, float least, float most) {
  return _mm256_min_ps(Vec{} + most, _mm256_max_ps(Vec{} + least, x));
}
// The lower 32 bits of every double, in some order.
NNLIB_ALWAYS_INLINE Words lower_words(const TwoDoubles& x) {
  return reinterpret_cast<Words>(
      _mm256_shuffle_ps(reinterpret_cast<Vec>(x.low), reinterpret_cast<Vec>(x.high), 0x88));
}
NNLIB_ALWAYS_INLINE bool any(Mask lanes) {
  return !_mm256_testz_si256(reinterpret_cast<__m256i>(lanes), reinterpret_cast<__m256i>(lanes));
}

#else

NNLIB_ALWAYS_INLINE TwoDoubles widened(Vec x) {
#if defined(__SSE2__)
  return {_mm_cvtps_pd(x), _mm_cvtps_pd(_mm_movehl_ps(x, x))};
#else
  return {Doubles{x[0], x[1]}, Doubles{x[2], x[3]}};
#endif
}
NNLIB_ALWAYS_INLINE Vec narrowed(const TwoDoubles& x) {
#if defined(__SSE2__)
  return _mm_movelh_ps(_mm_cvtpd_ps(x.low), _mm_cvtpd_ps(x.high));
#else
  return Vec{static_cast<float>(x.low[0]), static_cast<float>(x.low[1]),
             static_cast<float>(x.high[0]), static_cast<float>(x.high[1])};
#endif
}
NNLIB_ALWAYS_INLINE Vec clamped(Vec x, float least, float most) {
  const Vec above = x < least ? Vec{} + least : x;
  return above > most ? Vec{} + most : above;
}
NNLIB_ALWAYS_INLINE Words lower_words(const TwoDoubles& x) {
  return __builtin_shufflevector(reinterpret_cast<Words>(x.low), reinterpret_cast<Words>(x.high), 0,
                                 2, 4, 6);
}
NNLIB_ALWAYS_INLINE bool any(Mask lanes) {
  const Longs halves = reinterpret_cast<Longs>(lanes);
  return (halves[0] | halves[1]) != 0;
}

#endif
