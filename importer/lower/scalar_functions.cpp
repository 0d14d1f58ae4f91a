// SPDX-License-Identifier: MIT
#include "importer/lower/scalar_functions.hpp"

#include <cmath>

#include "importer/lower/groups.hpp"

namespace nnlib::importer {
namespace {

// One expression, compiled here and printed into the generated source, so that both are the same.
#define NNLIB_SCALAR(op, expression)                                                         \
  {                                                                                          \
    Op::op,                                                                                  \
        [](float a, float b) -> float {                                                      \
          return static_cast<void>(a), static_cast<void>(b), static_cast<float>(expression); \
        },                                                                                   \
        "scalar_" #op, "(float)(" #expression ")"                                            \
  }

struct ScalarRow {
  Op op;
  ai_binary_fn function;
  const char* name;
  const char* expression;
};

constexpr ScalarRow kScalars[] = {
    NNLIB_SCALAR(pow, powf(a, b)),
    NNLIB_SCALAR(equal, a == b),
    NNLIB_SCALAR(greater, a > b),
    NNLIB_SCALAR(greater_equal, a >= b),
    NNLIB_SCALAR(less, a < b),
    NNLIB_SCALAR(less_equal, a <= b),
    NNLIB_SCALAR(sign, (a > 0) - (a < 0)),
    NNLIB_SCALAR(round_even, nearbyintf(a)),
    NNLIB_SCALAR(is_nan, a != a),
    NNLIB_SCALAR(is_inf, a > 3.402823466e+38F    ? b != 2
                         : a < -3.402823466e+38F ? b != 1
                                                 : 0),
    NNLIB_SCALAR(keep_beyond, fabsf(a) > b ? a : 0),
    NNLIB_SCALAR(towards_zero, a > 0   ? a - b
                               : a < 0 ? a + b
                                       : a),
    NNLIB_SCALAR(zero_unless, b != 0 ? a : 0),
    NNLIB_SCALAR(zero_if, b != 0 ? 0 : a),
};

std::string definition_of(const ScalarRow& row) {
  const std::string text = row.expression;
  const bool reads_b =
      text.find_first_of('b') != std::string::npos &&
      (text.find("b ") != std::string::npos || text.find("b)") != std::string::npos ||
       text.find(" b") != std::string::npos);
  return "static float " + std::string(row.name) + "(float a, float b) {\n" +
         (reads_b ? "" : "  (void)b;\n") + "  return " + text + ";\n}\n";
}

void lower(NetworkBuilder& b, const Node& node) {
  lower_scalar(b, node, *scalar_function(node.op));
}

constexpr const char* kGenerated = "a generated function";

constexpr Lowering kScalarFunctionsRows[] = {
    {Op::pow, lower, kFloat, kGenerated},         {Op::equal, lower, kFloat, kGenerated},
    {Op::greater, lower, kFloat, kGenerated},     {Op::greater_equal, lower, kFloat, kGenerated},
    {Op::less, lower, kFloat, kGenerated},        {Op::less_equal, lower, kFloat, kGenerated},
    {Op::is_nan, lower, kFloat, kGenerated},      {Op::is_inf, lower, kFloat, kGenerated},
    {Op::keep_beyond, lower, kFloat, kGenerated}, {Op::towards_zero, lower, kFloat, kGenerated},
    {Op::zero_unless, lower, kFloat, kGenerated}, {Op::zero_if, lower, kFloat, kGenerated},
};

}  // namespace

std::optional<Function> scalar_function(Op op) {
  for (const ScalarRow& row : kScalars) {
    if (row.op == op) {
      return Function{row.name, reinterpret_cast<void (*)()>(row.function), definition_of(row)};
    }
  }
  return std::nullopt;
}

void lower_scalar(NetworkBuilder& b, const Node& node, const Function& function) {
  const ValueId first = node.input(0);
  const ValueId second = node.input(1) == kAbsent ? first : node.input(1);
  const auto dims =
      broadcast_dims(b.value(first).shape, b.value(second).shape, b.value(node.output()).shape);
  require(dims.has_value(), "the operands repeat in a way that takes more than three dimensions",
          "expand one of them before");
  b.layer<ai_layer_eltwise>(NNLIB_LAYER_TYPE(ELTWISE), NNLIB_FUNCTION(forward_eltwise))
      .input(b.tensor(first, dims->a))
      .input(b.tensor(second, dims->b))
      .output(b.tensor(node.output(), dims->out))
      .set(NNLIB_MEMBER(ai_layer_eltwise, operation), function);
}

std::span<const Lowering> scalar_lowerings() {
  return kScalarFunctionsRows;
}

}  // namespace nnlib::importer
