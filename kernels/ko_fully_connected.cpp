// SPDX-License-Identifier: MIT
#include "kernels/ko_fully_connected.h"

#include "kernels/integer_dense.hpp"
#include "kernels/ko_requantize.hpp"
#include "kernels/row_products.hpp"

namespace nnlib {

template <class Types>
void connect(const IntegerProduct& p) {
  using Activation = typename Types::Activation;
  const KoQuantization& q = p.quantization;
  const auto* in = static_cast<const Activation*>(p.in);
  const auto* weights = static_cast<const typename Types::Weight*>(p.weights);
  auto* out = static_cast<Activation*>(p.out);
  if (p.scratch != nullptr) {
    auto* column = static_cast<int16_t*>(p.scratch);
    widen_vector(in, p.length, q.in_zeropoint, column);
    multiply_vector(IntegerRows<Types>{weights, p.bias, p.rows, p.length, 0, q}, column, out);
    return;
  }
  for (uint32_t row = 0; row < p.rows; ++row, weights += p.length) {
    const int32_t zeropoint = weight_zeropoint<Types>(q, row);
    uint32_t acc = p.bias != nullptr ? static_cast<uint32_t>(p.bias[row]) : 0;
    for (uint32_t i = 0; i < p.length; ++i) {
      acc += static_cast<uint32_t>((weights[i] - zeropoint) * (in[i] - q.in_zeropoint));
    }
    out[row] = requantize<Activation>(q, row, static_cast<int32_t>(acc));
  }
}

#define INSTANTIATE(types) template void connect<KO_TYPES(types)>(const IntegerProduct&);
KO_TYPES_WORDS(INSTANTIATE)

}  // namespace nnlib

#define DEFINE(types, suffix)                                                               \
  int32_t ko_##types##_fully_connected##suffix(                                             \
      const KO_ACTIVATION(types) * in, const KO_WEIGHT(types) * weights, uint16_t length,   \
      uint16_t rows, const int32_t* multiplier, const int16_t* shift, KO_ZEROPOINTS(types), \
      const int32_t* bias, KO_ACTIVATION(types) * out, void* scratch) {                     \
    nnlib::connect<KO_TYPES(types)>(                                                        \
        {in, weights, length, rows, bias, KO_QUANTIZATION(types, suffix), out, scratch});   \
    return 0;                                                                               \
  }

extern "C" {

uint32_t ko_fully_connected_scratch_size(uint16_t length) {
  return uint32_t{length} * 2;
}

KO_FORMS(DEFINE)

}  // extern "C"
