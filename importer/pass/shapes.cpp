// SPDX-License-Identifier: MIT
#include "importer/pass/shapes.hpp"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace nnlib::importer {

int64_t element_count(const Shape& shape) {
  int64_t count = 1;
  bool empty = false;
  for (const int64_t size : shape) {
    if (size < 0) {
      throw std::runtime_error("negative size in a shape");
    }
    empty = empty || size == 0;
    if (size > max_elements || count * std::max<int64_t>(size, 1) > max_elements) {
      throw std::runtime_error("a tensor of more than " + std::to_string(max_elements) +
                               " elements");
    }
    count *= std::max<int64_t>(size, 1);
  }
  return empty ? 0 : count;
}

Shape row_major_strides(const Shape& shape) {
  Shape strides(shape.size(), 1);
  for (size_t axis = shape.size(); axis-- > 1;) {
    strides[axis - 1] = strides[axis] * shape[axis];
  }
  return strides;
}

Shape broadcast_strides(const Shape& shape, const Shape& target) {
  if (shape.size() > target.size()) {
    throw std::runtime_error("a tensor of rank " + std::to_string(shape.size()) +
                             " does not broadcast to rank " + std::to_string(target.size()));
  }
  const Shape own = row_major_strides(shape);
  const size_t lead = target.size() - shape.size();
  Shape strides(target.size(), 0);
  for (size_t axis = 0; axis < shape.size(); ++axis) {
    if (shape[axis] != 1) {
      if (shape[axis] != target[lead + axis]) {
        throw std::runtime_error("sizes " + std::to_string(shape[axis]) + " and " +
                                 std::to_string(target[lead + axis]) + " do not broadcast");
      }
      strides[lead + axis] = own[axis];
    }
  }
  return strides;
}

Shape broadcast(const Shape& a, const Shape& b) {
  const Shape& longer = a.size() >= b.size() ? a : b;
  const Shape& shorter = a.size() >= b.size() ? b : a;
  Shape out = longer;
  const size_t lead = longer.size() - shorter.size();
  for (size_t axis = 0; axis < shorter.size(); ++axis) {
    int64_t& size = out[lead + axis];
    if (size != shorter[axis]) {
      if (size != 1 && shorter[axis] != 1) {
        throw std::runtime_error("sizes " + std::to_string(size) + " and " +
                                 std::to_string(shorter[axis]) + " do not broadcast");
      }
      size = size == 1 ? shorter[axis] : size;
    }
  }
  return out;
}

int64_t normal_axis(int64_t axis, size_t rank) {
  const auto signed_rank = static_cast<int64_t>(rank);
  if (axis < -signed_rank || axis >= signed_rank) {
    throw std::runtime_error("axis " + std::to_string(axis) + " of a tensor of rank " +
                             std::to_string(rank));
  }
  return axis < 0 ? axis + signed_rank : axis;
}

Shape permuted(const Shape& shape, const Shape& perm) {
  Shape out;
  for (const int64_t axis : perm) {
    out.push_back(shape[static_cast<size_t>(axis)]);
  }
  return out;
}

Shape inverse_permutation(const Shape& perm) {
  Shape inverse(perm.size());
  for (size_t i = 0; i < perm.size(); ++i) {
    inverse[static_cast<size_t>(perm[i])] = static_cast<int64_t>(i);
  }
  return inverse;
}

void require_permutation(const Shape& perm, size_t rank) {
  Shape sorted = perm;
  std::sort(sorted.begin(), sorted.end());
  bool whole = sorted.size() == rank;
  for (size_t i = 0; whole && i < rank; ++i) {
    whole = sorted[i] == static_cast<int64_t>(i);
  }
  if (!whole) {
    throw std::runtime_error("a permutation that does not have every axis once");
  }
}

}  // namespace nnlib::importer
