// SPDX-License-Identifier: MIT
// Dimensions and strides as signed numbers, for arithmetic with positions that may lie outside.
#ifndef NNLIB_LAYERS_SIGNED_DIMS_HPP
#define NNLIB_LAYERS_SIGNED_DIMS_HPP

#include "core/ai_tensor.h"

namespace nnlib {

inline ptrdiff_t signed_dim(const ai_tensor& tensor, uint32_t dim) {
  return static_cast<ptrdiff_t>(tensor.shape.data[dim]);
}

// In bytes.
inline ptrdiff_t signed_stride(const ai_tensor& tensor, uint32_t dim) {
  return static_cast<ptrdiff_t>(tensor.stride.data[dim]);
}

}  // namespace nnlib

#endif
