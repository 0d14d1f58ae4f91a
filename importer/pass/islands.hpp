// SPDX-License-Identifier: MIT
// Operators that compute in float only, between quantized tensors.
#ifndef NNLIB_IMPORTER_PASS_ISLANDS_HPP
#define NNLIB_IMPORTER_PASS_ISLANDS_HPP

#include <functional>

#include "importer/graph/graph.hpp"

namespace nnlib::importer {

// Nodes on quantized values whose operator does not take integers get float values: dequantize
// before, quantize after, constants dequantized.
void add_float_islands(Graph& graph, const std::function<bool(Op)>& takes_integers);

// The elements of a quantized constant as floats.
Value dequantized(const Value& constant);

}  // namespace nnlib::importer

#endif
