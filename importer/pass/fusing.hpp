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

// Convolutions take over the pooling after them where a window of rows takes less memory than the
// map and the fused layer gives the same numbers: its operator becomes the attribute "pool", its
// attributes follow with "pool_" before their names. A relu or clip on the other side of a maximum
// changes places with it.
void fuse_pooling(Graph& graph);

// A constant for each channel that is added to a float convolution or dense layer becomes its bias.
void fuse_biases(Graph& graph);

// Scale and bias of a batch_norm go into the constant weights of the convolution or dense layer
// before it.
void fold_batch_norm(Graph& graph);

// Means over neighbouring dimensions, the last one left out, are average pooling.
void pool_means(Graph& graph);

}  // namespace nnlib::importer

#endif
