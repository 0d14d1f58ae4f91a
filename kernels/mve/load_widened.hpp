// SPDX-License-Identifier: MIT
// Some of eight elements as lanes of 16 bits, zeros in the others.
template <class T>
NNLIB_ALWAYS_INLINE int16x8_t load_widened(const T* from, mve_pred16_t lanes) {
  if constexpr (sizeof(T) == 2) {
    return vldrhq_z_s16(from, lanes);
  } else if constexpr (std::is_signed_v<T>) {
    return vldrbq_z_s16(from, lanes);
  } else {
    return vreinterpretq_s16_u16(vldrbq_z_u16(from, lanes));
  }
}

// kAll: all eight elements, whatever the lanes say.
template <bool kAll, class T>
NNLIB_ALWAYS_INLINE int16x8_t load_eight(const T* from, mve_pred16_t lanes) {
  if constexpr (!kAll) {
    return load_widened(from, lanes);
  } else if constexpr (sizeof(T) == 2) {
    return vldrhq_s16(from);
  } else if constexpr (std::is_signed_v<T>) {
    return vldrbq_s16(from);
  } else {
    return vreinterpretq_s16_u16(vldrbq_u16(from));
  }
}
