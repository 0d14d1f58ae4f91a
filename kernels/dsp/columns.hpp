// SPDX-License-Identifier: MIT
// Columns of pairs. A single column has its values in their natural order. Two columns are
// interleaved, so that a tile's loop reads one stream: of each four values those of the first
// column as two pairs, then those of the second.

// The order in which the tile's weights come: bytes as 0 2 1 3, 16-bit values as they are.
template <class T>
constexpr uint32_t pair_position(uint32_t k) {
  return sizeof(T) == 2 || k % 4 == 0 || k % 4 == 3 ? k : k ^ 3;
}

template <class T>
void widen(const T* in, uint32_t count, int32_t subtracted, int16_t* out) {
  if constexpr (sizeof(T) == 2) {
    if (subtracted == 0) {
      std::memcpy(out, in, count * sizeof(T));
      return;
    }
  } else {
    const uint32_t added = dsp::twice(-subtracted);
    for (; count >= 4; count -= 4, in += 4, out += 4) {
      const uint32_t bytes = dsp::load_word(in);
      const uint32_t even = dsp::even_bytes<T>(added, bytes);
      const uint32_t odd = dsp::odd_bytes<T>(added, bytes);
      dsp::store_word(out, dsp::low_halves(even, odd));
      dsp::store_word(out + 2, dsp::high_halves(even, odd));
    }
  }
  for (uint32_t i = 0; i < count; ++i) {
    out[i] = static_cast<int16_t>(in[i] - subtracted);
  }
}

inline int32_t column_sum(const int16_t* column, uint32_t length) {
  int32_t sum = 0;
  for (; length >= 2; length -= 2, column += 2) {
    sum = dsp::multiply_pairs(dsp::load_word(column), dsp::twice(1), sum);
  }
  return length != 0 ? wrapping_add(sum, *column) : sum;
}

class Columns {
 public:
  static constexpr uint32_t kLooseStep = 1;

  // Two columns are read in double words, and their rows in words.
  Columns(int16_t* scratch, uint32_t length, uint32_t most)
      : data_(scratch),
        length_(length),
        most_(reinterpret_cast<uintptr_t>(scratch) % 4 == 0 && length >= 4 ? most : 1),
        pixels_(0) {}

  void begin(uint32_t left) { pixels_ = std::min(left, most_); }
  uint32_t pixels() const { return pixels_; }
  const int16_t* data() const { return data_; }
  // Of two columns the 0 to 3 values that fill no group, as a group that ends with them, with zeros
  // in front.
  const int16_t* end() const { return end_; }

  template <class T>
  void fill(uint32_t column, int16_t value) {
    if (pixels_ == 1) {
      std::fill_n(data_, length_, value);
      return;
    }
    for (uint32_t k = 0; k < (length_ & ~3u); ++k) {
      data_[(k & ~3u) * 2 + column * 4 + k % 4] = value;
    }
    for (uint32_t k = length_ & ~3u; k < length_; ++k) {
      *end_position<T>(column, k) = value;
    }
  }

  template <bool kLoose, class T>
  void put(uint32_t column, uint32_t at, const T* in, uint32_t count) {
    if (pixels_ == 1) {
      widen(in, count, 0, data_ + at);
      return;
    }
    const uint32_t whole = length_ & ~3u;
    uint32_t k = at;
    const uint32_t stop = at + count;
    for (; k % 4 != 0 && k < stop && k < whole; ++k) {
      *position<T>(column, k) = static_cast<int16_t>(*in++);
    }
    const uint32_t stop_groups = std::min(stop, whole) & ~3u;
    if (k < stop_groups) {
      int16_t* to = data_ + size_t{k} * 2 + column * 4;
      put_groups(in, in + (stop_groups - k), to);
      in += stop_groups - k;
      k = stop_groups;
    }
    for (; k < stop && k < whole; ++k) {
      *position<T>(column, k) = static_cast<int16_t>(*in++);
    }
    for (; k < stop; ++k) {
      *end_position<T>(column, k) = static_cast<int16_t>(*in++);
    }
  }

 private:
  template <class T>
  static NNLIB_ALWAYS_INLINE void put_groups(const T* in, const T* end, int16_t* to) {
    if constexpr (sizeof(T) == 2) {
      do {
        for (uint32_t i = 0; i < 4; ++i) {
          to[i] = static_cast<int16_t>(in[i]);
        }
        to += 8;
      } while ((in += 4) != end);
    } else {
      do {
        const uint32_t bytes = dsp::load_word(in);
        dsp::store_word(to, dsp::even_bytes<T>(0, bytes));
        dsp::store_word(to + 2, dsp::odd_bytes<T>(0, bytes));
        to += 8;
      } while ((in += 4) != end);
    }
  }

  template <class T>
  int16_t* position(uint32_t column, uint32_t k) {
    return data_ + (k & ~3u) * 2 + column * 4 + pair_position<T>(k % 4);
  }
  template <class T>
  int16_t* end_position(uint32_t column, uint32_t k) {
    return end_ + column * 4 + pair_position<T>(4 + k - length_);
  }

  int16_t* data_;
  uint32_t length_, most_, pixels_;
  alignas(4) int16_t end_[8] = {};
};
