// SPDX-License-Identifier: MIT
// Normalization by statistics of the input.
#include "importer/lower/groups.hpp"
#include "importer/lower/lowering.hpp"

namespace nnlib::importer {
namespace {

void connect(NetworkBuilder& b, const Node& node, LayerBuilder& layer, Dims dims) {
  layer.input(b.tensor(node.input(0), dims)).output(b.tensor(node.output(), dims));
}

void lrn(NetworkBuilder& b, const Node& node) {
  LayerBuilder layer = b.layer<ai_layer_lrn>(NNLIB_LAYER_TYPE(LRN), NNLIB_FUNCTION(forward_lrn));
  connect(b, node, layer, dims_of(b.value(node.input(0)).shape));
  layer.set(NNLIB_MEMBER(ai_layer_lrn, local_size), static_cast<uint32_t>(node.integer("size", 1)))
      .set(NNLIB_MEMBER(ai_layer_lrn, k), static_cast<float>(node.number("k", 1)))
      .set(NNLIB_MEMBER(ai_layer_lrn, alpha), static_cast<float>(node.number("alpha")))
      .set(NNLIB_MEMBER(ai_layer_lrn, beta), static_cast<float>(node.number("beta")));
}

void instance_norm(NetworkBuilder& b, const Node& node) {
  const Value x = b.value(node.input(0));
  require(x.rank() == 4 && x.shape[0] == 1, "maps have to have 4 dimensions and batch 1");
  const auto channels = static_cast<uint32_t>(x.shape[3]);
  for (const ValueId id : {node.input(1), node.input(2)}) {
    require(id != kAbsent && b.value(id).constant() && b.value(id).elements() == x.shape[3],
            "scale and bias have to be constants, one for each channel",
            "freeze them with --freeze");
  }
  Tensor& scale = b.tensor(node.input(1), flat_dims(channels));
  Tensor& bias = b.tensor(node.input(2), flat_dims(channels));
  LayerBuilder layer = b.layer<ai_layer_instance_norm>(
      NNLIB_LAYER_TYPE(INSTANCENORMALIZATION), NNLIB_FUNCTION(forward_instanceNormalization));
  connect(b, node, layer, dims_of(x.shape));
  layer.weights(&scale).weights(&bias).set(NNLIB_MEMBER(ai_layer_instance_norm, epsilon),
                                           static_cast<float>(node.number("epsilon")));
}

void lp_norm(NetworkBuilder& b, const Node& node) {
  const Around a = around(b.value(node.input(0)).shape, static_cast<size_t>(node.integer("axis")));
  LayerBuilder layer = b.layer<ai_layer_norm>(NNLIB_LAYER_TYPE(NORM), NNLIB_FUNCTION(forward_norm));
  const bool innermost = a.inner == 1;
  connect(b, node, layer,
          innermost ? Dims{1, a.middle, a.outer, 1} : Dims{1, a.inner, a.middle, a.outer});
  layer.set(NNLIB_MEMBER(ai_layer_norm, axis), uint32_t{innermost ? AI_SHAPE_C : AI_SHAPE_W})
      .set(NNLIB_MEMBER(ai_layer_norm, exponent), static_cast<float>(node.number("p", 2)));
}

constexpr Lowering kNormalizationRows[] = {
    {Op::lrn, lrn, kFloat, "along the last axis"},
    {Op::instance_norm, instance_norm, kFloat, "constant scale and bias"},
    {Op::lp_norm, lp_norm, kFloat, ""},
};

}  // namespace

std::span<const Lowering> normalization_lowerings() {
  return kNormalizationRows;
}

}  // namespace nnlib::importer
