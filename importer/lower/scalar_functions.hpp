// SPDX-License-Identifier: MIT
// Functions of two numbers that the runtime does not have and that the generated source defines.
#ifndef NNLIB_IMPORTER_LOWER_SCALAR_FUNCTIONS_HPP
#define NNLIB_IMPORTER_LOWER_SCALAR_FUNCTIONS_HPP

#include <optional>

#include "importer/lower/lowering.hpp"

namespace nnlib::importer {

// Nothing for an operator without one. Operators of one tensor get it as both operands.
std::optional<Function> scalar_function(Op op);

// An element-wise layer with the function.
void lower_scalar(NetworkBuilder& b, const Node& node, const Function& function);

}  // namespace nnlib::importer

#endif
