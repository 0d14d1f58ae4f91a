// SPDX-License-Identifier: MIT
// Max and average pooling of float32 maps.
#ifndef NNLIB_KERNELS_FLOAT_POOL_HPP
#define NNLIB_KERNELS_FLOAT_POOL_HPP

#include <cstdint>

#include "kernels/pool_geometry.hpp"

namespace nnlib {

enum class Pooling {
  kMax,        // m > cell ? m : cell
  kScaledSum,  // the sum, times the reciprocal of a count
  kMean,       // the sum, divided by a count
};

struct PoolOptions {
  float start;      // what the first cell of a window is folded into
  uint32_t count;   // of an average; 0: the window's cells inside the map
  bool skip_empty;  // do not write a pixel whose window lies outside the map
};

// Starts that fold with the first cell to that cell, whatever it is: nothing is less, NaN included,
// and a sum with -0 changes nothing, not even -0.
inline constexpr float kMaxOfNone = -__builtin_huge_valf();
inline constexpr float kSumOfNone = -0.0f;

// Pools the map at in into the one at out: of every window the cells inside the map, row by row.
void pool_f32(Pooling pooling, const PoolGeometry& geometry, const PoolOptions& options,
              const float* in, float* out);

}  // namespace nnlib

#endif
