// SPDX-License-Identifier: MIT
// Functions of two tensors, with broadcasting; reductions.
#include <cmath>

#include "importer/lower/groups.hpp"
#include "importer/lower/quantized.hpp"

namespace nnlib::importer {
namespace {

BroadcastDims broadcast_of(NetworkBuilder& b, const Node& node) {
  const auto dims = broadcast_dims(b.value(node.input(0)).shape, b.value(node.input(1)).shape,
                                   b.value(node.output()).shape);
  require(dims.has_value(), "the operands repeat in a way that takes more than three dimensions",
          "expand one of them before");
  return *dims;
}

// Connects both operands and the output, which may lie over an operand of its size.
void connect_operands(NetworkBuilder& b, const Node& node, LayerBuilder layer) {
  const BroadcastDims dims = broadcast_of(b, node);
  Tensor& first = b.tensor(node.input(0), dims.a);
  Tensor& second = b.tensor(node.input(1), dims.b);
  Tensor& out = b.tensor(node.output(), dims.out);
  layer.input(first).input(second).output(out);
  for (const auto& [operand, size] : {std::pair{&first, dims.a}, {&second, dims.b}}) {
    if (size == dims.out) {
      layer.in_place(out, *operand);
    }
  }
}

void binary(NetworkBuilder& b, const Node& node, const Function& operation) {
  broadcast_of(b, node);
  LayerBuilder layer =
      b.layer<ai_layer_eltwise>(NNLIB_LAYER_TYPE(ELTWISE), NNLIB_FUNCTION(forward_eltwise));
  layer.set(NNLIB_MEMBER(ai_layer_eltwise, operation), operation);
  connect_operands(b, node, layer);
}

void add(NetworkBuilder& b, const Node& node) {
  const Value& y = b.value(node.output());
  if (y.type == Type::f32) {
    binary(b, node, NNLIB_FUNCTION(ai_sum));
    return;
  }
  for (const ValueId id : {node.input(0), node.input(1), node.output()}) {
    check_activation(b.value(id));
    require(b.value(id).type == y.type, "all tensors have to have the same type");
  }
  broadcast_of(b, node);
  connect_operands(
      b, node, b.layer<ai_layer>(NNLIB_LAYER_TYPE(ELTWISE), NNLIB_FUNCTION(forward_add_integer)));
}

#define NNLIB_BINARY(op, function)               \
  void op(NetworkBuilder& b, const Node& node) { \
    binary(b, node, NNLIB_FUNCTION(function));   \
  }
NNLIB_BINARY(sub, ai_sub)
NNLIB_BINARY(mul, ai_mul)
NNLIB_BINARY(div, ai_div)
NNLIB_BINARY(maximum, ai_max)
NNLIB_BINARY(minimum, ai_min)
NNLIB_BINARY(mod, ai_floor_mod)
NNLIB_BINARY(floor_div, ai_floor_div)
#undef NNLIB_BINARY

void reduce(NetworkBuilder& b, const Node& node, const Function& operation, float neutral) {
  const Value x = b.value(node.input(0));
  const auto dims = reduce_dims(x.shape, node.integers("axes"));
  require(dims.has_value(), "the axes take more than three dimensions");
  b.layer<ai_layer_reduce>(NNLIB_LAYER_TYPE(REDUCE), NNLIB_FUNCTION(forward_reduce))
      .input(b.tensor(node.input(0), dims->in))
      .output(b.tensor(node.output(), dims->out))
      .set(NNLIB_MEMBER(ai_layer_reduce, neutral_value), neutral)
      .set(NNLIB_MEMBER(ai_layer_reduce, operation), operation);
}

#define NNLIB_REDUCE(op, function, neutral)             \
  void op(NetworkBuilder& b, const Node& node) {        \
    reduce(b, node, NNLIB_FUNCTION(function), neutral); \
  }
NNLIB_REDUCE(reduce_sum, ai_sum, 0.0f)
NNLIB_REDUCE(reduce_prod, ai_mul, 1.0f)
NNLIB_REDUCE(reduce_max, ai_max, -HUGE_VALF)
NNLIB_REDUCE(reduce_min, ai_min, HUGE_VALF)
#undef NNLIB_REDUCE

constexpr const char* kRepeats = "operands repeat along at most three groups of dimensions";

constexpr Lowering kElementwiseRows[] = {
    {Op::add, add, kFloat | kInteger, kRepeats},
    {Op::sub, sub, kFloat, kRepeats},
    {Op::mul, mul, kFloat, kRepeats},
    {Op::div, div, kFloat, kRepeats},
    {Op::maximum, maximum, kFloat, kRepeats},
    {Op::minimum, minimum, kFloat, kRepeats},
    {Op::mod, mod, kFloat, "the sign is the dividend's (fmod)"},
    {Op::floor_div, floor_div, kFloat, kRepeats},
    {Op::reduce_sum, reduce_sum, kFloat, ""},
    {Op::reduce_prod, reduce_prod, kFloat, ""},
    {Op::reduce_max, reduce_max, kFloat, ""},
    {Op::reduce_min, reduce_min, kFloat, ""},
};

}  // namespace

std::span<const Lowering> elementwise_lowerings() {
  return kElementwiseRows;
}

}  // namespace nnlib::importer
