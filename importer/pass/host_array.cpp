// SPDX-License-Identifier: MIT
#include "importer/pass/host_array.hpp"

#include <algorithm>
#include <stdexcept>

namespace nnlib::importer {
namespace {

constexpr int64_t max_products = int64_t{1} << 32;

// The elements of x at start + sums of index * stride, over `shape`.
HostArray gathered(const HostArray& x, const Shape& shape, const Shape& strides,
                   int64_t start = 0) {
  HostArray out{shape, {}};
  out.data.reserve(static_cast<size_t>(element_count(shape)));
  for_each_offset(shape, strides, start,
                  [&](int64_t offset) { out.data.push_back(x.data[static_cast<size_t>(offset)]); });
  return out;
}

void require_rank(const Shape& numbers, const HostArray& x) {
  if (numbers.size() != x.shape.size()) {
    throw std::runtime_error("not one number for each axis");
  }
}

}  // namespace

HostArray map_array(const HostArray& x, const std::function<double(double)>& function) {
  HostArray out = x;
  std::transform(x.data.begin(), x.data.end(), out.data.begin(), function);
  return out;
}

HostArray zip_arrays(const HostArray& a, const HostArray& b, double (*function)(double, double)) {
  const Shape shape = broadcast(a.shape, b.shape);
  HostArray out = expand_array(a, shape);
  const HostArray other = expand_array(b, shape);
  std::transform(out.data.begin(), out.data.end(), other.data.begin(), out.data.begin(), function);
  return out;
}

HostArray reduce_array(const HostArray& x, const Shape& axes, bool keepdims, double start,
                       double (*function)(double, double)) {
  Shape kept = x.shape;
  for (const int64_t axis : axes) {
    kept[static_cast<size_t>(normal_axis(axis, kept.size()))] = 1;
  }
  HostArray out{kept, std::vector<double>(static_cast<size_t>(element_count(kept)), start)};
  size_t next = 0;
  for_each_offset(x.shape, broadcast_strides(kept, x.shape), 0, [&](int64_t offset) {
    double& folded = out.data[static_cast<size_t>(offset)];
    folded = function(folded, x.data[next++]);
  });
  if (!keepdims) {
    out.shape.clear();
    for (size_t axis = 0; axis < kept.size(); ++axis) {
      const bool folded = std::any_of(axes.begin(), axes.end(), [&](int64_t a) {
        return normal_axis(a, kept.size()) == static_cast<int64_t>(axis);
      });
      if (!folded) {
        out.shape.push_back(kept[axis]);
      }
    }
  }
  return out;
}

HostArray reshape_array(const HostArray& x, const Shape& shape) {
  if (element_count(shape) != static_cast<int64_t>(x.data.size())) {
    throw std::runtime_error("reshape to another number of elements");
  }
  return {shape, x.data};
}

HostArray transpose_array(const HostArray& x, const Shape& perm) {
  require_permutation(perm, x.shape.size());
  return gathered(x, permuted(x.shape, perm), permuted(row_major_strides(x.shape), perm));
}

HostArray expand_array(const HostArray& x, const Shape& shape) {
  element_count(shape);
  return x.shape == shape ? x : gathered(x, shape, broadcast_strides(x.shape, shape));
}

HostArray tile_array(const HostArray& x, const Shape& repeats) {
  require_rank(repeats, x);
  // Each axis in two: its repetitions, which stay in place, and itself.
  Shape split;
  Shape strides;
  Shape shape;
  const Shape own = row_major_strides(x.shape);
  for (size_t axis = 0; axis < repeats.size(); ++axis) {
    split.insert(split.end(), {repeats[axis], x.shape[axis]});
    strides.insert(strides.end(), {0, own[axis]});
    shape.push_back(repeats[axis] * x.shape[axis]);
  }
  element_count(split);
  HostArray out = gathered(x, split, strides);
  out.shape = shape;
  return out;
}

HostArray concat_arrays(const std::vector<const HostArray*>& parts, int64_t axis) {
  HostArray out = *parts.at(0);
  const auto a = static_cast<size_t>(normal_axis(axis, out.shape.size()));
  for (size_t i = 1; i < parts.size(); ++i) {
    Shape shape = parts[i]->shape;
    if (shape.size() != out.shape.size()) {
      throw std::runtime_error("concatenation of different ranks");
    }
    out.shape[a] += shape[a];
    shape[a] = out.shape[a];
    if (shape != out.shape) {
      throw std::runtime_error("concatenation of tensors that differ in another axis");
    }
  }
  const int64_t count = element_count(out.shape);
  out.data.clear();
  out.data.reserve(static_cast<size_t>(count));
  int64_t outer = 1;
  for (size_t i = 0; i < a; ++i) {
    outer *= out.shape[i];
  }
  for (int64_t o = 0; o < outer && count > 0; ++o) {
    for (const HostArray* part : parts) {
      const auto run = static_cast<int64_t>(part->data.size()) / outer;
      out.data.insert(out.data.end(), part->data.begin() + o * run,
                      part->data.begin() + (o + 1) * run);
    }
  }
  return out;
}

HostArray slice_array(const HostArray& x, const Shape& starts, const Shape& sizes,
                      const Shape& steps) {
  require_rank(starts, x);
  require_rank(sizes, x);
  require_rank(steps, x);
  Shape strides = row_major_strides(x.shape);
  int64_t start = 0;
  for (size_t axis = 0; axis < starts.size(); ++axis) {
    const int64_t last = starts[axis] + (sizes[axis] - 1) * steps[axis];
    if (sizes[axis] > 0 &&
        (starts[axis] < 0 || starts[axis] >= x.shape[axis] || last < 0 || last >= x.shape[axis])) {
      throw std::runtime_error("slice outside the tensor");
    }
    start += starts[axis] * strides[axis];
    strides[axis] *= steps[axis];
  }
  return gathered(x, sizes, strides, start);
}

HostArray pad_array(const HostArray& x, const Shape& before, const Shape& after, double value) {
  require_rank(before, x);
  require_rank(after, x);
  HostArray out{x.shape, {}};
  for (size_t axis = 0; axis < before.size(); ++axis) {
    out.shape[axis] += before[axis] + after[axis];
  }
  out.data.assign(static_cast<size_t>(element_count(out.shape)), value);
  const Shape strides = row_major_strides(out.shape);
  Shape index(x.shape.size(), 0);
  for (const double element : x.data) {
    int64_t offset = 0;
    bool inside = true;
    for (size_t axis = 0; axis < index.size(); ++axis) {
      const int64_t at = index[axis] + before[axis];
      inside = inside && at >= 0 && at < out.shape[axis];
      offset += at * strides[axis];
    }
    if (inside) {
      out.data[static_cast<size_t>(offset)] = element;
    }
    for (size_t axis = index.size(); axis-- > 0;) {
      if (++index[axis] < x.shape[axis]) {
        break;
      }
      index[axis] = 0;
    }
  }
  return out;
}

HostArray gather_array(const HostArray& x, const HostArray& indices, int64_t axis) {
  const auto a = static_cast<size_t>(normal_axis(axis, x.shape.size()));
  Shape shape(x.shape.begin(), x.shape.begin() + static_cast<std::ptrdiff_t>(a));
  shape.insert(shape.end(), indices.shape.begin(), indices.shape.end());
  shape.insert(shape.end(), x.shape.begin() + static_cast<std::ptrdiff_t>(a) + 1, x.shape.end());
  HostArray out{shape, {}};
  out.data.reserve(static_cast<size_t>(element_count(shape)));
  const int64_t inner = row_major_strides(x.shape)[a];
  const int64_t block = inner * x.shape[a];
  const int64_t outer = block == 0 ? 0 : static_cast<int64_t>(x.data.size()) / block;
  for (int64_t o = 0; o < outer; ++o) {
    for (const double index : indices.data) {
      if (!(index >= -static_cast<double>(x.shape[a]) && index < static_cast<double>(x.shape[a]))) {
        throw std::runtime_error("gather index outside the axis");
      }
      const int64_t i = static_cast<int64_t>(index) + (index < 0 ? x.shape[a] : 0);
      const auto from = x.data.begin() + o * block + i * inner;
      out.data.insert(out.data.end(), from, from + inner);
    }
  }
  return out;
}

HostArray matmul_arrays(const HostArray& a, const HostArray& b) {
  if (a.shape.size() < 2 || b.shape.size() < 2 || a.shape.back() != b.shape.end()[-2]) {
    throw std::runtime_error("matrices that cannot be multiplied");
  }
  const int64_t rows = a.shape.end()[-2];
  const int64_t inner = a.shape.back();
  const int64_t columns = b.shape.back();
  Shape lead =
      broadcast({a.shape.begin(), a.shape.end() - 2}, {b.shape.begin(), b.shape.end() - 2});
  const int64_t blocks = element_count(lead);
  if (element_count({blocks, rows, columns}) * std::max<int64_t>(inner, 1) > max_products) {
    throw std::runtime_error("a constant matrix product of more than 2^32 multiplications");
  }
  const auto widened = [&](const HostArray& x) {
    Shape shape = lead;
    shape.insert(shape.end(), x.shape.end() - 2, x.shape.end());
    return expand_array(x, shape);
  };
  const HostArray left = widened(a);
  const HostArray right = widened(b);
  lead.insert(lead.end(), {rows, columns});
  HostArray out{lead, std::vector<double>(static_cast<size_t>(element_count(lead)), 0.0)};
  for (int64_t block = 0; block < blocks; ++block) {
    for (int64_t row = 0; row < rows; ++row) {
      double* to = out.data.data() + (block * rows + row) * columns;
      for (int64_t k = 0; k < inner; ++k) {
        const double factor = left.data[static_cast<size_t>((block * rows + row) * inner + k)];
        const double* from = right.data.data() + (block * inner + k) * columns;
        for (int64_t column = 0; column < columns; ++column) {
          to[column] += factor * from[column];
        }
      }
    }
  }
  return out;
}

}  // namespace nnlib::importer
