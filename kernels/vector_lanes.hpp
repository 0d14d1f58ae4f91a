// SPDX-License-Identifier: MIT
// What kernel bodies are written with: NNLIB_LANES float32 lanes. Included by vector_bodies.hpp
// into the namespace of each instance.

constexpr size_t kLanes = NNLIB_LANES;

#if NNLIB_MVE_FLOAT
#include "kernels/mve/float_lanes.hpp"
#else
using Vec = VectorOf<float, kLanes>::type;

// (A copy of bytes would take a single float through an integer's register.)
NNLIB_ALWAYS_INLINE Vec load(const float* from) {
#if NNLIB_LANES == 1
  return *from;
#else
  Vec v;
  std::memcpy(&v, from, sizeof(v));
  return v;
#endif
}
NNLIB_ALWAYS_INLINE void store(float* to, Vec v) {
#if NNLIB_LANES == 1
  *to = v;
#else
  std::memcpy(to, &v, sizeof(v));
#endif
}

// The first count lanes, at most kLanes; the others are 0 and are not stored.
NNLIB_ALWAYS_INLINE Vec load_part(const float* from, size_t count) {
  float lanes[kLanes] = {};
  NNLIB_UNROLL
  for (size_t i = 0; i < kLanes; ++i) {
    lanes[i] = i < count ? from[i] : 0.0f;
  }
  return load(lanes);
}
NNLIB_ALWAYS_INLINE void store_part(float* to, Vec v, size_t count) {
  float lanes[kLanes];
  store(lanes, v);
  NNLIB_UNROLL
  for (size_t i = 0; i < kLanes; ++i) {
    if (i < count) {
      to[i] = lanes[i];
    }
  }
}

// x in every lane. Subtracting zero keeps -0, adding it would not.
NNLIB_ALWAYS_INLINE Vec splat(float x) {
  return x - Vec{};
}

// Rounded once where the build lets the compiler fuse.
NNLIB_ALWAYS_INLINE Vec multiply_add(Vec sum, Vec x, Vec y) {
  return sum + x * y;
}

// Vectors of columns side by side: no other are loaded at once.
struct ColumnLanes {
  ColumnLanes(size_t /*pitch*/, size_t /*lanes*/) {}
  NNLIB_ALWAYS_INLINE Vec at(const float* first) const { return load(first); }
};
constexpr bool kGathers = false;

#if NNLIB_LANES > 1

// Picks lanes i0 .. i3 of every group of four of a and b, those of b counted from kLanes on.
#if NNLIB_LANES == 8
#define NNLIB_SHUFFLE(a, b, i0, i1, i2, i3) \
  __builtin_shufflevector(a, b, i0, i1, i2, i3, (i0) + 4, (i1) + 4, (i2) + 4, (i3) + 4)
#else
#define NNLIB_SHUFFLE(a, b, i0, i1, i2, i3) __builtin_shufflevector(a, b, i0, i1, i2, i3)
#endif

// The four numbers at row `row`; with 8 lanes those of row `row + 4` behind them.
NNLIB_ALWAYS_INLINE Vec load_quads(const float* rows, size_t pitch, size_t row) {
#if NNLIB_LANES == 8
  // From memory this takes no shuffle, which GCC does not find by itself.
  const Vec low = _mm256_castps128_ps256(_mm_loadu_ps(rows + row * pitch));
  return _mm256_insertf128_ps(low, _mm_loadu_ps(rows + (row + 4) * pitch), 1);
#else
  return load(rows + row * pitch);
#endif
}

// Four numbers, with 8 lanes twice.
NNLIB_ALWAYS_INLINE Vec splat_quad(const float* from) {
#if NNLIB_LANES == 8
  return _mm256_broadcast_ps(reinterpret_cast<const __m128*>(from));
#else
  return load(from);
#endif
}

// Turns what load_quads gave for rows 0 to 3 into columns: lane i of columns[k] is number k of row
// i.
NNLIB_ALWAYS_INLINE void transpose_quads(Vec (&q)[4]) {
  const Vec low01 = NNLIB_SHUFFLE(q[0], q[1], 0, kLanes, 1, kLanes + 1);
  const Vec low23 = NNLIB_SHUFFLE(q[2], q[3], 0, kLanes, 1, kLanes + 1);
  const Vec high01 = NNLIB_SHUFFLE(q[0], q[1], 2, kLanes + 2, 3, kLanes + 3);
  const Vec high23 = NNLIB_SHUFFLE(q[2], q[3], 2, kLanes + 2, 3, kLanes + 3);
  q[0] = NNLIB_SHUFFLE(low01, low23, 0, 1, kLanes, kLanes + 1);
  q[1] = NNLIB_SHUFFLE(low01, low23, 2, 3, kLanes + 2, kLanes + 3);
  q[2] = NNLIB_SHUFFLE(high01, high23, 0, 1, kLanes, kLanes + 1);
  q[3] = NNLIB_SHUFFLE(high01, high23, 2, 3, kLanes + 2, kLanes + 3);
}

#undef NNLIB_SHUFFLE

#endif
#endif
