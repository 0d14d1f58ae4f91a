// SPDX-License-Identifier: MIT
// The scalar functions behind element-wise operators, in double.
#ifndef NNLIB_IMPORTER_PASS_HOST_MATH_HPP
#define NNLIB_IMPORTER_PASS_HOST_MATH_HPP

#include <string_view>
#include <vector>

#include "importer/graph/operators.hpp"

namespace nnlib::importer {

// x and the operator's parameters in the order of unary_parameters.
using UnaryMath = double (*)(double x, const double* parameters);
using BinaryMath = double (*)(double a, double b);

// Null for an operator that is not element-wise or has another number of operands.
UnaryMath unary_math(Op op);
BinaryMath binary_math(Op op);

// The float attributes that a unary operator reads, in order, with their defaults.
struct MathParameter {
  std::string_view name;
  double otherwise;
};
std::vector<MathParameter> unary_parameters(Op op);

// Comparisons and logic: 0 or 1.
bool gives_truth(Op op);

}  // namespace nnlib::importer

#endif
