// SPDX-License-Identifier: MIT
// Softmax, hardmax and normalizations along the channels.
#include "importer/lower/lowering.hpp"

namespace nnlib::importer {
namespace {

void require_last_axis(const Node& node, const Value& x) {
  require(node.integer("axis", x.rank() - 1) == x.rank() - 1, "only the last axis is available",
          "transpose the tensor before and after");
}

void softmax(NetworkBuilder& b, const Node& node) {
  const Value& x = b.value(node.input(0));
  require_last_axis(node, x);
  require(node.number("beta", 1) == 1, "beta other than 1 is not available",
          "scale the input before");
  Tensor& in = b.tensor(node.input(0));
  Tensor& out = b.tensor(node.output());
  b.layer<ai_layer>(NNLIB_LAYER_TYPE(SM), NNLIB_FUNCTION(forward_sm))
      .input(in)
      .output(out)
      .in_place(out, in);
}

void hardmax(NetworkBuilder& b, const Node& node) {
  const Value& x = b.value(node.input(0));
  require_last_axis(node, x);
  Dims dims = dims_of(x.shape);
  dims.h *= dims.w;  // the layer reads no width
  dims.w = 1;
  b.layer<ai_layer>(NNLIB_LAYER_TYPE(NL), NNLIB_FUNCTION(forward_hardmax))
      .input(b.tensor(node.input(0), dims))
      .output(b.tensor(node.output(), dims));
}

void batch_norm(NetworkBuilder& b, const Node& node) {
  const auto channels = dims_of(b.value(node.input(0)).shape).c;
  Tensor& in = b.tensor(node.input(0));
  Tensor& out = b.tensor(node.output());
  LayerBuilder layer = b.layer<ai_layer>(NNLIB_LAYER_TYPE(BN), NNLIB_FUNCTION(forward_bn));
  layer.input(in).output(out).in_place(out, in);
  for (const size_t i : {1, 2}) {
    const Value& v = b.value(node.input(i));
    require(v.constant() && v.elements() == channels,
            "scale and bias have to be constants of one "
            "value a channel");
    layer.weights(
        &b.constant_tensor(i == 1 ? "scale" : "bias", v.type, flat_dims(channels), *v.data, {}));
  }
}

constexpr Lowering kSoftmaxRows[] = {
    {Op::softmax, softmax, kFloat, "last axis"},
    {Op::hardmax, hardmax, kFloat, "last axis"},
    {Op::batch_norm, batch_norm, kFloat, "constant scale and bias"},
};

}  // namespace

std::span<const Lowering> softmax_lowerings() {
  return kSoftmaxRows;
}

}  // namespace nnlib::importer
