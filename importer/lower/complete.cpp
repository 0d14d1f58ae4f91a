// SPDX-License-Identifier: MIT
#include "importer/lower/complete.hpp"

#include "importer/lower/activation.hpp"
#include "importer/lower/lowering.hpp"
#include "importer/pass/compose.hpp"
#include "importer/pass/fusing.hpp"
#include "importer/pass/islands.hpp"
#include "importer/pass/quantization.hpp"

namespace nnlib::importer {

void complete(Graph& graph) {
  add_float_islands(graph, [](Op op) {
    const Lowering* row = lowering_of(op);
    return row == nullptr ? moves_bytes(op) : (row->types & kInteger) != 0;
  });
  compose(graph);
  fuse_activations(graph, [](const Node& node) { return activation_of(node).has_value(); });
  fuse_pooling(graph);
}

}  // namespace nnlib::importer
