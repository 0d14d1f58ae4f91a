// SPDX-License-Identifier: MIT
#include "kernels/float_pool.hpp"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace nnlib {
namespace {

// The cells of a window inside the map.
struct WindowCells {
  uint32_t rows, columns;
  size_t row_pitch;  // floats
  uint32_t channels;

  uint32_t number() const { return rows * columns; }
};

}  // namespace
}  // namespace nnlib

#define NNLIB_VECTOR_BODY "kernels/float_pool_body.hpp"
#include "kernels/vector_bodies.hpp"

namespace nnlib {

void pool_f32(Pooling pooling, const PoolGeometry& geometry, const PoolOptions& options,
              const float* in, float* out) {
  switch (pooling) {
    case Pooling::kMax:
      return NNLIB_VECTOR(pool<Pooling::kMax>)(geometry, options, in, out);
    case Pooling::kScaledSum:
      return NNLIB_VECTOR(pool<Pooling::kScaledSum>)(geometry, options, in, out);
    case Pooling::kMean:
      return NNLIB_VECTOR(pool<Pooling::kMean>)(geometry, options, in, out);
  }
}

}  // namespace nnlib
