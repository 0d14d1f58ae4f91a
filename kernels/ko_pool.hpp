// SPDX-License-Identifier: MIT
// The pooling behind ko_pool.h.
#ifndef NNLIB_KERNELS_KO_POOL_HPP
#define NNLIB_KERNELS_KO_POOL_HPP

#include <cstdint>

#include "kernels/pool_geometry.hpp"

namespace nnlib {

// The zero points count as elements do.
struct PoolQuantization {
  float in_scale;
  int32_t in_zeropoint;
  float out_scale;
  int32_t out_zeropoint;
};

// Maps of T: uint8_t, int8_t.
template <class T>
void max_pool(const PoolGeometry& geometry, const void* in, void* out,
              const PoolQuantization& quantization);
template <class T>
void average_pool(const PoolGeometry& geometry, const void* in, void* out,
                  const PoolQuantization& quantization);

}  // namespace nnlib

#endif
