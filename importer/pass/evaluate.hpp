// SPDX-License-Identifier: MIT
// Computes nodes whose inputs are all constants.
#ifndef NNLIB_IMPORTER_PASS_EVALUATE_HPP
#define NNLIB_IMPORTER_PASS_EVALUATE_HPP

#include "importer/graph/graph.hpp"
#include "importer/pass/host_array.hpp"

namespace nnlib::importer {

HostArray array_of(const Value& constant);

// Elements rounded to the type: floats to nearest, integers cut off and saturated at 64 bits, then
// wrapped to their width.
std::shared_ptr<const Bytes> bytes_of(const HostArray& array, Type type);

// The operator's result; throws std::runtime_error where shapes do not fit. Nothing for an operator
// that is not folded: spatial and recurrent ones, quantization (which later passes look for).
std::optional<HostArray> evaluate(const Graph& graph, const Node& node);

// Gives the node's output its data, if it can. The output's type and shape stand in its value.
bool fold(Graph& graph, const Node& node);

}  // namespace nnlib::importer

#endif
