// SPDX-License-Identifier: MIT
// Functions of one or two tensors out of simpler ones.
#include <cmath>

#include "importer/pass/compose.hpp"

namespace nnlib::importer {
namespace {

bool is_float(const GraphBuilder& b, const Node& node) {
  return b.value(node.input(0)).type == Type::f32 && b.value(node.output()).type == Type::f32;
}

ValueId clip01(GraphBuilder& b, ValueId x) {
  return b.unary(Op::clip, x, {{"min", 0.0}, {"max", 1.0}});
}

ValueId line(GraphBuilder& b, ValueId x, double slope, double offset) {
  return b.binary(Op::add, b.binary(Op::mul, x, slope), offset);
}

ValueId hard_sigmoid(GraphBuilder& b, const Node& node) {
  const double alpha = node.number("alpha", 0.2);
  const double beta = node.number("beta", 0.5);
  const bool layer = static_cast<float>(alpha) == 0.2F && static_cast<float>(beta) == 0.5F;
  return layer || !is_float(b, node) ? kAbsent : clip01(b, line(b, node.input(0), alpha, beta));
}

ValueId hard_swish(GraphBuilder& b, const Node& node) {
  return is_float(b, node)
             ? b.binary(Op::mul, node.input(0), clip01(b, line(b, node.input(0), 1.0 / 6, 0.5)))
             : kAbsent;
}

// alpha elu(x / alpha), which is x above 0.
ValueId celu(GraphBuilder& b, const Node& node) {
  if (!is_float(b, node)) {
    return kAbsent;
  }
  const double alpha = node.number("alpha", 1);
  const ValueId inner = b.binary(Op::div, node.input(0), alpha);
  return b.binary(Op::mul, b.unary(Op::elu, inner, {{"alpha", 1.0}}), alpha);
}

ValueId square(GraphBuilder& b, const Node& node) {
  return is_float(b, node) ? b.binary(Op::mul, node.input(0), node.input(0)) : kAbsent;
}

// max(x, 0) + slope min(x, 0), where the slopes do not repeat as the layer's do.
ValueId prelu(GraphBuilder& b, const Node& node) {
  const Shape x = b.shape(node.input(0));
  Shape slopes = b.shape(node.input(1));
  while (!slopes.empty() && slopes.front() == 1) {
    slopes.erase(slopes.begin());
  }
  const bool layer = b.constant(node.input(1)) && slopes.size() <= x.size() &&
                     std::equal(slopes.rbegin(), slopes.rend(), x.rbegin());
  if (layer || !is_float(b, node)) {
    return kAbsent;
  }
  const ValueId below = b.binary(Op::minimum, node.input(0), b.scalar(0));
  return b.binary(Op::add, b.unary(Op::relu, node.input(0)),
                  b.binary(Op::mul, below, node.input(1)));
}

ValueId pow(GraphBuilder& b, const Node& node) {
  const Value exponent = b.value(node.input(1));
  if (!exponent.constant() || exponent.elements() != 1 ||
      exponent.rank() > b.value(node.input(0)).rank()) {
    return kAbsent;
  }
  const double e = to_doubles(exponent)[0];
  return e == 2 ? b.unary(Op::square, node.input(0)) : e == 1 ? node.input(0) : kAbsent;
}

// Beyond the threshold, and nearer to 0 by the bias.
ValueId shrink(GraphBuilder& b, const Node& node) {
  if (!is_float(b, node)) {
    return kAbsent;
  }
  const ValueId kept = b.binary(Op::keep_beyond, node.input(0), node.number("lambda", 0.5));
  const double bias = node.number("bias");
  return bias == 0 ? kept : b.binary(Op::towards_zero, kept, bias);
}

// One number that says which infinities count.
ValueId is_inf(GraphBuilder& b, const Node& node) {
  if (node.inputs.size() == 2) {
    return kAbsent;
  }
  const int64_t which =
      (node.integer("positive", 1) != 0 ? 1 : 0) + (node.integer("negative", 1) != 0 ? 2 : 0);
  return b.emit(Op::is_inf, {node.input(0), b.scalar(static_cast<double>(which))}, Type::f32,
                Shape(b.shape(node.output())));
}

// condition != 0 ? a : b as a sum of which one part is 0.
ValueId where(GraphBuilder& b, const Node& node) {
  const ValueId chosen = b.binary(Op::zero_unless, node.input(1), node.input(0));
  const ValueId other = b.binary(Op::zero_if, node.input(2), node.input(0));
  return b.binary(Op::add, chosen, other);
}

constexpr CompositionRow kFunctionRows[] = {
    {Op::hard_sigmoid, hard_sigmoid},
    {Op::hard_swish, hard_swish},
    {Op::celu, celu},
    {Op::square, square},
    {Op::prelu, prelu},
    {Op::pow, pow},
    {Op::shrink, shrink},
    {Op::is_inf, is_inf},
    {Op::where, where},
};

}  // namespace

std::span<const CompositionRow> function_compositions() {
  return kFunctionRows;
}

}  // namespace nnlib::importer
