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

// Columns whose length is not a multiple of 4 are first collected as they are, where they fit.
constexpr size_t kMostCollected = 80;  // bytes of one: 5x5 with 3 channels

class Columns {
 public:
  static constexpr uint32_t kLooseStep = NNLIB_FOR_SPEED ? 4 : 1;

  // Two columns are read in double words, and their rows in words.
  Columns(int16_t* scratch, uint32_t length, uint32_t most)
      : data_(scratch),
        length_(length),
        most_(reinterpret_cast<uintptr_t>(scratch) % 4 == 0 && length >= 4 ? most : 1),
        pixels_(0) {}

  void begin(uint32_t left) { pixels_ = std::min(left, most_); }
  uint32_t pixels() const { return pixels_; }
  const int16_t* data() const { return data_; }
  // Of two columns the first 0 to 3 values, so many that the others fill groups, as a group with
  // zeros behind them.
  const int16_t* head() const { return head_; }

  template <class T>
  __attribute__((noinline)) void fill(uint32_t column, int16_t value) {
    if (pixels_ == 1) {
      std::fill_n(data_, length_, value);
      return;
    }
    if (collects<T>()) {
      std::fill_n(collected<T>(column), length_, static_cast<T>(value));
      return;
    }
    for (uint32_t k = 0; k < length_; ++k) {
      *position<T>(column, k) = value;
    }
  }

  template <bool kLoose, class T>
  void put(uint32_t column, uint32_t at, const T* in, uint32_t count) {
    if (pixels_ == 1) {
      widen(in, count, 0, data_ + at);
    } else if (collects<T>()) {
      copy<kLoose>(in, count, collected<T>(column) + at);
    } else {
      put_interleaved(column, at, in, count);
    }
  }

  // To be called before two columns are read.
  template <class T>
  NNLIB_ALWAYS_INLINE void interleave() const {
    if (collects<T>()) {
      interleave_collected<T>();
    }
  }

 private:
  template <class T>
  bool collects() const {
    return length_ % 4 != 0 && length_ * sizeof(T) <= kMostCollected;
  }
  template <class T>
  __attribute__((noinline)) void interleave_collected() const {
    const T* first = collected<T>(0);
    const T* second = collected<T>(1);
    const uint32_t head = length_ % 4;
    put_head(first, head, head_);
    put_head(second, head, head_ + 4);
    first += head;
    second += head;
    int16_t* to = data_;
    for (const int16_t* stop = to + (length_ & ~3u) * 2; to != stop;) {
      put_group<8>(first, to);
      put_group<8>(second, to);
    }
  }

  // Of four values in words the first 1 to 3, and zeros.
  template <class T>
  static NNLIB_ALWAYS_INLINE void put_head(const T* in, uint32_t count, int16_t* to) {
    uint32_t words[sizeof(T)] = {dsp::load_word(in)};
    if constexpr (sizeof(T) == 1) {
      words[0] &= (1u << 8 * count) - 1;
    } else {
      words[0] &= count == 1 ? 0xffff : ~0u;
      words[1] = count == 3 ? dsp::load_word(in + 2) & 0xffff : 0;
    }
    const T* from = reinterpret_cast<const T*>(words);
    put_group<8>(from, to);
  }

  template <class T>
  T* collected(uint32_t column) {
    return reinterpret_cast<T*>(collected_[column]);
  }
  template <class T>
  const T* collected(uint32_t column) const {
    return reinterpret_cast<const T*>(collected_[column]);
  }

  // Loosely: up to three bytes more.
  template <bool kLoose, class T>
  static NNLIB_ALWAYS_INLINE void copy(const T* in, uint32_t count, T* to) {
    constexpr uint32_t kOfWord = 4 / sizeof(T);
    const uint32_t words = (count + (kLoose ? kOfWord - 1 : 0)) / kOfWord;
    for (uint32_t left = words; left > 0; --left, in += kOfWord, to += kOfWord) {
      dsp::store_word(to, dsp::load_word(in));
    }
    for (uint32_t left = kLoose ? 0 : count % kOfWord; left > 0; --left) {
      *to++ = *in++;
    }
  }

  template <class T>
  __attribute__((noinline)) void put_interleaved(uint32_t column, uint32_t at, const T* in,
                                                 uint32_t count) {
    const uint32_t head = length_ % 4;
    uint32_t k = at;
    for (; count > 0 && (k < head || (k - head) % 4 != 0); --count, ++k) {
      *position<T>(column, k) = static_cast<int16_t>(*in++);
    }
    if (count >= 4) {
      int16_t* to = data_ + size_t{k - head} * 2 + column * 4;
      const T* stop = in + (count & ~3u);
      do {
        put_group<16>(in, to);
      } while (in != stop);
    }
    k += count & ~3u;
    for (count %= 4; count > 0; --count, ++k) {
      *position<T>(column, k) = static_cast<int16_t>(*in++);
    }
  }

  // Both move on, `to` by kStep bytes.
  template <int kStep, class T>
  static NNLIB_ALWAYS_INLINE void put_group(const T*& in, int16_t*& to) {
    uint32_t a, b;
    if constexpr (sizeof(T) == 2) {
      __asm__ volatile(
          "ldr %[a], [%[in]], #4\n\tldr %[b], [%[in]], #4\n\tstrd %[a], %[b], [%[to]], %[step]"
          : [a] "=&r"(a), [b] "=&r"(b), [in] "+r"(in), [to] "+r"(to)
          : [step] "i"(kStep)
          : "memory");
    } else if constexpr (std::is_signed_v<T>) {
      __asm__ volatile(
          "ldr %[a], [%[in]], #4\n\tsxtb16 %[b], %[a], ror #8\n\tsxtb16 %[a], %[a]\n\t"
          "strd %[a], %[b], [%[to]], %[step]"
          : [a] "=&r"(a), [b] "=&r"(b), [in] "+r"(in), [to] "+r"(to)
          : [step] "i"(kStep)
          : "memory");
    } else {
      __asm__ volatile(
          "ldr %[a], [%[in]], #4\n\tuxtb16 %[b], %[a], ror #8\n\tuxtb16 %[a], %[a]\n\t"
          "strd %[a], %[b], [%[to]], %[step]"
          : [a] "=&r"(a), [b] "=&r"(b), [in] "+r"(in), [to] "+r"(to)
          : [step] "i"(kStep)
          : "memory");
    }
  }

  template <class T>
  int16_t* position(uint32_t column, uint32_t k) const {
    const uint32_t head = length_ % 4;
    const uint32_t of_group = k < head ? k : k - head;
    int16_t* group = k < head ? head_ : data_ + (of_group & ~3u) * 2;
    return group + column * 4 + pair_position<T>(of_group % 4);
  }

  int16_t* data_;
  uint32_t length_, most_, pixels_;
  alignas(4) mutable int16_t head_[8] = {};
  alignas(4) uint8_t collected_[2][kMostCollected];
};
