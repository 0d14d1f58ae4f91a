// SPDX-License-Identifier: MIT
// Integer layers out of quantized models.
#ifndef NNLIB_IMPORTER_PASS_QUANTIZATION_HPP
#define NNLIB_IMPORTER_PASS_QUANTIZATION_HPP

#include "importer/graph/graph.hpp"

namespace nnlib::importer {

// Bytes that stand for themselves.
Quantization unit_quantization();

// Says what the bytes of a value mean, and of those that it is moved from. False when the value
// has another meaning already.
bool give_quantization(Graph& graph, ValueId id, const Quantization& quantization);

// Whether the bytes of an operator's result are bytes of its inputs.
bool moves_bytes(Op op);

// dequantize - operator - quantize becomes the operator on quantized values, and a function of one
// value between them a table of 256; moves and relu come between the quantize before and the
// dequantize after them. What is left of dequantized constants is folded.
void quantize_canonically(Graph& graph);

}  // namespace nnlib::importer

#endif
