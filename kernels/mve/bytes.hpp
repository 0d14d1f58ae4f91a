// SPDX-License-Identifier: MIT
// Functions of sixteen bytes at a time, in loops that the processor ends by itself.

// function: from q0 to `result`, with the bytes a and b in all lanes of q1 and q2.
#define NNLIB_MAP_BYTES(function, result)                                  \
  __asm__ volatile(                                                        \
      "vdup.8 q1, %[a]\n\tvdup.8 q2, %[b]\n\twlstp.8 lr, %[n], 2f\n1:\n\t" \
      "vldrb.8 q0, [%[in]], #16\n\t" function "\n\tvstrb.8 " result        \
      ", [%[out]], #16\n\t"                                                \
      "letp lr, 1b\n2:"                                                    \
      : [in] "+r"(in), [out] "+r"(out)                                     \
      : [n] "r"(count), [a] "r"(a), [b] "r"(b), [table] "r"(table)         \
      : "q0", "q1", "q2", "q3", "lr", "memory")

// min(max(x, low), high)
template <class T>
void clip_bytes(const T* in, uint32_t count, T low, T high, T* out) {
  const int32_t a = low, b = high;
  constexpr const T* table = nullptr;
  if constexpr (std::is_signed_v<T>) {
    NNLIB_MAP_BYTES("vmax.s8 q0, q0, q1\n\tvmin.s8 q0, q0, q2", "q0");
  } else {
    NNLIB_MAP_BYTES("vmax.u8 q0, q0, q1\n\tvmin.u8 q0, q0, q2", "q0");
  }
}

// max(x, low)
template <class T>
void raise_bytes(const T* in, uint32_t count, T low, T* out) {
  clip_bytes(in, count, low, std::numeric_limits<T>::max(), out);
}

// Each element x becomes table[x], counted from the least x on.
template <class T>
void look_up_bytes(const T* in, const T* table, uint32_t count, T* out) {
  const int32_t a = std::numeric_limits<T>::min(), b = 0;
  NNLIB_MAP_BYTES("veor q0, q0, q1\n\tvldrb.u8 q3, [%[table], q0]", "q3");
}
#undef NNLIB_MAP_BYTES
