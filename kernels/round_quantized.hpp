// SPDX-License-Identifier: MIT
// Rounding of real values to quantized elements.
#ifndef NNLIB_KERNELS_ROUND_QUANTIZED_HPP
#define NNLIB_KERNELS_ROUND_QUANTIZED_HPP

#include <cmath>
#include <type_traits>

#include "kernels/saturate.hpp"

namespace nnlib {

// uint8: plus 0.5, cut off; int8: halves away from zero. Saturated.
template <class T>
T round_quantized(float value) {
  return saturate<T>(value + (std::is_signed_v<T> ? std::copysign(0.5f, value) : 0.5f));
}

}  // namespace nnlib

#endif
