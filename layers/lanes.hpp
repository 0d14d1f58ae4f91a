// SPDX-License-Identifier: MIT
// The float32 lanes that every target of the build has, for element-wise loops at the limit of the
// caches: wider instances would gain nothing there.
#ifndef NNLIB_LAYERS_LANES_HPP
#define NNLIB_LAYERS_LANES_HPP

#include <cstring>

#include "kernels/vector.hpp"

namespace nnlib {

constexpr ptrdiff_t kLanes = NNLIB_VECTOR_LANES;
using Lanes = VectorOf<float, kLanes>::type;

inline Lanes load_lanes(const float* from) {
  Lanes lanes;
  std::memcpy(&lanes, from, sizeof(lanes));
  return lanes;
}

inline void store_lanes(float* to, Lanes lanes) {
  std::memcpy(to, &lanes, sizeof(lanes));
}

}  // namespace nnlib

#endif
