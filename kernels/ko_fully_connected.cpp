#include "kernels/ko_fully_connected.h"

#include "kernels/integer_columns.hpp"
#include "kernels/ko_requantize.hpp"

namespace nnlib {
namespace {

template <class Types>
int32_t connect(const typename Types::Activation* in, const KoMatrix<Types>& m,
                typename Types::Activation* out, void* scratch) {
  const KoQuantization& q = m.quantization;
  if (scratch != nullptr) {
    auto* column = static_cast<int16_t*>(scratch);
    widen_vector(in, m.length, q.in_zeropoint, column);
    multiply_columns(m, column, 1, out);
    return 0;
  }
  for (uint32_t row = 0; row < m.rows; ++row) {
    const auto* weights = m.weights + size_t{row} * m.length;
    const int32_t zeropoint = weight_zeropoint<Types>(q, row);
    uint32_t acc = m.bias != nullptr ? static_cast<uint32_t>(m.bias[row]) : 0;
    for (uint32_t i = 0; i < m.length; ++i) {
      acc += static_cast<uint32_t>((weights[i] - zeropoint) * (in[i] - q.in_zeropoint));
    }
    out[row] = requantize<typename Types::Activation>(q, row, static_cast<int32_t>(acc));
  }
  return 0;
}

}  // namespace
}  // namespace nnlib

#define DEFINE(types, suffix)                                                               \
  int32_t ko_##types##_fully_connected##suffix(                                             \
      const KO_ACTIVATION(types) * in, const KO_WEIGHT(types) * weights, uint16_t length,   \
      uint16_t rows, const int32_t* multiplier, const int16_t* shift, KO_ZEROPOINTS(types), \
      const int32_t* bias, KO_ACTIVATION(types) * out, void* scratch) {                     \
    const nnlib::KoMatrix<KO_TYPES(types)> matrix = {                                       \
        weights, bias, rows, length, 0, KO_QUANTIZATION(types, suffix)};                    \
    return nnlib::connect(in, matrix, out, scratch);                                        \
  }

extern "C" {

uint32_t ko_fully_connected_scratch_size(uint16_t length) {
  return uint32_t{length} * 2;
}

KO_FORMS(DEFINE)

}  // extern "C"
