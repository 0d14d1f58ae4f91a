// SPDX-License-Identifier: MIT
// Nodes that become part of the node before them.
#ifndef NNLIB_IMPORTER_PASS_FUSING_HPP
#define NNLIB_IMPORTER_PASS_FUSING_HPP

#include <functional>

#include "importer/graph/graph.hpp"

namespace nnlib::importer {

// Float convolutions take over the function after them: its operator becomes the attribute
// "activation", its attributes follow with "activation_" before their names.
void fuse_activations(Graph& graph, const std::function<bool(const Node&)>& is_function);

// Scale and bias of a batch_norm go into the constant weights of the convolution or dense layer
// before it.
void fold_batch_norm(Graph& graph);

// Means over neighbouring dimensions, the last one left out, are average pooling.
void pool_means(Graph& graph);

}  // namespace nnlib::importer

#endif
