// SPDX-License-Identifier: MIT
// Channels of like range between layers with weights, so that one scale fits all of them.
#ifndef NNLIB_IMPORTER_QUANTIZE_EQUALIZE_HPP
#define NNLIB_IMPORTER_QUANTIZE_EQUALIZE_HPP

#include "importer/graph/graph.hpp"

namespace nnlib::importer {

// Where one layer with weights follows on another, with nothing between but what multiplying a
// channel passes through (relu, pooling, reshapes), each channel is divided by a factor in the
// first and multiplied by it in the second, so that the largest weights of a channel are as large
// in both. The outputs stay the same.
Graph equalized(const Graph& graph);

}  // namespace nnlib::importer

#endif
