// SPDX-License-Identifier: MIT
// Sums of bytes by vectors, the last few one at a time.

template <class T>
void add_exactly(const T* a, const T* b, uint32_t count, T zeropoint, T* out) {
  const auto load = [](const T* from) {
    if constexpr (std::is_signed_v<T>) {
      return vldrbq_s16(from);
    } else {
      return vreinterpretq_s16_u16(vldrbq_u16(from));
    }
  };
  const int16x8_t low = vdupq_n_s16(std::numeric_limits<T>::min());
  const int16x8_t high = vdupq_n_s16(std::numeric_limits<T>::max());
  for (; count >= 8; count -= 8, a += 8, b += 8, out += 8) {
    const int16x8_t sums = vsubq_n_s16(vaddq_s16(load(a), load(b)), zeropoint);
    vstrbq_s16(reinterpret_cast<int8_t*>(out), vminq_s16(vmaxq_s16(sums, low), high));
  }
  for (; count > 0; --count) {
    *out++ = exact_sum(*a++, *b++, zeropoint);
  }
}

#if __ARM_FEATURE_MVE & 2
// Four terms of sums. (Vectors flush numbers below 2^-126 to zero: so far below a half, they change
// no rounded sum.)
template <class T>
NNLIB_ALWAYS_INLINE float32x4_t terms(const T* from, T zeropoint, float factor) {
  int32x4_t values;
  if constexpr (std::is_signed_v<T>) {
    values = vldrbq_s32(from);
  } else {
    values = vreinterpretq_s32_u32(vldrbq_u32(from));
  }
  return vmulq_n_f32(vcvtq_f32_s32(vsubq_n_s32(values, zeropoint)), factor);
}

// As quantized_sum has it, before saturation.
template <class T>
NNLIB_ALWAYS_INLINE int32x4_t rounded(float32x4_t sums, T zeropoint) {
  const float zero = static_cast<float>(zeropoint);
  if constexpr (std::is_signed_v<T>) {
    sums = vaddq_n_f32(sums, zero);
    const uint32x4_t sign = vandq_u32(vreinterpretq_u32_f32(sums), vdupq_n_u32(0x80000000));
    const uint32x4_t half = vorrq_u32(sign, vdupq_n_u32(std::bit_cast<uint32_t>(0.5f)));
    sums = vaddq_f32(sums, vreinterpretq_f32_u32(half));
  } else {
    sums = vaddq_n_f32(sums, zero + 0.5f);
  }
  return vcvtq_s32_f32(sums);
}

// The sums of the first `count` or fewer; how many.
template <class T>
NNLIB_ALWAYS_INLINE uint32_t add_fours(const Operand<T>& a, const Operand<T>& b, uint32_t count,
                                       T zeropoint, T* out) {
  const int32x4_t low = vdupq_n_s32(std::numeric_limits<T>::min());
  const int32x4_t high = vdupq_n_s32(std::numeric_limits<T>::max());
  const T* at_a = a.data;
  const T* at_b = b.data;
  for (uint32_t fours = count / 4; fours > 0; --fours, at_a += 4, at_b += 4, out += 4) {
    const float32x4_t sums =
        vaddq_f32(terms(at_b, b.zeropoint, b.factor), terms(at_a, a.zeropoint, a.factor));
    const int32x4_t whole = rounded(sums, zeropoint);
    vstrbq_s32(reinterpret_cast<int8_t*>(out), vminq_s32(vmaxq_s32(whole, low), high));
  }
  return count & ~3u;
}
#else
template <class T>
uint32_t add_fours(const Operand<T>&, const Operand<T>&, uint32_t, T, T*) {
  return 0;
}
#endif

template <class T>
void add_rescaled(const Operand<T>& a, const Operand<T>& b, uint32_t count, T zeropoint, T* out) {
  for (uint32_t i = add_fours(a, b, count, zeropoint, out); i < count; ++i) {
    out[i] = rescaled_sum(a, b, i, zeropoint);
  }
}
