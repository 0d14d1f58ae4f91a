#include "kernels/integer_depthwise.hpp"

#include "kernels/vector.hpp"

#if NNLIB_VECTOR_WIDE
#include <immintrin.h>
#endif

#include <algorithm>
#include <type_traits>

#include "kernels/ko_requantize.hpp"

#define NNLIB_VECTOR_BODY "kernels/integer_depthwise_body.hpp"
#include "kernels/vector_bodies.hpp"

namespace nnlib {

template <class Types>
void convolve_depthwise(const ConvGeometry& geometry, const typename Types::Activation* in,
                        const int32_t* bias, const KoQuantization<Types>& quantization,
                        int16_t* scratch, typename Types::Activation* out) {
  NNLIB_VECTOR(convolve_channels<Types>)(geometry, in, bias, quantization, scratch, out);
}

#define INSTANTIATE(types, suffix)                                                                 \
  template void convolve_depthwise(const ConvGeometry&, const KO_ACTIVATION(types)*,               \
                                   const int32_t*, const KoQuantization<KO_TYPES(types, suffix)>&, \
                                   int16_t*, KO_ACTIVATION(types)*);
KO_FORMS(INSTANTIATE)

}  // namespace nnlib
