// SPDX-License-Identifier: MIT
// Row-major tensors of any rank as the runtime's few dimensions: neighbours that are treated alike
// count as one.
#ifndef NNLIB_IMPORTER_LOWER_GROUPS_HPP
#define NNLIB_IMPORTER_LOWER_GROUPS_HPP

#include <optional>

#include "importer/lower/network.hpp"

namespace nnlib::importer {

// Dimensions around one: [outer][middle][inner].
struct Around {
  uint32_t outer, middle, inner;
};
Around around(const Shape& shape, size_t axis);

// Operands of an element-wise operation as maps of three dimensions.
struct BroadcastDims {
  Dims a, b, out;
};
// Nothing when more than three groups of dimensions are needed. Shapes that do not fit together
// are nothing as well.
std::optional<BroadcastDims> broadcast_dims(const Shape& a, const Shape& b, const Shape& out);

// A reduction: input dims and output dims, reduced axes 1.
struct ReduceDims {
  Dims in, out;
};
std::optional<ReduceDims> reduce_dims(const Shape& shape, const std::vector<int64_t>& axes);

// A transposition of up to four groups: dims of input and output and the runtime's perm.
struct TransposeDims {
  Dims in, out;
  std::vector<uint32_t> perm;
};
std::optional<TransposeDims> transpose_dims(const Shape& shape, const std::vector<int64_t>& perm);

// A box cut out, of up to four groups; starts and ends for N, C, W, H.
struct SliceDims {
  Dims in, out;
  std::vector<int32_t> starts, ends;
};
std::optional<SliceDims> slice_dims(const Shape& shape, const std::vector<int64_t>& starts,
                                    const std::vector<int64_t>& ends);

}  // namespace nnlib::importer

#endif
