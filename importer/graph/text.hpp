// SPDX-License-Identifier: MIT
// A graph as text, to look at and to test passes with.
//
//   in    x: s8[1,4] q(0.5,-3)
//   const w: s8[2,4] q([0.1,0.2],[0,0],axis=0) = 1 2 3 4 -1 -2 -3 -4
//   y: s8[1,2] q(0.25,4) = dense(x, w, _) @"fc1" (FULLY_CONNECTED)
//   z: f32[1,2] = softmax(y) {axis=1, beta=1.0}
//   out   z
//
//   f: s8[1,2] fix(5) = quantize(z)          fixed point with 5 fraction bits
//
// A name that is no plain word stands in quotes. A number with a point or an exponent is a
// float attribute. # begins a comment.
#ifndef NNLIB_IMPORTER_GRAPH_TEXT_HPP
#define NNLIB_IMPORTER_GRAPH_TEXT_HPP

#include <string>
#include <string_view>

#include "importer/graph/graph.hpp"

namespace nnlib::importer {

// Constants of more than `longest` elements are printed as "..." (and cannot be read back).
std::string print_graph(const Graph& graph, size_t longest = SIZE_MAX);

// Throws std::runtime_error with the line number when the text is not a graph.
Graph parse_graph(std::string_view text);

}  // namespace nnlib::importer

#endif
