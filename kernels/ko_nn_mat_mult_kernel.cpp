// SPDX-License-Identifier: MIT
#include "kernels/ko_nn_mat_mult_kernel.h"

#include "kernels/ko_requantize.hpp"
#include "kernels/reorder.hpp"
#include "kernels/row_products.hpp"

namespace nnlib {
namespace {

// The biases behind two columns.
const int32_t* biases(const int16_t* columns, uint32_t length) {
  return reinterpret_cast<const int32_t*>(columns + size_t{length} * 2);
}

template <class Types>
typename Types::Activation* multiply(const typename Types::Weight* weights, const int16_t* columns,
                                     uint32_t rows, uint32_t length, const KoQuantization& q,
                                     typename Types::Activation* out) {
  const IntegerRows<Types> all = {weights, biases(columns, length), rows,
                                  length,  q.in_zeropoint,          q};
  multiply_vector(all, columns, out);
  multiply_vector(all, columns + length, out + rows);
  return out + size_t{rows} * 2;
}

template <class Types>
typename Types::Activation* multiply_reordered(const typename Types::Weight* weights,
                                               const int16_t* columns, uint32_t rows,
                                               uint32_t length, const KoQuantization& q,
                                               typename Types::Activation* out) {
  const int32_t* bias = biases(columns, length);
  for (uint32_t pixel = 0; pixel < 2; ++pixel, columns += length) {
    for (uint32_t row = 0; row < rows; ++row) {
      const auto* weight = weights + size_t{row} * length;
      const int32_t zeropoint = weight_zeropoint<Types>(q, row);
      // The biases know the input zero point times the weights, not times their zero point.
      uint32_t acc = static_cast<uint32_t>(bias[row]) +
                     length * static_cast<uint32_t>(q.in_zeropoint * zeropoint);
      for (uint32_t k = 0; k < length; ++k) {
        acc += static_cast<uint32_t>((weight[reordered(k, length)] - zeropoint) * columns[k]);
      }
      *out++ = requantize<typename Types::Activation>(q, row, static_cast<int32_t>(acc));
    }
  }
  return out;
}

}  // namespace
}  // namespace nnlib

#define DEFINE(types, suffix)                                                                    \
  KO_ACTIVATION(types) * ko_##types##_nn_mat_mult_kernel##suffix(KO_MAT_MULT(types)) {           \
    return nnlib::multiply<KO_TYPES(types)>(weights, columns, out_channels, length,              \
                                            KO_QUANTIZATION(types, suffix), out);                \
  }                                                                                              \
  KO_ACTIVATION(types) * ko_##types##_nn_mat_mult_kernel_reordered##suffix(KO_MAT_MULT(types)) { \
    return nnlib::multiply_reordered<KO_TYPES(types)>(weights, columns, out_channels, length,    \
                                                      KO_QUANTIZATION(types, suffix), out);      \
  }
extern "C" {
KO_FORMS(DEFINE)
}
