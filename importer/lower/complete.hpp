// SPDX-License-Identifier: MIT
// The passes that a graph goes through last, whatever the types of its values.
#ifndef NNLIB_IMPORTER_LOWER_COMPLETE_HPP
#define NNLIB_IMPORTER_LOWER_COMPLETE_HPP

#include "importer/graph/graph.hpp"

namespace nnlib::importer {

// Floats around operators without an integer lowering; compositions; fused activations.
void complete(Graph& graph);

}  // namespace nnlib::importer

#endif
