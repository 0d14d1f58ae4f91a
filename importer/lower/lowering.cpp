// SPDX-License-Identifier: MIT
#include "importer/lower/lowering.hpp"

#include <algorithm>

#include "importer/lower/quantized.hpp"

namespace nnlib::importer {

std::vector<Lowering> lowerings() {
  std::vector<Lowering> all;
  for (const auto& family :
       {convolution_lowerings(), dense_lowerings(), pool_lowerings(), elementwise_lowerings(),
        function_lowerings(), softmax_lowerings(), shape_lowerings(), convert_lowerings(),
        scalar_lowerings(), matrix_lowerings(), normalization_lowerings(), recurrent_lowerings()}) {
    all.insert(all.end(), family.begin(), family.end());
  }
  return all;
}

const Lowering* lowering_of(Op op) {
  static const std::vector<Lowering> all = lowerings();
  const auto found =
      std::find_if(all.begin(), all.end(), [op](const Lowering& row) { return row.op == op; });
  return found == all.end() ? nullptr : &*found;
}

namespace {

// Layers read memory as the type that they are for.
void check_types(const Graph& graph, const Node& node, const Lowering& row) {
  for (const auto* ids : {&node.inputs, &node.outputs}) {
    for (const ValueId id : *ids) {
      const Value* v = graph.find(id);
      require(v == nullptr || !is_fixed(*v) || (row.types & kFixed) != 0,
              "fixed point is not available here");
      require(v == nullptr || !is_quantized(*v) || (row.types & kInteger) != 0,
              "integers are not available here");
    }
  }
}

}  // namespace

std::unique_ptr<Network> lower(const Graph& graph, const Sharing& sharing) {
  Refusals refusals;
  NetworkBuilder builder(graph, sharing);
  for (const Node& node : graph.nodes) {
    try {
      const Lowering* row = lowering_of(node.op);
      if (row == nullptr) {
        throw Unsupported(node.text("reason", "this operator is not available"),
                          node.text("way_out"));
      }
      check_types(graph, node, *row);
      builder.begin(node);
      row->lower(builder, node);
    } catch (const Unsupported& no) {
      refusals.add(node, no.what(), no.way_out);
    } catch (const Refused& no) {
      refusals.add(node, no.what());
    }
  }
  if (!refusals.empty()) {
    throw Refused(refusals);
  }
  return builder.finish();
}

}  // namespace nnlib::importer
