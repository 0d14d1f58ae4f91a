// SPDX-License-Identifier: MIT
#include "kernels/integer_depthwise.hpp"

#include "kernels/vector.hpp"

#include <algorithm>
#include <type_traits>

#include "kernels/ko_requantize.hpp"
#include "kernels/row_products.hpp"

#define NNLIB_VECTOR_BODY "kernels/integer_depthwise_body.hpp"
#include "kernels/vector_bodies.hpp"

namespace nnlib {

template <class Activation>
void convolve_adapted(const ConvGeometry& geometry, const Activation* in, const int32_t* bias,
                      const KoQuantization& quantization, int16_t* scratch, Activation* out) {
  NNLIB_VECTOR(convolve_channels<Activation>)(geometry, in, bias, quantization, scratch, out);
}

template void convolve_adapted(const ConvGeometry&, const uint8_t*, const int32_t*,
                               const KoQuantization&, int16_t*, uint8_t*);
template void convolve_adapted(const ConvGeometry&, const int8_t*, const int32_t*,
                               const KoQuantization&, int16_t*, int8_t*);

}  // namespace nnlib
