// SPDX-License-Identifier: MIT
// A quantized model computed in float from its own scales.
#ifndef NNLIB_IMPORTER_RUN_FLOAT_TWIN_HPP
#define NNLIB_IMPORTER_RUN_FLOAT_TWIN_HPP

#include "importer/graph/graph.hpp"

namespace nnlib::importer {

// The graph with float values instead of quantized ones, for the Interpreter: weights and biases as
// their scales say, functions instead of tables, nothing rounded. Ids of values stay what they
// were. A result whose zero point is an end of its type's range keeps that bound (relu is
// quantized away so); otherwise nothing saturates. `prepared` is a graph ready to be lowered.
Graph float_twin(const Graph& prepared);

// Whether the elements stand for real numbers by a scale.
inline bool is_quantized_value(const Value& v) {
  return (v.type == Type::s8 || v.type == Type::u8) && v.quantization.has_value();
}

// The elements of a value as real numbers, whatever its type.
std::vector<double> real_elements(const Value& value, const Bytes& elements);

}  // namespace nnlib::importer

#endif
