// SPDX-License-Identifier: MIT
// Columns without instructions of their own.

template <class T>
NNLIB_ALWAYS_INLINE void widen(const T* in, uint32_t count, int32_t subtracted, int16_t* out) {
  if constexpr (sizeof(T) == sizeof(int16_t)) {
    if (subtracted == 0) {
      std::memcpy(out, in, count * sizeof(T));
      return;
    }
  }
  for (uint32_t i = 0; i < count; ++i) {
    out[i] = static_cast<int16_t>(in[i] - subtracted);
  }
}

inline int32_t column_sum(const int16_t* column, uint32_t length) {
  uint32_t sum = 0;
  for (uint32_t k = 0; k < length; ++k) {
    sum += static_cast<uint32_t>(static_cast<int32_t>(column[k]));
  }
  return static_cast<int32_t>(sum);
}

// One column behind the other.
class Columns {
 public:
  static constexpr uint32_t kLooseStep = 1;

  Columns(int16_t* scratch, uint32_t length, uint32_t most)
      : data_(scratch), length_(length), most_(most), pixels_(0) {}

  // Starts on the next columns; so many pixels are left.
  void begin(uint32_t left) { pixels_ = std::min(left, most_); }
  uint32_t pixels() const { return pixels_; }
  const int16_t* data() const { return data_; }

  template <class T>
  void fill(uint32_t column, int16_t value) {
    std::fill_n(data_ + size_t{column} * length_, length_, value);
  }
  // `count` values from position `at` on.
  template <bool kLoose, class T>
  NNLIB_ALWAYS_INLINE void put(uint32_t column, uint32_t at, const T* in, uint32_t count) {
    widen(in, count, 0, data_ + size_t{column} * length_ + at);
  }

 private:
  int16_t* data_;
  uint32_t length_, most_, pixels_;
};
