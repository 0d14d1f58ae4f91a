// SPDX-License-Identifier: MIT
#include "kernels/ko_pool.h"

#include "kernels/integer_pool.hpp"
#include "kernels/ko_pool.hpp"
#include "kernels/round_quantized.hpp"

namespace nnlib {
namespace {

struct Maximum : IntegerMax {
  template <class T>
  static float real(T maximum, uint32_t /*count*/) {
    return static_cast<float>(maximum);
  }
};

struct Average : IntegerSum<false> {
  template <class T, class Sum>
  static float real(Sum sum, uint32_t count) {
    return IntegerSum::real(sum) / static_cast<float>(count);
  }
};

// From one quantization to another.
template <class T>
struct Rescaling {
  NNLIB_CALL_FOR_SIZE explicit Rescaling(const PoolQuantization& q)
      : ratio(q.in_scale / q.out_scale),
        in_zeropoint(static_cast<T>(q.in_zeropoint)),
        out_zeropoint(static_cast<T>(q.out_zeropoint)),
        exact(q.in_scale == q.out_scale && in_zeropoint == out_zeropoint) {}

  float ratio, in_zeropoint, out_zeropoint;
  bool exact;  // they are the same
};

// Outputs of another quantization than the inputs have.
template <class Pooling, class T>
struct RescaledPool : Rescaling<T> {
  using Rescaling<T>::Rescaling;

  static constexpr bool is_exact() { return false; }
  template <class Folded>
  T operator()(Folded folded, uint32_t count) const {
    const float m = Pooling::template real<T>(folded, count);
    return round_quantized<T>((m - this->in_zeropoint) * this->ratio + this->out_zeropoint);
  }
};

// Of so many cells a sum fits 32 bits, with half their number.
constexpr uint32_t kMostNarrow = 65535;

// One or the other, for all the folding only once.
template <class Pooling, class T>
struct EitherPool : RescaledPool<Pooling, T> {
  using RescaledPool<Pooling, T>::RescaledPool;

  bool is_exact() const { return this->exact; }
  template <class Folded>
  NNLIB_CALL_FOR_SIZE T operator()(Folded folded, uint32_t count) const {
    if constexpr (sizeof(Folded) > 4) {
      if (count <= kMostNarrow) {
        return (*this)(static_cast<int32_t>(folded), count);
      }
    }
    return this->exact ? ExactPool<Pooling, T>()(folded, count)
                       : RescaledPool<Pooling, T>::operator()(folded, count);
  }
};

template <class Pooling, class T>
void pool(const PoolGeometry& g, const T* in, T* out, const PoolQuantization& q) {
  const T outside = static_cast<T>(q.out_zeropoint);
#if NNLIB_VECTOR_LANES > 1
  const RescaledPool<Pooling, T> rescaled(q);
  if (rescaled.exact) {
    integer_pool<Pooling>(g, in, out, outside, ExactPool<Pooling, T>());
  } else {
    integer_pool<Pooling>(g, in, out, outside, rescaled);
  }
#else
  integer_pool<Pooling>(g, in, out, outside, EitherPool<Pooling, T>(q));
#endif
}

}  // namespace

template <class T>
void max_pool(const PoolGeometry& geometry, const void* in, void* out,
              const PoolQuantization& quantization) {
  pool<Maximum>(geometry, static_cast<const T*>(in), static_cast<T*>(out), quantization);
}

template <class T>
void average_pool(const PoolGeometry& geometry, const void* in, void* out,
                  const PoolQuantization& quantization) {
  pool<Average>(geometry, static_cast<const T*>(in), static_cast<T*>(out), quantization);
}

template void max_pool<uint8_t>(const PoolGeometry&, const void*, void*, const PoolQuantization&);
template void max_pool<int8_t>(const PoolGeometry&, const void*, void*, const PoolQuantization&);
template void average_pool<uint8_t>(const PoolGeometry&, const void*, void*,
                                    const PoolQuantization&);
template void average_pool<int8_t>(const PoolGeometry&, const void*, void*,
                                   const PoolQuantization&);

}  // namespace nnlib

#define DEFINE(types, Element, operation, function)                                              \
  int32_t ko_##types##_##operation##pool(                                                        \
      const Element* in, Element* out, uint16_t in_width, uint16_t in_height, uint16_t channels, \
      uint16_t pool_width, uint16_t pool_height, uint16_t pad_x, uint16_t pad_y,                 \
      uint16_t stride_x, uint16_t stride_y, uint16_t out_width, uint16_t out_height,             \
      float in_scale, Element in_zeropoint, float out_scale, Element out_zeropoint) {            \
    const nnlib::PoolGeometry geometry = {in_width,    in_height, channels,  pool_width,         \
                                          pool_height, pad_x,     pad_y,     stride_x,           \
                                          stride_y,    out_width, out_height};                   \
    nnlib::function<Element>(geometry, in, out,                                                  \
                             {in_scale, in_zeropoint, out_scale, out_zeropoint});                \
    return 0;                                                                                    \
  }                                                                                              \
  int32_t ko_##types##_glo##operation##pool(                                                     \
      const Element* in, Element* out, uint16_t in_width, uint16_t in_height, uint16_t channels, \
      float in_scale, Element in_zeropoint, float out_scale, Element out_zeropoint) {            \
    return ko_##types##_##operation##pool(in, out, in_width, in_height, channels, in_width,      \
                                          in_height, 0, 0, 1, 1, 1, 1, in_scale, in_zeropoint,   \
                                          out_scale, out_zeropoint);                             \
  }

extern "C" {
DEFINE(uint8, uint8_t, max, max_pool)
DEFINE(uint8, uint8_t, ave, average_pool)
DEFINE(int8, int8_t, max, max_pool)
DEFINE(int8, int8_t, ave, average_pool)
}
