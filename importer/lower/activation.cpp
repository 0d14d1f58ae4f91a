// SPDX-License-Identifier: MIT
#include "importer/lower/activation.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace nnlib::importer {
namespace {

using Parameters_ = std::vector<float> (*)(const Node&);

struct Row {
  Op op;
  Function kernel;
  Function forward;
  double (*value)(const Node&, double);
  Parameters_ parameters;
};

float f32(const Node& node, const char* attribute, double otherwise) {
  return static_cast<float>(node.number(attribute, otherwise));
}

constexpr double kInfinity = std::numeric_limits<double>::infinity();

double clip(const Node& node, double x) {
  return std::min(std::max(x, node.number("min", -kInfinity)), node.number("max", kInfinity));
}
double elu(double x, double alpha) {
  return x > 0 ? x : alpha * std::expm1(x);
}
double sigmoid(double x) {
  return 1 / (1 + std::exp(-x));
}
double hard_sigmoid(const Node& node, double x) {
  return std::clamp(node.number("alpha", 0.2) * x + node.number("beta", 0.5), 0.0, 1.0);
}

#define NNLIB_VALUE(expression)              \
  [](const Node& node, double x) -> double { \
    (void)node;                              \
    return expression;                       \
  }
#define NNLIB_RUNTIME(name) \
  NNLIB_FUNCTION(nl_func_##name##_array_f32), NNLIB_FUNCTION(forward_##name)

// Operators with a function of the runtime. Those without have empty names.
const std::vector<Row>& rows() {
  static const std::vector<Row> all = {
      {Op::abs, NNLIB_RUNTIME(abs), NNLIB_VALUE(std::abs(x)), nullptr},
      {Op::neg, NNLIB_RUNTIME(neg), NNLIB_VALUE(-x), nullptr},
      {Op::ceil, NNLIB_RUNTIME(ceil), NNLIB_VALUE(std::ceil(x)), nullptr},
      {Op::floor, NNLIB_RUNTIME(floor), NNLIB_VALUE(std::floor(x)), nullptr},
      {Op::round, NNLIB_RUNTIME(round), NNLIB_VALUE(std::round(x)), nullptr},
      {Op::reciprocal, NNLIB_RUNTIME(reciprocal), NNLIB_VALUE(1 / x), nullptr},
      {Op::sqrt, NNLIB_RUNTIME(sqrt), NNLIB_VALUE(std::sqrt(x)), nullptr},
      {Op::rsqrt, NNLIB_RUNTIME(rsqrt), NNLIB_VALUE(1 / std::sqrt(x)), nullptr},
      {Op::exp, NNLIB_RUNTIME(exp), NNLIB_VALUE(std::exp(x)), nullptr},
      {Op::log, NNLIB_RUNTIME(log), NNLIB_VALUE(std::log(x)), nullptr},
      {Op::sin, NNLIB_RUNTIME(sin), NNLIB_VALUE(std::sin(x)), nullptr},
      {Op::cos, NNLIB_RUNTIME(cos), NNLIB_VALUE(std::cos(x)), nullptr},
      {Op::tan, NNLIB_RUNTIME(tan), NNLIB_VALUE(std::tan(x)), nullptr},
      {Op::asin, NNLIB_RUNTIME(asin), NNLIB_VALUE(std::asin(x)), nullptr},
      {Op::acos, NNLIB_RUNTIME(acos), NNLIB_VALUE(std::acos(x)), nullptr},
      {Op::atan, NNLIB_RUNTIME(atan), NNLIB_VALUE(std::atan(x)), nullptr},
      {Op::sinh, NNLIB_RUNTIME(sinh), NNLIB_VALUE(std::sinh(x)), nullptr},
      {Op::cosh, NNLIB_RUNTIME(cosh), NNLIB_VALUE(std::cosh(x)), nullptr},
      {Op::tanh, NNLIB_RUNTIME(tanh), NNLIB_VALUE(std::tanh(x)), nullptr},
      {Op::asinh, NNLIB_RUNTIME(asinh), NNLIB_VALUE(std::asinh(x)), nullptr},
      {Op::acosh, NNLIB_RUNTIME(acosh), NNLIB_VALUE(std::acosh(x)), nullptr},
      {Op::atanh, NNLIB_RUNTIME(atanh), NNLIB_VALUE(std::atanh(x)), nullptr},
      {Op::erf, NNLIB_RUNTIME(erf), NNLIB_VALUE(std::erf(x)), nullptr},
      {Op::sigmoid, NNLIB_RUNTIME(sigmoid), NNLIB_VALUE(sigmoid(x)), nullptr},
      {Op::soft_plus, NNLIB_RUNTIME(soft_plus), NNLIB_VALUE(std::log1p(std::exp(x))), nullptr},
      {Op::soft_sign, NNLIB_RUNTIME(soft_sign), NNLIB_VALUE(x / (1 + std::abs(x))), nullptr},
      {Op::relu, NNLIB_RUNTIME(relu), NNLIB_VALUE(std::max(x, 0.0)), nullptr},
      {Op::clip, NNLIB_RUNTIME(clip), clip,
       [](const Node& node) {
         return std::vector{f32(node, "min", -kInfinity), f32(node, "max", kInfinity)};
       }},
      {Op::leaky_relu, NNLIB_FUNCTION(nl_func_relu_generic_array_f32), NNLIB_FUNCTION(forward_relu),
       NNLIB_VALUE(x < 0 ? x * node.number("alpha", 0.01) : x),
       [](const Node& node) {
         return std::vector{0.0f, f32(node, "alpha", 0.01), -1.0f};
       }},
      {Op::elu, NNLIB_RUNTIME(elu), NNLIB_VALUE(elu(x, node.number("alpha", 1))),
       [](const Node& node) { return std::vector{f32(node, "alpha", 1)}; }},
      {Op::selu, NNLIB_RUNTIME(selu),
       NNLIB_VALUE(node.number("gamma") * elu(x, node.number("alpha"))),
       [](const Node& node) {
         return std::vector{f32(node, "alpha", 0), f32(node, "gamma", 0)};
       }},
      {Op::thresholded_relu, NNLIB_RUNTIME(relu_thresholded),
       NNLIB_VALUE(x > node.number("alpha", 1) ? x : 0),
       [](const Node& node) { return std::vector{f32(node, "alpha", 1)}; }},
      // Tables only, or composed of other layers.
      {Op::hard_sigmoid, {}, {}, hard_sigmoid, nullptr},
      {Op::hard_swish, {}, {}, NNLIB_VALUE(x * std::clamp(x / 6 + 0.5, 0.0, 1.0)), nullptr},
      {Op::celu,
       {},
       {},
       NNLIB_VALUE(x > 0 ? x : node.number("alpha", 1) * std::expm1(x / node.number("alpha", 1))),
       nullptr},
      {Op::square, {}, {}, NNLIB_VALUE(x * x), nullptr},
      {Op::sign, {}, {}, NNLIB_VALUE(x > 0 ? 1 : (x < 0 ? -1 : 0)), nullptr},
      {Op::round_even, {}, {}, NNLIB_VALUE(std::nearbyint(x)), nullptr},
      {Op::identity, {}, {}, NNLIB_VALUE(x), nullptr},
      {Op::requantize, {}, {}, NNLIB_VALUE(x), nullptr},
  };
  return all;
}

const Row* row_of(Op op) {
  const auto found =
      std::find_if(rows().begin(), rows().end(), [op](const Row& row) { return row.op == op; });
  return found == rows().end() ? nullptr : &*found;
}

}  // namespace

std::optional<Activation> activation_of(const Node& node) {
  if (node.op == Op::hard_sigmoid && f32(node, "alpha", 0.2) == 0.2f &&
      f32(node, "beta", 0.5) == 0.5f) {
    return Activation{NNLIB_RUNTIME(hard_sigmoid), {}};
  }
  const Row* row = row_of(node.op);
  if (row == nullptr || row->kernel.name.empty()) {
    return std::nullopt;
  }
  return Activation{row->kernel, row->forward,
                    row->parameters != nullptr ? row->parameters(node) : std::vector<float>{}};
}

std::optional<Activation> fused_activation(const Node& node) {
  const std::optional<Node> activation = node.fused("activation");
  return activation ? activation_of(*activation) : std::nullopt;
}

std::optional<double> unary_value(const Node& node, double x) {
  const Row* row = row_of(node.op);
  return row == nullptr ? std::nullopt : std::optional(row->value(node, x));
}

Bytes unary_table(const Node& node, const Value& in, const Value& out) {
  Bytes table;
  const Quantization& qi = *in.quantization;
  const Quantization& qo = *out.quantization;
  const int low_in = in.type == Type::s8 ? INT8_MIN : 0;
  const double low_out = out.type == Type::s8 ? INT8_MIN : 0;
  for (int q = low_in; q < low_in + 256; ++q) {
    const double x = (q - qi.zero_points[0]) * static_cast<double>(qi.scales[0]);
    const double y = unary_value(node, x).value_or(0) / static_cast<double>(qo.scales[0]);
    const double rounded = std::round(y) + qo.zero_points[0];
    const double kept =
        std::isnan(rounded) ? qo.zero_points[0] : std::clamp(rounded, low_out, low_out + 255);
    table.push_back(static_cast<uint8_t>(static_cast<int>(kept)));
  }
  return table;
}

}  // namespace nnlib::importer
