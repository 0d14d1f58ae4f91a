// SPDX-License-Identifier: MIT
// Arrays of doubles in row-major order, and what constant folding does with them. Doubles hold
// every value of the types that networks compute with; the caller rounds results to the type it
// stores.
//
// All functions throw std::runtime_error for shapes and axes that do not fit.
#ifndef NNLIB_IMPORTER_PASS_HOST_ARRAY_HPP
#define NNLIB_IMPORTER_PASS_HOST_ARRAY_HPP

#include <functional>
#include <vector>

#include "importer/pass/shapes.hpp"

namespace nnlib::importer {

struct HostArray {
  Shape shape;
  std::vector<double> data;
};

HostArray map_array(const HostArray& x, const std::function<double(double)>& function);
HostArray zip_arrays(const HostArray& a, const HostArray& b, double (*function)(double, double));

// Folds the axes, which are normal, into `start`; keepdims leaves sizes of 1.
HostArray reduce_array(const HostArray& x, const Shape& axes, bool keepdims, double start,
                       double (*function)(double, double));

HostArray reshape_array(const HostArray& x, const Shape& shape);
HostArray transpose_array(const HostArray& x, const Shape& perm);
HostArray expand_array(const HostArray& x, const Shape& shape);
HostArray tile_array(const HostArray& x, const Shape& repeats);
HostArray concat_arrays(const std::vector<const HostArray*>& parts, int64_t axis);

// For every axis, `sizes` elements from `starts` on, `steps` apart (steps may be negative).
HostArray slice_array(const HostArray& x, const Shape& starts, const Shape& sizes,
                      const Shape& steps);

// Constant padding; negative pads cut off.
HostArray pad_array(const HostArray& x, const Shape& before, const Shape& after, double value);

// x[..., indices, ...] along an axis; negative indices count from the end.
HostArray gather_array(const HostArray& x, const HostArray& indices, int64_t axis);

// Matrix product with broadcasting of the leading axes.
HostArray matmul_arrays(const HostArray& a, const HostArray& b);

}  // namespace nnlib::importer

#endif
