// SPDX-License-Identifier: MIT
// Four float32 lanes of MVE, in builds that fuse product and sum: what vector_lanes.hpp has for
// other vectors.

using Vec = float32x4_t;

NNLIB_ALWAYS_INLINE Vec load(const float* from) {
  return vld1q_f32(from);
}
NNLIB_ALWAYS_INLINE void store(float* to, Vec v) {
  vst1q_f32(to, v);
}

// The first count lanes, at most kLanes; the others are 0 and are not stored.
NNLIB_ALWAYS_INLINE Vec load_part(const float* from, size_t count) {
  return vldrwq_z_f32(from, vctp32q(count));
}
NNLIB_ALWAYS_INLINE void store_part(float* to, Vec v, size_t count) {
  vstrwq_p_f32(to, v, vctp32q(count));
}

// Factors of whole vectors stay in registers of the core.
NNLIB_ALWAYS_INLINE float splat(float x) {
  return x;
}
NNLIB_ALWAYS_INLINE Vec multiply_add(Vec sum, float x, Vec y) {
  return vfmaq_n_f32(sum, y, x);
}
NNLIB_ALWAYS_INLINE Vec multiply_add(Vec sum, Vec x, Vec y) {
  return vfmaq_f32(sum, x, y);
}

// Vectors are gathered from columns where they lie, at a pitch.
constexpr bool kGathers = true;
class ColumnLanes {
 public:
  // Lanes from `lanes` on repeat the first one.
  ColumnLanes(size_t pitch, size_t lanes)
      : offsets_(
            vmulq_n_u32(vpselq_u32(vidupq_n_u32(0, 1), vdupq_n_u32(0), vctp32q(lanes)), pitch)) {}
  NNLIB_ALWAYS_INLINE Vec at(const float* first) const {
    return vldrwq_gather_shifted_offset_f32(first, offsets_);
  }

 private:
  uint32x4_t offsets_;
};
