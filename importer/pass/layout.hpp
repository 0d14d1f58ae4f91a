// SPDX-License-Identifier: MIT
// Takes away the transpositions and reshapes that a model with channels second leaves around
// operators with channels last.
#ifndef NNLIB_IMPORTER_PASS_LAYOUT_HPP
#define NNLIB_IMPORTER_PASS_LAYOUT_HPP

#include "importer/graph/graph.hpp"

namespace nnlib::importer {

// Pushes transpositions down through operators that do not mind until they meet their inverse, an
// operator that needs them, weights that can be reordered instead, or an output. With
// `channels_last_io` those left at inputs and outputs go too: the network's order is then
// [N, H, W, C] there.
void push_transpositions(Graph& graph, bool channels_last_io);

}  // namespace nnlib::importer

#endif
