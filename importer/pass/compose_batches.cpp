// SPDX-License-Identifier: MIT
// Operators on maps take one map: a batch inside the network is taken apart and put together again.
#include "importer/pass/compose.hpp"

namespace nnlib::importer {
namespace {

constexpr int64_t kMostMaps = 64;  // beyond them the lowering refuses the batch

ValueId one_by_one(GraphBuilder& b, const Node& node) {
  const int64_t batch = b.shape(node.input(0))[0];
  if (batch <= 1 || batch > kMostMaps) {
    return kAbsent;
  }
  const Value out = b.value(node.output());
  Shape shape = out.shape;
  shape[0] = 1;
  std::vector<ValueId> parts;
  for (int64_t i = 0; i < batch; ++i) {
    std::vector<ValueId> inputs = node.inputs;
    inputs[0] = b.narrow(node.input(0), 0, i, 1);
    parts.push_back(b.emit(node.op, inputs, out.type, shape, node.attributes, out.quantization));
  }
  return b.concat(parts, 0);
}

constexpr CompositionRow kRows[] = {
    {Op::conv2d, one_by_one},        {Op::depthwise_conv2d, one_by_one},
    {Op::max_pool, one_by_one},      {Op::conv2d_transpose, one_by_one},
    {Op::resize, one_by_one},        {Op::average_pool, one_by_one},
    {Op::instance_norm, one_by_one},
};

}  // namespace

std::span<const CompositionRow> batch_compositions() {
  return kRows;
}

}  // namespace nnlib::importer
