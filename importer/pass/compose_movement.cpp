// SPDX-License-Identifier: MIT
// Movement of elements out of reshapes, slices and transpositions that layers do.
#include <algorithm>
#include <functional>

#include "importer/pass/compose.hpp"
#include "importer/pass/host_math.hpp"

namespace nnlib::importer {
namespace {

// Rows of a constant list of indices: neighbours together, at most so many pieces.
constexpr size_t kMostPieces = 256;

ValueId pieces(GraphBuilder& b, ValueId x, int64_t axis, const std::vector<int64_t>& indices) {
  std::vector<ValueId> parts;
  for (size_t i = 0; i < indices.size();) {
    size_t end = i + 1;
    while (end < indices.size() && indices[end] == indices[end - 1] + 1) {
      ++end;
    }
    parts.push_back(b.narrow(x, axis, indices[i], static_cast<int64_t>(end - i)));
    if (parts.size() > kMostPieces) {
      return kAbsent;
    }
    i = end;
  }
  return b.concat(parts, axis);
}

ValueId gather(GraphBuilder& b, const Node& node) {
  const ValueId x = node.input(0);
  const int64_t axis = node.integer("axis");
  if (!b.constant(node.input(1)) || b.value(node.output()).elements() == 0) {
    return kAbsent;
  }
  std::vector<int64_t> indices = to_integers(b.value(node.input(1)));
  const int64_t size = b.shape(x)[static_cast<size_t>(axis)];
  for (int64_t& index : indices) {
    index += index < 0 ? size : 0;
    if (index < 0 || index >= size) {
      return kAbsent;
    }
  }
  const ValueId rows = pieces(b, x, axis, indices);
  return rows == kAbsent ? kAbsent : b.reshape(rows, Shape(b.shape(node.output())));
}

// Every step-th element: whole steps as an axis of their own, of which the first index is kept.
ValueId strided(GraphBuilder& b, ValueId x, int64_t axis, int64_t start, int64_t count,
                int64_t step) {
  const auto a = static_cast<size_t>(axis);
  const int64_t size = b.shape(x)[a];
  const int64_t whole = start + count * step <= size ? count : count - 1;
  std::vector<ValueId> parts;
  if (whole > 0) {
    const ValueId run = b.narrow(x, axis, start, whole * step);
    Shape split = b.shape(run);
    split[a] = whole;
    split.insert(split.begin() + axis + 1, step);
    const ValueId first = b.narrow(b.reshape(run, split), axis + 1, 0, 1);
    split.erase(split.begin() + axis + 1);
    parts.push_back(b.reshape(first, split));
  }
  if (whole < count) {
    parts.push_back(b.narrow(x, axis, start + whole * step, 1));
  }
  return b.concat(parts, axis);
}

ValueId slice(GraphBuilder& b, const Node& node) {
  const Shape starts = node.integers("starts");
  const Shape steps = node.integers("steps", Shape(starts.size(), 1));
  const Shape out = b.shape(node.output());
  const bool plain = std::all_of(steps.begin(), steps.end(), [](int64_t s) { return s == 1; });
  const auto cut = std::count_if(starts.begin(), starts.end(), [&](const int64_t& start) {
    const auto axis = static_cast<size_t>(&start - starts.data());
    return out[axis] != b.shape(node.input(0))[axis];
  });
  if ((plain && cut <= 3) || b.value(node.output()).elements() == 0) {
    return kAbsent;
  }
  ValueId y = node.input(0);
  for (size_t axis = 0; axis < starts.size(); ++axis) {
    const auto a = static_cast<int64_t>(axis);
    if (steps[axis] == 1) {
      y = b.narrow(y, a, starts[axis], out[axis]);
    } else if (steps[axis] > 0) {
      y = strided(b, y, a, starts[axis], out[axis], steps[axis]);
    } else {
      std::vector<int64_t> indices;
      for (int64_t i = 0; i < out[axis]; ++i) {
        indices.push_back(starts[axis] + i * steps[axis]);
      }
      y = pieces(b, y, a, indices);
      if (y == kAbsent) {
        return kAbsent;
      }
    }
  }
  return y;
}

// Maps [N, H, W, C]; the order says which part of the channels is the block.
ValueId depth_to_space(GraphBuilder& b, const Node& node) {
  const Shape s = b.shape(node.input(0));
  const int64_t k = node.integer("block");
  const bool crd = node.text("order", "dcr") == "crd";
  const int64_t depth = s[3] / (k * k);
  const Shape split =
      crd ? Shape{s[0], s[1], s[2], depth, k, k} : Shape{s[0], s[1], s[2], k, k, depth};
  const ValueId moved = b.transpose(b.reshape(node.input(0), split),
                                    crd ? Shape{0, 1, 4, 2, 5, 3} : Shape{0, 1, 3, 2, 4, 5});
  return b.reshape(moved, Shape(b.shape(node.output())));
}

ValueId space_to_depth(GraphBuilder& b, const Node& node) {
  const Shape s = b.shape(node.input(0));
  const int64_t k = node.integer("block");
  const ValueId split = b.reshape(node.input(0), {s[0], s[1] / k, k, s[2] / k, k, s[3]});
  return b.reshape(b.transpose(split, {0, 1, 3, 2, 4, 5}), Shape(b.shape(node.output())));
}

ValueId expand(GraphBuilder& b, const Node& node) {
  const Shape out = b.shape(node.output());
  const Shape from = b.shape(node.input(0));
  Shape wide(out.size() - from.size(), 1);
  wide.insert(wide.end(), from.begin(), from.end());
  Shape repeats;
  for (size_t axis = 0; axis < out.size(); ++axis) {
    repeats.push_back(wide[axis] == out[axis] ? 1 : out[axis]);
  }
  return b.tile(b.reshape(node.input(0), wide), repeats);
}

// Negative pads cut off; what is left pads.
ValueId pad(GraphBuilder& b, const Node& node) {
  Shape pads = node.integers("pads");
  const Shape from = b.shape(node.input(0));
  const size_t rank = from.size();
  if (std::none_of(pads.begin(), pads.end(), [](int64_t p) { return p < 0; })) {
    return kAbsent;
  }
  Shape starts;
  Shape ends;
  for (size_t axis = 0; axis < rank; ++axis) {
    starts.push_back(std::max<int64_t>(-pads[axis], 0));
    ends.push_back(from[axis] - std::max<int64_t>(-pads[rank + axis], 0));
  }
  for (int64_t& p : pads) {
    p = std::max<int64_t>(p, 0);
  }
  const ValueId cut = b.slice(node.input(0), starts, ends, Shape(rank, 1));
  return b.pad(cut, pads, node.text("mode", "constant"), node.number("value"));
}

// Groups of neighbouring axes that stay together, axes of size 1 aside.
size_t moved_groups(const Shape& shape, const Shape& perm) {
  size_t groups = 0;
  int64_t next = -1;
  for (const int64_t axis : perm) {
    if (shape[static_cast<size_t>(axis)] == 1) {
      continue;
    }
    groups += axis == next ? 0 : 1;
    next = axis + 1;
    while (next < static_cast<int64_t>(shape.size()) && shape[static_cast<size_t>(next)] == 1) {
      ++next;
    }
  }
  return groups;
}

// More groups than one layer moves: one axis of the result after the other comes to its place.
ValueId transpose(GraphBuilder& b, const Node& node) {
  const Shape perm = node.integers("perm");
  if (moved_groups(b.shape(node.input(0)), perm) <= 4) {
    return kAbsent;
  }
  ValueId y = node.input(0);
  Shape order;  // which axis of the input each axis of y is
  for (size_t i = 0; i < perm.size(); ++i) {
    order.push_back(static_cast<int64_t>(i));
  }
  for (size_t to = 0; to < perm.size(); ++to) {
    const auto at = std::find(order.begin(), order.end(), perm[to]);
    const auto from = static_cast<int64_t>(at - order.begin());
    if (from == static_cast<int64_t>(to)) {
      continue;
    }
    Shape step;
    for (size_t i = 0; i < perm.size(); ++i) {
      step.push_back(static_cast<int64_t>(i));
    }
    step.erase(step.begin() + from);
    step.insert(step.begin() + static_cast<std::ptrdiff_t>(to), from);
    y = b.transpose(y, step);
    order = permuted(order, step);
  }
  return y;
}

// Which operands repeat along each axis, in so many groups.
size_t broadcast_groups(const Shape& a, const Shape& c, const Shape& out) {
  size_t groups = 0;
  int last = -1;
  for (size_t axis = 0; axis < out.size(); ++axis) {
    const auto size = [&](const Shape& s) {
      const size_t lead = out.size() - s.size();
      return axis < lead ? 1 : s[axis - lead];
    };
    if (out[axis] == 1) {
      continue;
    }
    const int kind = (size(a) == 1 ? 1 : 0) + (size(c) == 1 ? 2 : 0);
    groups += kind == last ? 0 : 1;
    last = kind;
  }
  return groups;
}

ValueId broadcast_less(GraphBuilder& b, const Node& node) {
  const Shape out = b.shape(node.output());
  if (node.inputs.size() != 2 ||
      broadcast_groups(b.shape(node.input(0)), b.shape(node.input(1)), out) <= 3) {
    return kAbsent;
  }
  std::vector<ValueId> inputs = node.inputs;
  const size_t smaller = b.value(inputs[0]).elements() < b.value(inputs[1]).elements() ? 0 : 1;
  inputs[smaller] = b.expand(inputs[smaller], out);
  return b.emit(node.op, inputs, b.value(node.output()).type, out, node.attributes,
                b.value(node.output()).quantization);
}

// One product for each matrix of the batch: operands that repeat along it are repeated before.
ValueId matmul(GraphBuilder& b, const Node& node) {
  const Shape out = b.shape(node.output());
  std::vector<ValueId> inputs;
  bool changed = false;
  for (const ValueId id : node.inputs) {
    Shape wanted(out.begin(), out.end() - 2);
    const Shape& own = b.shape(id);
    wanted.insert(wanted.end(), own.end() - 2, own.end());
    const bool fits = element_count(wanted) == b.value(id).elements();
    changed = changed || !fits;
    inputs.push_back(fits ? id : b.expand(id, wanted));
  }
  return changed ? b.matmul(inputs[0], inputs[1]) : kAbsent;
}

constexpr CompositionRow kMovementRows[] = {
    {Op::gather, gather},
    {Op::slice, slice},
    {Op::depth_to_space, depth_to_space},
    {Op::space_to_depth, space_to_depth},
    {Op::expand, expand},
    {Op::pad, pad},
    {Op::transpose, transpose},
    {Op::matmul, matmul},
    {Op::add, broadcast_less},
    {Op::sub, broadcast_less},
    {Op::mul, broadcast_less},
    {Op::div, broadcast_less},
    {Op::maximum, broadcast_less},
    {Op::minimum, broadcast_less},
};

}  // namespace

std::span<const CompositionRow> movement_compositions() {
  return kMovementRows;
}

}  // namespace nnlib::importer
