// SPDX-License-Identifier: MIT
#include "kernels/integer_columns.hpp"

#include "kernels/dual_mac.hpp"
#include "kernels/vector.hpp"

#if NNLIB_VECTOR_WIDE
#include <immintrin.h>
#endif

#include <algorithm>
#include <type_traits>

#include "kernels/ko_requantize.hpp"

#define NNLIB_VECTOR_BODY "kernels/integer_columns_body.hpp"
#include "kernels/vector_bodies.hpp"

namespace nnlib {

template <class Types>
typename Types::Activation* multiply_columns(const KoMatrix<Types>& matrix, const int16_t* columns,
                                             uint32_t pixels, typename Types::Activation* out) {
  return NNLIB_VECTOR(multiply<Types>)(matrix, columns, pixels, out);
}

template <class Types>
void convolve_columns(const KoMatrix<Types>& matrix, const ConvGeometry& geometry,
                      const typename Types::Activation* in, int32_t subtracted, int16_t* columns,
                      typename Types::Activation* out) {
  NNLIB_VECTOR(convolve<Types>)(matrix, geometry, in, subtracted, columns, out);
}

template <class Activation>
void widen_vector(const Activation* in, uint32_t count, int32_t subtracted, int16_t* column) {
  NNLIB_VECTOR(widen<Activation>)(in, count, subtracted, column);
}

#define INSTANTIATE(types)                                                              \
  template KO_ACTIVATION(types) * multiply_columns(const KoMatrix<KO_TYPES(types)>&,    \
                                                   const int16_t*, uint32_t,            \
                                                   KO_ACTIVATION(types)*);              \
  template void convolve_columns(const KoMatrix<KO_TYPES(types)>&, const ConvGeometry&, \
                                 const KO_ACTIVATION(types)*, int32_t, int16_t*,        \
                                 KO_ACTIVATION(types)*);
KO_TYPES_WORDS(INSTANTIATE)
template void widen_vector(const uint8_t*, uint32_t, int32_t, int16_t*);
template void widen_vector(const int8_t*, uint32_t, int32_t, int16_t*);

}  // namespace nnlib
