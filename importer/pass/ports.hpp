// SPDX-License-Identifier: MIT
// What a network's user sees at its inputs and outputs.
#ifndef NNLIB_IMPORTER_PASS_PORTS_HPP
#define NNLIB_IMPORTER_PASS_PORTS_HPP

#include "importer/graph/graph.hpp"

namespace nnlib::importer {

// Outputs that a softmax gives become its input: the order of the values stays.
void strip_softmax(Graph& graph);

// Quantized inputs and outputs become float ones.
void add_float_ports(Graph& graph);

// An input that is quantized at once, and an output that is dequantized at last, become quantized.
void add_quantized_ports(Graph& graph);

}  // namespace nnlib::importer

#endif
