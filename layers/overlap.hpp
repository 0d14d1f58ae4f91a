// SPDX-License-Identifier: MIT
// Whether elements may be computed some at a time although their order is a contract.
#ifndef NNLIB_LAYERS_OVERLAP_HPP
#define NNLIB_LAYERS_OVERLAP_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace nnlib {

// Whether out is in, or at least `elements` away: then no output of so many consecutive elements is
// the input of another of them.
inline bool same_or_apart(const float* out, const float* in, size_t elements) {
  const uintptr_t lead = reinterpret_cast<uintptr_t>(in) - reinterpret_cast<uintptr_t>(out);
  const uintptr_t distance = std::min(lead, uintptr_t{0} - lead);
  return distance == 0 || distance >= elements * sizeof(float);
}

}  // namespace nnlib

#endif
