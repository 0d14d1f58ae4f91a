// SPDX-License-Identifier: MIT
// Nodes that become part of the node whose result they alone read.
#ifndef NNLIB_IMPORTER_PASS_READERS_HPP
#define NNLIB_IMPORTER_PASS_READERS_HPP

#include "importer/graph/graph.hpp"

namespace nnlib::importer {

// The only reader of the node's only output, or null.
Node* only_reader(Graph& graph, const Node& node);

// The reader does nothing any more; the node writes its result.
void take_over(Node& node, Node& reader);

// The same, with the reader's operator as the attribute `name` of the node and the reader's
// attributes after "name_".
void fuse_reader(const std::string& name, Node& node, Node& reader);

}  // namespace nnlib::importer

#endif
