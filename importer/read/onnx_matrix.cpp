// SPDX-License-Identifier: MIT
// ONNX matrix products.
#include <algorithm>

#include "importer/read/onnx_einsum.hpp"

namespace nnlib::importer {
namespace {

// Known now, if only up to its scales.
bool is_weights(OnnxContext& c, ValueId id) {
  const int from = c.build.graph().producer(id);
  return c.build.constant(id) ||
         (from >= 0 && c.build.graph().nodes[static_cast<size_t>(from)].op == Op::dequantize &&
          c.build.constant(c.build.graph().nodes[static_cast<size_t>(from)].input(0)));
}

void matmul(OnnxContext& c) {
  c.require_float(0);
  c.require_float(1);
  GraphBuilder& b = c.build;
  ValueId left = c.input(0);
  ValueId right = c.input(1);
  if (c.rank(0) == 0 || c.rank(1) == 0) {
    throw NotAvailable{"a scalar operand", "Mul multiplies by scalars"};
  }
  const bool row = c.rank(0) == 1;
  const bool column = c.rank(1) == 1;
  left = row ? b.reshape(left, {1, c.shape(0)[0]}) : left;
  right = column ? b.reshape(right, {c.shape(1)[0], 1}) : right;
  ValueId y = kAbsent;
  if (is_weights(c, right) && b.shape(right).size() == 2 && !b.constant(left)) {
    y = b.dense(left, b.transpose(right, {1, 0}), kAbsent);
  } else {
    y = b.matmul(left, right);
  }
  Shape shape = b.shape(y);
  if (column) {
    shape.pop_back();
  }
  if (row) {
    shape.erase(shape.end() - (column ? 1 : 2));
  }
  c.output(b.reshape(y, shape));
}

// A vector of n values times `factor`, or absent when c is not one.
ValueId as_bias(OnnxContext& c, ValueId id, int64_t n, double factor) {
  const Shape shape = c.build.shape(id);
  const bool one_row = shape.size() < 2 || std::all_of(shape.begin(), shape.end() - 1,
                                                       [](int64_t s) { return s == 1; });
  if (!one_row || !is_weights(c, id)) {
    return kAbsent;
  }
  ValueId bias = c.build.reshape(id, shape.empty() ? Shape{} : Shape{shape.back()});
  if (factor != 1) {
    if (!c.build.constant(id)) {
      return kAbsent;
    }
    bias = c.build.binary(Op::mul, bias, factor);
  }
  return c.build.constant(bias)            ? c.build.expand(bias, {n})
         : c.build.shape(bias) == Shape{n} ? bias
                                           : kAbsent;
}

void gemm(OnnxContext& c) {
  c.require_float(0);
  c.require_float(1);
  GraphBuilder& b = c.build;
  const double alpha = c.number("alpha", 1);
  const double beta = c.number("beta", 1);
  const bool turn_b = c.integer("transB", 0) != 0;
  if (c.rank(0) != 2 || c.rank(1) != 2) {
    throw NotAvailable{"operands that are no matrices", ""};
  }
  const ValueId x = c.integer("transA", 0) != 0 ? b.transpose(c.input(0), {1, 0}) : c.input(0);
  const bool with_c = c.has_input(2) && beta != 0;
  const bool scaled_weights = alpha == 1 || b.constant(c.input(1));
  ValueId y = kAbsent;
  ValueId bias = kAbsent;
  if (is_weights(c, c.input(1)) && scaled_weights && !b.constant(x)) {
    ValueId weights = turn_b ? c.input(1) : b.transpose(c.input(1), {1, 0});
    weights = alpha == 1 ? weights : b.binary(Op::mul, weights, alpha);
    bias = with_c ? as_bias(c, c.input(2), b.shape(weights)[0], beta) : kAbsent;
    y = b.dense(x, weights, bias);
  } else {
    y = b.matmul(x, turn_b ? b.transpose(c.input(1), {1, 0}) : c.input(1));
    y = alpha == 1 ? y : b.binary(Op::mul, y, alpha);
  }
  if (with_c && bias == kAbsent) {
    y = b.binary(Op::add, y, beta == 1 ? c.input(2) : b.binary(Op::mul, c.input(2), beta));
  }
  c.output(y);
}

constexpr OnnxOperator kMatrixOperators[] = {
    {"Einsum", einsum, "one or two operands; no diagonals"},
    {"Gemm", gemm, ""},
    {"MatMul", matmul, ""},
};

}  // namespace

std::span<const OnnxOperator> onnx_matrix_operators() {
  return kMatrixOperators;
}

}  // namespace nnlib::importer
