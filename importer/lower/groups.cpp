// SPDX-License-Identifier: MIT
#include "importer/lower/groups.hpp"

#include <algorithm>
#include <numeric>

namespace nnlib::importer {
namespace {

uint32_t product(const Shape& shape, size_t begin, size_t end) {
  return static_cast<uint32_t>(std::accumulate(shape.begin() + static_cast<ptrdiff_t>(begin),
                                               shape.begin() + static_cast<ptrdiff_t>(end),
                                               int64_t{1}, std::multiplies<>()));
}

// Groups from the outermost on as C, W, H with the innermost as C.
Dims three(const std::vector<uint32_t>& groups) {
  Dims dims;
  uint32_t* const into[] = {&dims.c, &dims.w, &dims.h};
  for (size_t i = 0; i < groups.size(); ++i) {
    *into[i] = groups[groups.size() - 1 - i];
  }
  return dims;
}

// The same with N innermost where there are four.
Dims four(const std::vector<uint32_t>& groups) {
  if (groups.size() < 4) {
    return three(groups);
  }
  return {groups[3], groups[2], groups[1], groups[0]};
}

// Which AI_SHAPE_* each of `count` groups is, from the outermost on.
std::vector<uint32_t> axes_of(size_t count) {
  std::vector<uint32_t> axes;
  for (size_t i = 0; i < count; ++i) {
    axes.push_back(static_cast<uint32_t>(count < 4 ? count - i : 3 - i));
  }
  return axes;
}

Shape padded(const Shape& shape, size_t rank) {
  Shape out(rank - std::min(rank, shape.size()), 1);
  out.insert(out.end(), shape.begin(), shape.end());
  return out;
}

}  // namespace

Around around(const Shape& shape, size_t axis) {
  return {product(shape, 0, axis), static_cast<uint32_t>(shape.at(axis)),
          product(shape, axis + 1, shape.size())};
}

std::optional<BroadcastDims> broadcast_dims(const Shape& a, const Shape& b, const Shape& out) {
  const size_t rank = std::max({a.size(), b.size(), out.size()});
  const Shape pa = padded(a, rank);
  const Shape pb = padded(b, rank);
  const Shape po = padded(out, rank);
  std::vector<uint32_t> ga, gb, go;
  int last = -1;
  for (size_t i = 0; i < rank; ++i) {
    if (std::max(pa[i], pb[i]) != po[i] || (pa[i] != po[i] && pa[i] != 1) ||
        (pb[i] != po[i] && pb[i] != 1)) {
      return std::nullopt;
    }
    if (po[i] == 1) {
      continue;
    }
    const int kind = (pa[i] == 1 ? 1 : 0) + (pb[i] == 1 ? 2 : 0);
    if (kind != last) {
      ga.push_back(1);
      gb.push_back(1);
      go.push_back(1);
      last = kind;
    }
    ga.back() *= static_cast<uint32_t>(pa[i]);
    gb.back() *= static_cast<uint32_t>(pb[i]);
    go.back() *= static_cast<uint32_t>(po[i]);
  }
  if (go.size() > 3) {
    return std::nullopt;
  }
  return BroadcastDims{three(ga), three(gb), three(go)};
}

std::optional<ReduceDims> reduce_dims(const Shape& shape, const std::vector<int64_t>& axes) {
  std::vector<uint32_t> in, out;
  int last = -1;
  for (size_t i = 0; i < shape.size(); ++i) {
    if (shape[i] == 1) {
      continue;
    }
    const bool reduced = std::find(axes.begin(), axes.end(), static_cast<int64_t>(i)) != axes.end();
    if (reduced != (last == 1) || last < 0) {
      in.push_back(1);
      out.push_back(1);
      last = reduced ? 1 : 0;
    }
    in.back() *= static_cast<uint32_t>(shape[i]);
    out.back() *= reduced ? 1 : static_cast<uint32_t>(shape[i]);
  }
  if (in.size() > 3) {
    return std::nullopt;
  }
  return ReduceDims{three(in), three(out)};
}

std::optional<TransposeDims> transpose_dims(const Shape& shape, const std::vector<int64_t>& perm) {
  // Dimensions in the order of the output without those of size 1.
  std::vector<size_t> order;
  for (const int64_t p : perm) {
    if (shape.at(static_cast<size_t>(p)) != 1) {
      order.push_back(static_cast<size_t>(p));
    }
  }
  const auto follows = [&shape](size_t a, size_t b) {  // with only ones between them
    return a < b && product(shape, a + 1, b) == 1;
  };
  std::vector<std::pair<size_t, uint32_t>> output_groups;  // first input dimension, size
  size_t previous = 0;
  for (const size_t d : order) {
    if (!output_groups.empty() && follows(previous, d)) {
      output_groups.back().second *= static_cast<uint32_t>(shape[d]);
    } else {
      output_groups.emplace_back(d, static_cast<uint32_t>(shape[d]));
    }
    previous = d;
  }
  const size_t count = output_groups.size();
  if (count > 4) {
    return std::nullopt;
  }
  auto input_groups = output_groups;
  std::sort(input_groups.begin(), input_groups.end());
  const std::vector<uint32_t> axes = axes_of(count);
  std::vector<uint32_t> in, out;
  TransposeDims result;
  result.perm = {0, 1, 2, 3};
  for (size_t i = 0; i < count; ++i) {
    in.push_back(input_groups[i].second);
    out.push_back(output_groups[i].second);
    const auto source =
        static_cast<size_t>(std::find(input_groups.begin(), input_groups.end(), output_groups[i]) -
                            input_groups.begin());
    result.perm[axes[i]] = axes[source];
  }
  result.in = four(in);
  result.out = four(out);
  return result;
}

std::optional<SliceDims> slice_dims(const Shape& shape, const std::vector<int64_t>& starts,
                                    const std::vector<int64_t>& ends) {
  struct Group {
    uint32_t size, start, end;
    bool full() const { return start == 0 && end == size; }
  };
  std::vector<Group> groups;
  for (size_t i = 0; i < shape.size(); ++i) {
    const Group g = {static_cast<uint32_t>(shape[i]), static_cast<uint32_t>(starts[i]),
                     static_cast<uint32_t>(ends[i])};
    if (g.size == 1 && g.full()) {
      continue;
    }
    if (!groups.empty() && g.full()) {
      Group& before = groups.back();
      before = {before.size * g.size, before.start * g.size, before.end * g.size};
    } else {
      groups.push_back(g);
    }
  }
  if (groups.size() > 4) {
    return std::nullopt;
  }
  const std::vector<uint32_t> axes = axes_of(groups.size());
  std::vector<uint32_t> in, out;
  SliceDims result;
  result.starts = {0, 0, 0, 0};
  result.ends = {1, 1, 1, 1};
  for (size_t i = 0; i < groups.size(); ++i) {
    in.push_back(groups[i].size);
    out.push_back(groups[i].end - groups[i].start);
    result.starts[axes[i]] = static_cast<int32_t>(groups[i].start);
    result.ends[axes[i]] = static_cast<int32_t>(groups[i].end);
  }
  result.in = four(in);
  result.out = four(out);
  return result;
}

}  // namespace nnlib::importer
