// SPDX-License-Identifier: MIT
// ONNX operators that fold axes or normalize along them.
#include "importer/read/onnx_context.hpp"

namespace nnlib::importer {
namespace {

template <Op op>
void reduce(OnnxContext& c) {
  c.require_float();
  const Shape axes = c.integers_of("axes", 1).value_or(Shape{});
  if (axes.empty() && c.integer("noop_with_empty_axes", 0) != 0) {
    c.output(c.input());
    return;
  }
  c.output(c.build.reduce(op, c.input(), axes, c.integer("keepdims", 1) != 0));
}

// Up to version 12 the axes from `axis` on are one; since, `axis` alone counts.
template <Op op>
void along_axis(OnnxContext& c) {
  c.require_float();
  const Shape from = c.shape();
  if (c.opset >= 13) {
    c.output(c.build.like(op, {c.input()}, {{"axis", c.axis(-1)}}));
    return;
  }
  const int64_t axis = c.axis(1);
  const auto middle = from.begin() + axis;
  const ValueId flat = c.build.reshape(
      c.input(), {element_count({from.begin(), middle}), element_count({middle, from.end()})});
  c.output(c.build.reshape(c.build.like(op, {flat}, {{"axis", int64_t{1}}}), from));
}

void layer_norm(OnnxContext& c) {
  c.require_float();
  c.require_outputs(1);
  const int64_t axis = c.axis(-1);
  c.output(c.build.like(Op::layer_norm, {c.input(), c.optional_input(1), c.optional_input(2)},
                        {{"axis", axis}, {"epsilon", c.number("epsilon", 1e-5)}}));
}

// Mean 0 and variance 1 over the axes.
void mean_variance_norm(OnnxContext& c) {
  c.require_float();
  const Shape axes = c.integers("axes", {0, 2, 3});
  GraphBuilder& b = c.build;
  const ValueId centred =
      b.binary(Op::sub, c.input(), b.reduce(Op::reduce_mean, c.input(), axes, true));
  const ValueId variance = b.reduce(Op::reduce_mean, b.unary(Op::square, centred), axes, true);
  const ValueId deviation = b.binary(Op::add, b.unary(Op::sqrt, variance), 1e-9);
  c.output(b.binary(Op::div, centred, deviation));
}

void lp_norm(OnnxContext& c) {
  c.require_float();
  c.output(
      c.build.like(Op::lp_norm, {c.input()}, {{"axis", c.axis(-1)}, {"p", c.integer("p", 2)}}));
}

constexpr OnnxOperator kReductionOperators[] = {
    {"Hardmax", along_axis<Op::hardmax>, ""},
    {"LayerNormalization", layer_norm, "no mean and deviation as outputs"},
    {"LogSoftmax", along_axis<Op::log_softmax>, ""},
    {"LpNormalization", lp_norm, ""},
    {"MeanVarianceNormalization", mean_variance_norm, ""},
    {"ReduceL1", reduce<Op::reduce_l1>, "axes known at import"},
    {"ReduceL2", reduce<Op::reduce_l2>, "axes known at import"},
    {"ReduceLogSum", reduce<Op::reduce_log_sum>, "axes known at import"},
    {"ReduceLogSumExp", reduce<Op::reduce_log_sum_exp>, "axes known at import"},
    {"ReduceMax", reduce<Op::reduce_max>, "axes known at import"},
    {"ReduceMean", reduce<Op::reduce_mean>, "axes known at import"},
    {"ReduceMin", reduce<Op::reduce_min>, "axes known at import"},
    {"ReduceProd", reduce<Op::reduce_prod>, "axes known at import"},
    {"ReduceSum", reduce<Op::reduce_sum>, "axes known at import"},
    {"ReduceSumSquare", reduce<Op::reduce_sum_square>, "axes known at import"},
    {"Softmax", along_axis<Op::softmax>, ""},
};

}  // namespace

std::span<const OnnxOperator> onnx_reduction_operators() {
  return kReductionOperators;
}

}  // namespace nnlib::importer
