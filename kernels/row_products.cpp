// SPDX-License-Identifier: MIT
#include "kernels/row_products.hpp"

#include <algorithm>
#include <type_traits>

#include "kernels/ko_requantize.hpp"

#define NNLIB_VECTOR_BODY "kernels/row_products_body.hpp"
#include "kernels/vector_bodies.hpp"

namespace nnlib {

template <class Rows>
void convolve_rows(const Rows& rows, const ConvGeometry& geometry, const typename Rows::Input* in,
                   uint32_t columns, int16_t* scratch, typename Rows::Output* out) {
  NNLIB_VECTOR(convolve<Rows>)(rows, geometry, in, columns, scratch, out);
}

template <class Rows>
void multiply_vector(const Rows& rows, const int16_t* vector, typename Rows::Output* out) {
  NNLIB_VECTOR(multiply_one<Rows>)(rows, vector, out);
}

template <class Input>
void widen_vector(const Input* in, uint32_t count, int32_t subtracted, int16_t* out) {
  NNLIB_VECTOR(widen_run<Input>)(in, count, subtracted, out);
}

#define INSTANTIATE_CONVOLUTION(Rows)                                                         \
  template void convolve_rows(const Rows&, const ConvGeometry&, const Rows::Input*, uint32_t, \
                              int16_t*, Rows::Output*);
#define INSTANTIATE_PRODUCT(Rows) \
  template void multiply_vector(const Rows&, const int16_t*, Rows::Output*);
#define INSTANTIATE(types)                              \
  INSTANTIATE_CONVOLUTION(IntegerRows<KO_TYPES(types)>) \
  INSTANTIATE_PRODUCT(IntegerRows<KO_TYPES(types)>)
KO_TYPES_WORDS(INSTANTIATE)
INSTANTIATE_CONVOLUTION(FixedRows<q7_t>)
INSTANTIATE_CONVOLUTION(FixedRows<q15_t>)
INSTANTIATE_PRODUCT(FixedRows<q7_t>)
INSTANTIATE_PRODUCT(FixedRows<q15_t>)
using Q7RowsToQ15 = FixedRows<q7_t, q15_t>;
INSTANTIATE_PRODUCT(Q7RowsToQ15)
template void widen_vector(const uint8_t*, uint32_t, int32_t, int16_t*);
template void widen_vector(const int8_t*, uint32_t, int32_t, int16_t*);

}  // namespace nnlib
