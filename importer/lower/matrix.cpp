// SPDX-License-Identifier: MIT
// Products of two activations.
#include "importer/lower/lowering.hpp"

namespace nnlib::importer {
namespace {

// Blocks of rows and columns, as the layer reads its tensors.
Dims matrix_dims(const Value& v) {
  const auto rows = static_cast<uint32_t>(v.shape.end()[-2]);
  const auto columns = static_cast<uint32_t>(v.shape.back());
  return {1, static_cast<uint32_t>(v.elements() / (int64_t{rows} * columns)), columns, rows};
}

void matmul(NetworkBuilder& b, const Node& node) {
  const Value a = b.value(node.input(0));
  const Value c = b.value(node.input(1));
  const Value y = b.value(node.output());
  require(a.rank() >= 2 && c.rank() >= 2 && a.elements() > 0 && c.elements() > 0 &&
              a.shape.back() == c.shape.end()[-2],
          "matrices that cannot be multiplied");
  const Dims out = matrix_dims(y);
  require(matrix_dims(a).c == out.c && matrix_dims(c).c == out.c,
          "operands that repeat along the batch", "expand them before");
  b.layer<ai_layer>(NNLIB_LAYER_TYPE(GEMM), NNLIB_FUNCTION(forward_matmul))
      .input(b.tensor(node.input(0), matrix_dims(a)))
      .input(b.tensor(node.input(1), matrix_dims(c)))
      .output(b.tensor(node.output(), out))
      .macs(static_cast<uint64_t>(y.elements()) * static_cast<uint64_t>(a.shape.back()));
}

constexpr Lowering kMatrixRows[] = {
    {Op::matmul, matmul, kFloat, ""},
};

}  // namespace

std::span<const Lowering> matrix_lowerings() {
  return kMatrixRows;
}

}  // namespace nnlib::importer
