// SPDX-License-Identifier: MIT
// Fully connected layers and matrix products.
#include "importer/lower/quantized.hpp"

namespace nnlib::importer {
namespace {

void dense(NetworkBuilder& b, const Node& node) {
  const Value x = b.value(node.input(0));
  const Value w = b.value(node.input(1));
  const Value y = b.value(node.output());
  require(w.constant(), "weights that are computed at run time are not available",
          "freeze them with --freeze");
  require(w.rank() == 2 && w.elements() > 0, "weights have to have 2 dimensions");
  const auto outputs = static_cast<uint32_t>(w.shape[0]);
  const auto inputs = static_cast<uint32_t>(w.shape[1]);
  require(outputs <= UINT16_MAX && inputs <= UINT16_MAX, "a dimension exceeds 65535");
  // The input may have other dimensions in the model: rows of `inputs` values count.
  require(x.elements() % inputs == 0, "input and weights do not fit together");
  const auto rows = static_cast<uint32_t>(x.elements() / inputs);
  require(y.elements() == int64_t{rows} * outputs, "output and weights do not fit together");
  const Value* bias = b.graph().find(node.input(2));
  require(bias == nullptr || (bias->constant() && bias->elements() == outputs),
          "the bias is no constant of one value a channel");
  const bool fixed = is_fixed(x);
  const bool integer = x.type != Type::f32 && !fixed;
  if (fixed) {
    check_fixed(x, w, y, bias, true);
  }
  std::optional<Quantization> q = w.quantization;
  if (integer) {
    q = check_integer_weights(x, w, y, bias, outputs);
  }
  Tensor& weights = b.constant_tensor("weights", w.type, {inputs, outputs, 1, 1}, *w.data, q);
  LayerBuilder layer =
      b.layer<ai_layer>(NNLIB_LAYER_TYPE(DENSE), integer ? NNLIB_FUNCTION(forward_dense_integer)
                                                 : fixed ? NNLIB_FUNCTION(forward_dense_fixed)
                                                         : NNLIB_FUNCTION(forward_dense));
  layer.input(b.tensor(node.input(0), {1, inputs, rows, 1}))
      .output(b.tensor(node.output(), {1, outputs, rows, 1}))
      .weights(&weights)
      .macs(uint64_t{rows} * inputs * outputs);
  if (bias != nullptr) {
    layer.weights(&b.constant_tensor("bias", *bias, {1, outputs, 1, 1}));
  }
  if (fixed) {
    layer.scratch(b.scratch(ai_dense_fixed_scratch_size(&layer.layer().record())));
  }
  if (integer) {
    layer.scratch(b.scratch(ai_dense_integer_scratch_size(&layer.layer().record())));
  }
}

constexpr Lowering kDenseRows[] = {
    {Op::dense, dense, kFloat | kInteger | kFixed,
     "constant weights; integer: int8 weights have zero point 0; 16 bits of fixed point take "
     "weights "
     "of 8"},
};

}  // namespace

std::span<const Lowering> dense_lowerings() {
  return kDenseRows;
}

}  // namespace nnlib::importer
