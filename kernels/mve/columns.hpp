// SPDX-License-Identifier: MIT
// Columns by vectors. Those of bytes stay bytes: four fit where two of 16-bit values would.

#include "kernels/mve/load_widened.hpp"

template <class T>
void widen(const T* in, uint32_t count, int32_t subtracted, int16_t* out) {
#define NNLIB_WIDEN(load)                                                                        \
  __asm__ volatile("wlstp.16 lr, %[n], 2f\n1:\n\t" load                                          \
                   " q0, [%[in]], #8\n\tvsub.i16 q0, q0, %[z]\n\tvstrh.16 q0, [%[out]], #16\n\t" \
                   "letp lr, 1b\n2:"                                                             \
                   : [in] "+l"(in), [out] "+r"(out)                                              \
                   : [n] "r"(count), [z] "r"(subtracted)                                         \
                   : "q0", "lr", "memory")
  if constexpr (std::is_signed_v<T>) {
    NNLIB_WIDEN("vldrb.s16");
  } else {
    NNLIB_WIDEN("vldrb.u16");
  }
#undef NNLIB_WIDEN
}

template <class T>
int32_t column_sum(const T* column, uint32_t length) {
  int32_t sum = 0;
  for (int32_t left = static_cast<int32_t>(length); left > 0; left -= 8, column += 8) {
    sum = vaddvaq_s16(sum, load_widened(column, vctp16q(static_cast<uint32_t>(left))));
  }
  return sum;
}

NNLIB_ALWAYS_INLINE void copy_bytes(uint8_t* to, const void* from, uint32_t count) {
  __asm__ volatile(
      "wlstp.8 lr, %[n], 2f\n1:\n\tvldrb.8 q0, [%[from]], #16\n\tvstrb.8 q0, [%[to]], #16\n\t"
      "letp lr, 1b\n2:"
      : [to] "+r"(to), [from] "+r"(from)
      : [n] "r"(count)
      : "q0", "lr", "memory");
}

// Columns of T, one behind the other.
template <class T>
class ColumnsOf {
 public:
  static constexpr uint32_t kLooseStep = 1;

  ColumnsOf(int16_t* scratch, uint32_t length, uint32_t most)
      : data_(reinterpret_cast<T*>(scratch)),
        length_(length),
        most_(most * (sizeof(int16_t) / sizeof(T))),
        pixels_(0) {}

  void begin(uint32_t left) { pixels_ = std::min(left, most_); }
  uint32_t pixels() const { return pixels_; }
  const T* data() const { return data_; }

  template <class>
  void fill(uint32_t column, int16_t value) {
    std::fill_n(data_ + size_t{column} * length_, length_, static_cast<T>(value));
  }
  template <bool kLoose>
  NNLIB_ALWAYS_INLINE void put(uint32_t column, uint32_t at, const T* in, uint32_t count) {
    copy_bytes(reinterpret_cast<uint8_t*>(data_ + size_t{column} * length_ + at), in,
               count * sizeof(T));
  }

 private:
  T* data_;
  uint32_t length_, most_, pixels_;
};

using Columns = ColumnsOf<int16_t>;
