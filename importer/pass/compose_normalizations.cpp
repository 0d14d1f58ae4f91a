// SPDX-License-Identifier: MIT
// Reductions and normalizations out of reductions that layers compute.
#include <algorithm>

#include "importer/pass/compose.hpp"

namespace nnlib::importer {
namespace {

ValueId sum(GraphBuilder& b, const Node& node, ValueId x) {
  return b.reduce(Op::reduce_sum, x, node.integers("axes"),
                  b.shape(node.output()).size() == b.shape(x).size());
}

ValueId mean(GraphBuilder& b, const Node& node) {
  const ValueId total = sum(b, node, node.input(0));
  const double count = static_cast<double>(b.value(node.input(0)).elements()) /
                       static_cast<double>(b.value(node.output()).elements());
  return b.binary(Op::mul, total, 1 / count);
}
ValueId l1(GraphBuilder& b, const Node& node) {
  return sum(b, node, b.unary(Op::abs, node.input(0)));
}
ValueId sum_square(GraphBuilder& b, const Node& node) {
  return sum(b, node, b.unary(Op::square, node.input(0)));
}
ValueId l2(GraphBuilder& b, const Node& node) {
  return b.unary(Op::sqrt, sum_square(b, node));
}
ValueId log_sum(GraphBuilder& b, const Node& node) {
  return b.unary(Op::log, sum(b, node, node.input(0)));
}

// The largest exponent is taken out, so that nothing overflows.
ValueId log_sum_exp(GraphBuilder& b, const Node& node) {
  const ValueId x = node.input(0);
  const Shape axes = node.integers("axes");
  const ValueId largest = b.reduce(Op::reduce_max, x, axes, true);
  const ValueId rest = b.unary(Op::exp, b.binary(Op::sub, x, largest));
  const ValueId logarithm = b.unary(Op::log, b.reduce(Op::reduce_sum, rest, axes, true));
  return b.reshape(b.binary(Op::add, logarithm, largest), Shape(b.shape(node.output())));
}

ValueId log_softmax(GraphBuilder& b, const Node& node) {
  const ValueId x = node.input(0);
  const Shape axes{node.integer("axis")};
  const ValueId below = b.binary(Op::sub, x, b.reduce(Op::reduce_max, x, axes, true));
  const ValueId total = b.reduce(Op::reduce_sum, b.unary(Op::exp, below), axes, true);
  return b.binary(Op::sub, below, b.unary(Op::log, total));
}

// A layer along the last axis, with the axis brought there and back.
ValueId along_last(GraphBuilder& b, const Node& node) {
  const ValueId x = node.input(0);
  const auto last = static_cast<int64_t>(b.shape(x).size()) - 1;
  const int64_t axis = node.integer("axis", last);
  if (axis == last) {
    return kAbsent;
  }
  Shape swap;
  for (int64_t i = 0; i <= last; ++i) {
    swap.push_back(i == axis ? last : i == last ? axis : i);
  }
  Attributes attributes = node.attributes;
  attributes["axis"] = last;
  const ValueId turned = b.transpose(x, swap);
  const ValueId y = b.emit(node.op, {turned}, b.value(node.output()).type, Shape(b.shape(turned)),
                           attributes, b.value(node.output()).quantization);
  return b.transpose(y, swap);
}

ValueId layer_norm(GraphBuilder& b, const Node& node) {
  const ValueId x = node.input(0);
  Shape axes;
  for (int64_t axis = node.integer("axis"); axis < b.value(x).rank(); ++axis) {
    axes.push_back(axis);
  }
  const ValueId centred = b.binary(Op::sub, x, b.reduce(Op::reduce_mean, x, axes, true));
  const ValueId variance = b.reduce(Op::reduce_mean, b.unary(Op::square, centred), axes, true);
  const ValueId factor =
      b.unary(Op::rsqrt, b.binary(Op::add, variance, node.number("epsilon", 1e-5)));
  ValueId y = b.binary(Op::mul, centred, factor);
  if (node.input(1) != kAbsent) {
    y = b.binary(Op::mul, y, node.input(1));
  }
  return node.input(2) == kAbsent ? y : b.binary(Op::add, y, node.input(2));
}

// More groups of axes than one layer folds: the last group first.
ValueId reduction(GraphBuilder& b, const Node& node) {
  const Shape axes = node.integers("axes");
  const Shape& shape = b.shape(node.input(0));
  int groups = 0;
  int state = -1;
  Shape last;
  for (int64_t axis = 0; axis < static_cast<int64_t>(shape.size()); ++axis) {
    if (shape[static_cast<size_t>(axis)] == 1) {
      continue;
    }
    const bool folded = std::find(axes.begin(), axes.end(), axis) != axes.end();
    if (static_cast<int>(folded) != state) {
      state = static_cast<int>(folded);
      ++groups;
      if (folded) {
        last.clear();
      }
    }
    if (folded) {
      last.push_back(axis);
    }
  }
  if (groups <= 3) {
    return kAbsent;
  }
  Shape rest;
  for (const int64_t axis : axes) {
    if (std::find(last.begin(), last.end(), axis) == last.end()) {
      rest.push_back(axis);
    }
  }
  const ValueId partly = b.reduce(node.op, node.input(0), last, true);
  const ValueId all = b.reduce(node.op, partly, rest, true);
  return b.reshape(all, Shape(b.shape(node.output())));
}

constexpr CompositionRow kNormalizationRows[] = {
    {Op::reduce_mean, mean},
    {Op::reduce_l1, l1},
    {Op::reduce_l2, l2},
    {Op::reduce_sum_square, sum_square},
    {Op::reduce_log_sum, log_sum},
    {Op::reduce_log_sum_exp, log_sum_exp},
    {Op::log_softmax, log_softmax},
    {Op::softmax, along_last},
    {Op::hardmax, along_last},
    {Op::layer_norm, layer_norm},
    {Op::reduce_sum, reduction},
    {Op::reduce_prod, reduction},
    {Op::reduce_max, reduction},
    {Op::reduce_min, reduction},
};

}  // namespace

std::span<const CompositionRow> normalization_compositions() {
  return kNormalizationRows;
}

}  // namespace nnlib::importer
