// SPDX-License-Identifier: MIT
// Columns by vectors of 16 values.

template <class T>
NNLIB_ALWAYS_INLINE __m256i widen_bytes(__m128i bytes) {
  if constexpr (std::is_signed_v<T>) {
    return _mm256_cvtepi8_epi16(bytes);
  } else {
    return _mm256_cvtepu8_epi16(bytes);
  }
}

template <class T>
NNLIB_ALWAYS_INLINE __m256i load_bytes(const T* from) {
  return widen_bytes<T>(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from)));
}

NNLIB_ALWAYS_INLINE __m256i load_bytes(const int16_t* from) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}

// Loose: as many as fill whole vectors may be read and written.
template <bool kLoose = false, class T>
NNLIB_ALWAYS_INLINE void widen(const T* in, uint32_t count, int32_t subtracted, int16_t* out) {
  if constexpr (sizeof(T) == sizeof(int16_t)) {
    if (!kLoose && subtracted == 0) {
      std::memcpy(out, in, count * sizeof(T));
      return;
    }
  }
  const __m256i less = _mm256_set1_epi16(static_cast<int16_t>(subtracted));
  uint32_t i = 0;
  for (; i + (kLoose ? 1 : 16) <= count; i += 16) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i),
                        _mm256_sub_epi16(load_bytes(in + i), less));
  }
  if constexpr (!kLoose && sizeof(T) == 1) {
    // The rest in eights; the last of them goes back over what is done.
    for (; i < count && count >= 8; i += 8) {
      i = std::min(i, count - 8);
      const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(in + i));
      const __m256i words = _mm256_sub_epi16(widen_bytes<T>(bytes), less);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm256_castsi256_si128(words));
    }
  }
  for (; i < count; ++i) {
    out[i] = static_cast<int16_t>(in[i] - subtracted);
  }
}

inline int32_t column_sum(const int16_t* column, uint32_t length) {
  uint32_t sum = 0;
  uint32_t k = 0;
  __m256i sums = _mm256_setzero_si256();
  for (; k + 16 <= length; k += 16) {
    sums = _mm256_add_epi32(sums, _mm256_madd_epi16(load_bytes(column + k), _mm256_set1_epi16(1)));
  }
  uint32_t lanes[8];
  std::memcpy(lanes, &sums, sizeof(lanes));
  for (uint32_t lane : lanes) {
    sum += lane;
  }
  for (; k < length; ++k) {
    sum += static_cast<uint32_t>(static_cast<int32_t>(column[k]));
  }
  return static_cast<int32_t>(sum);
}

// One column behind the other.
class Columns {
 public:
  static constexpr uint32_t kLooseStep = 16;

  Columns(int16_t* scratch, uint32_t length, uint32_t most)
      : data_(scratch), length_(length), most_(most), pixels_(0) {}

  NNLIB_ALWAYS_INLINE void begin(uint32_t left) { pixels_ = std::min(left, most_); }
  NNLIB_ALWAYS_INLINE uint32_t pixels() const { return pixels_; }
  NNLIB_ALWAYS_INLINE const int16_t* data() const { return data_; }

  template <class T>
  NNLIB_ALWAYS_INLINE void fill(uint32_t column, int16_t value) {
    std::fill_n(data_ + size_t{column} * length_, length_, value);
  }
  template <bool kLoose, class T>
  NNLIB_ALWAYS_INLINE void put(uint32_t column, uint32_t at, const T* in, uint32_t count) {
    widen<kLoose>(in, count, 0, data_ + size_t{column} * length_ + at);
  }

 private:
  int16_t* data_;
  uint32_t length_, most_, pixels_;
};
