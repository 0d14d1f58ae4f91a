// SPDX-License-Identifier: MIT
// Arithmetic on row-major shapes.
#ifndef NNLIB_IMPORTER_PASS_SHAPES_HPP
#define NNLIB_IMPORTER_PASS_SHAPES_HPP

#include <cstddef>
#include <cstdint>

#include "importer/graph/value.hpp"

namespace nnlib::importer {

// No tensor of a network for microcontrollers has more; larger ones come from broken files.
inline constexpr int64_t max_elements = int64_t{1} << 26;

// Elements of a shape. Throws std::runtime_error for a negative size or more than max_elements.
int64_t element_count(const Shape& shape);

// Elements between neighbours of each axis.
Shape row_major_strides(const Shape& shape);

// The same, but 0 for axes of `shape` that broadcasting to `target` repeats; `shape` is taken to
// begin with as many 1 as it lacks.
Shape broadcast_strides(const Shape& shape, const Shape& target);

// The common shape; throws std::runtime_error when there is none.
Shape broadcast(const Shape& a, const Shape& b);

// Negative axes count from the end. Throws std::runtime_error outside the rank.
int64_t normal_axis(int64_t axis, size_t rank);

Shape permuted(const Shape& shape, const Shape& perm);
Shape inverse_permutation(const Shape& perm);

// Throws std::runtime_error unless perm has every axis once.
void require_permutation(const Shape& perm, size_t rank);

// Calls visit(offset) for every index of `shape` in row-major order, offset = sum of index *
// stride.
template <class Visit>
void for_each_offset(const Shape& shape, const Shape& strides, int64_t start, Visit visit) {
  Shape index(shape.size(), 0);
  int64_t left = 1;
  for (const int64_t size : shape) {
    left *= size;
  }
  int64_t offset = start;
  while (left-- > 0) {
    visit(offset);
    for (size_t axis = shape.size(); axis-- > 0;) {
      offset += strides[axis];
      if (++index[axis] < shape[axis]) {
        break;
      }
      offset -= strides[axis] * shape[axis];
      index[axis] = 0;
    }
  }
}

}  // namespace nnlib::importer

#endif
