// SPDX-License-Identifier: MIT
#include "kernels/fixed_columns.hpp"

#include "kernels/dual_mac.hpp"
#include "kernels/vector.hpp"

#if NNLIB_VECTOR_WIDE
#include <immintrin.h>
#endif

#include <algorithm>
#include <type_traits>

namespace nnlib {
namespace {

template <class Weight, class Out>
struct FixedProduct {
  const FixedRows<Weight>& rows;
  const q15_t* columns;
  uint32_t pixels;
  Out* out;
};

}  // namespace
}  // namespace nnlib

#define NNLIB_VECTOR_BODY "kernels/fixed_columns_body.hpp"
#include "kernels/vector_bodies.hpp"

namespace nnlib {

template <class Weight, class Out>
void multiply_fixed_columns(const FixedRows<Weight>& rows, const q15_t* columns, uint32_t pixels,
                            Out* out) {
  using Product = FixedProduct<Weight, Out>;
  NNLIB_VECTOR(multiply_fixed<Product>)({rows, columns, pixels, out});
}

template void multiply_fixed_columns(const FixedRows<q7_t>&, const q15_t*, uint32_t, q7_t*);
template void multiply_fixed_columns(const FixedRows<q7_t>&, const q15_t*, uint32_t, q15_t*);
template void multiply_fixed_columns(const FixedRows<q15_t>&, const q15_t*, uint32_t, q15_t*);

template <class T>
void convolve_fixed_columns(const FixedConv<T>& conv, uint32_t columns, q15_t* scratch) {
  NNLIB_VECTOR(convolve_fixed<T>)(conv, columns, scratch);
}

template void convolve_fixed_columns(const FixedConv<q7_t>&, uint32_t, q15_t*);
template void convolve_fixed_columns(const FixedConv<q15_t>&, uint32_t, q15_t*);

}  // namespace nnlib
