// SPDX-License-Identifier: MIT
#include "importer/pass/host_math.hpp"

#include <cmath>
#include <limits>

namespace nnlib::importer {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct UnaryRow {
  Op op;
  UnaryMath function;
  std::vector<MathParameter> parameters = {};
};

double elu(double x, double alpha) {
  return x < 0 ? alpha * std::expm1(x) : x;
}
double clip(double x, double lo, double hi) {
  return std::fmin(std::fmax(x, lo), hi);
}

const std::vector<UnaryRow>& unary_rows() {
  static const std::vector<UnaryRow> rows = {
      {Op::abs, [](double x, const double*) { return std::fabs(x); }},
      {Op::acos, [](double x, const double*) { return std::acos(x); }},
      {Op::acosh, [](double x, const double*) { return std::acosh(x); }},
      {Op::asin, [](double x, const double*) { return std::asin(x); }},
      {Op::asinh, [](double x, const double*) { return std::asinh(x); }},
      {Op::atan, [](double x, const double*) { return std::atan(x); }},
      {Op::atanh, [](double x, const double*) { return std::atanh(x); }},
      {Op::ceil, [](double x, const double*) { return std::ceil(x); }},
      {Op::clip,
       [](double x, const double* p) { return clip(x, p[0], p[1]); },
       {{"min", -kInfinity}, {"max", kInfinity}}},
      {Op::cos, [](double x, const double*) { return std::cos(x); }},
      {Op::cosh, [](double x, const double*) { return std::cosh(x); }},
      {Op::elu, [](double x, const double* p) { return elu(x, p[0]); }, {{"alpha", 1}}},
      {Op::celu,
       [](double x, const double* p) { return x < 0 ? p[0] * std::expm1(x / p[0]) : x; },
       {{"alpha", 1}}},
      {Op::erf, [](double x, const double*) { return std::erf(x); }},
      {Op::exp, [](double x, const double*) { return std::exp(x); }},
      {Op::floor, [](double x, const double*) { return std::floor(x); }},
      {Op::hard_sigmoid,
       [](double x, const double* p) { return clip(p[0] * x + p[1], 0, 1); },
       {{"alpha", 0.2}, {"beta", 0.5}}},
      {Op::hard_swish, [](double x, const double*) { return x * clip(x / 6 + 0.5, 0, 1); }},
      {Op::is_inf,
       [](double x, const double* p) {
         return std::isinf(x) && (x > 0 ? p[0] != 0 : p[1] != 0) ? 1.0 : 0.0;
       },
       {{"positive", 1}, {"negative", 1}}},
      {Op::is_nan, [](double x, const double*) { return std::isnan(x) ? 1.0 : 0.0; }},
      {Op::leaky_relu,
       [](double x, const double* p) { return x < 0 ? x * p[0] : x; },
       {{"alpha", 0.01}}},
      {Op::log, [](double x, const double*) { return std::log(x); }},
      {Op::logical_not, [](double x, const double*) { return x == 0 ? 1.0 : 0.0; }},
      {Op::neg, [](double x, const double*) { return -x; }},
      {Op::reciprocal, [](double x, const double*) { return 1 / x; }},
      {Op::relu, [](double x, const double*) { return x < 0 ? 0.0 : x; }},
      {Op::thresholded_relu,
       [](double x, const double* p) { return x >= p[0] ? x : 0.0; },
       {{"alpha", 1}}},
      {Op::round, [](double x, const double*) { return std::round(x); }},
      {Op::round_even, [](double x, const double*) { return std::nearbyint(x); }},
      {Op::rsqrt, [](double x, const double*) { return 1 / std::sqrt(x); }},
      {Op::selu,
       [](double x, const double* p) { return p[1] * elu(x, p[0]); },
       {{"alpha", 1.67326319217681884765625}, {"gamma", 1.05070102214813232421875}}},
      {Op::shrink,
       [](double x, const double* p) { return x < -p[1]  ? x + p[0]
                                              : x > p[1] ? x - p[0]
                                                         : 0.0; },
       {{"bias", 0}, {"lambda", 0.5}}},
      {Op::sigmoid, [](double x, const double*) { return 1 / (1 + std::exp(-x)); }},
      {Op::sign, [](double x, const double*) { return x > 0   ? 1.0
                                                      : x < 0 ? -1.0
                                                              : x; }},
      {Op::sin, [](double x, const double*) { return std::sin(x); }},
      {Op::sinh, [](double x, const double*) { return std::sinh(x); }},
      {Op::soft_plus, [](double x, const double*) { return x > 30 ? x : std::log1p(std::exp(x)); }},
      {Op::soft_sign, [](double x, const double*) { return x / (1 + std::fabs(x)); }},
      {Op::sqrt, [](double x, const double*) { return std::sqrt(x); }},
      {Op::square, [](double x, const double*) { return x * x; }},
      {Op::tan, [](double x, const double*) { return std::tan(x); }},
      {Op::tanh, [](double x, const double*) { return std::tanh(x); }},
  };
  return rows;
}

const UnaryRow* unary_row(Op op) {
  for (const UnaryRow& row : unary_rows()) {
    if (row.op == op) {
      return &row;
    }
  }
  return nullptr;
}

struct BinaryRow {
  Op op;
  BinaryMath function;
  bool truth = false;
};

constexpr BinaryRow binary_rows[] = {
    {Op::add, [](double a, double b) { return a + b; }},
    {Op::sub, [](double a, double b) { return a - b; }},
    {Op::mul, [](double a, double b) { return a * b; }},
    {Op::div, [](double a, double b) { return a / b; }},
    {Op::maximum, [](double a, double b) { return a > b ? a : b; }},
    {Op::minimum, [](double a, double b) { return a < b ? a : b; }},
    {Op::floor_div, [](double a, double b) { return std::floor(a / b); }},
    {Op::mod, [](double a, double b) { return std::fmod(a, b); }},
    {Op::pow, [](double a, double b) { return std::pow(a, b); }},
    {Op::keep_beyond, [](double a, double b) { return std::fabs(a) > b ? a : 0; }},
    {Op::towards_zero, [](double a, double b) { return a > 0   ? a - b
                                                       : a < 0 ? a + b
                                                               : a; }},
    {Op::zero_unless, [](double a, double b) { return b != 0 ? a : 0; }},
    {Op::zero_if, [](double a, double b) { return b != 0 ? 0 : a; }},
    {Op::equal, [](double a, double b) { return a == b ? 1.0 : 0.0; }, true},
    {Op::greater, [](double a, double b) { return a > b ? 1.0 : 0.0; }, true},
    {Op::greater_equal, [](double a, double b) { return a >= b ? 1.0 : 0.0; }, true},
    {Op::less, [](double a, double b) { return a < b ? 1.0 : 0.0; }, true},
    {Op::less_equal, [](double a, double b) { return a <= b ? 1.0 : 0.0; }, true},
    {Op::logical_and, [](double a, double b) { return a != 0 && b != 0 ? 1.0 : 0.0; }, true},
    {Op::logical_or, [](double a, double b) { return a != 0 || b != 0 ? 1.0 : 0.0; }, true},
    {Op::logical_xor, [](double a, double b) { return (a != 0) != (b != 0) ? 1.0 : 0.0; }, true},
};

const BinaryRow* binary_row(Op op) {
  for (const BinaryRow& row : binary_rows) {
    if (row.op == op) {
      return &row;
    }
  }
  return nullptr;
}

}  // namespace

UnaryMath unary_math(Op op) {
  const UnaryRow* row = unary_row(op);
  return row != nullptr ? row->function : nullptr;
}

BinaryMath binary_math(Op op) {
  const BinaryRow* row = binary_row(op);
  return row != nullptr ? row->function : nullptr;
}

std::vector<MathParameter> unary_parameters(Op op) {
  const UnaryRow* row = unary_row(op);
  return row != nullptr ? row->parameters : std::vector<MathParameter>{};
}

bool gives_truth(Op op) {
  const BinaryRow* row = binary_row(op);
  return (row != nullptr && row->truth) || op == Op::logical_not || op == Op::is_nan ||
         op == Op::is_inf;
}

}  // namespace nnlib::importer
