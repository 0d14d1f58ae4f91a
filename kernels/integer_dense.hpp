// SPDX-License-Identifier: MIT
// The product behind ko_fully_connected.h.
#ifndef NNLIB_KERNELS_INTEGER_DENSE_HPP
#define NNLIB_KERNELS_INTEGER_DENSE_HPP

#include "kernels/ko_types.hpp"

namespace nnlib {

// Its arguments for any types; in, weights and out are of the types it is called with.
struct IntegerProduct {
  const void* in;
  const void* weights;
  uint32_t length;
  uint32_t rows;
  const int32_t* bias;  // or null
  KoQuantization quantization;
  void* out;
  void* scratch;  // or null
};

template <class Types>
void connect(const IntegerProduct& p);

}  // namespace nnlib

#endif
