// SPDX-License-Identifier: MIT
// Max and average pooling.
#include "importer/lower/pool_window.hpp"
#include "importer/lower/quantized.hpp"

#include <algorithm>
#include <cmath>

namespace nnlib::importer {
namespace {

// The integer average between equal scales cuts negative sums off toward zero. With an output scale
// that differs in its last bit the layer rounds to nearest instead.
void round_to_nearest(Value& y) {
  float& scale = y.quantization->scales[0];
  scale = std::nextafter(scale, 0.0f);
}

void pool(NetworkBuilder& b, const Node& node, const Function& on_float, const Function& on_integer,
          const Function& on_fixed) {
  const Value x = b.value(node.input(0));
  const Value y = b.value(node.output());
  const PoolWindow window = pool_window(node, x, y);
  const bool fixed = is_fixed(x);
  const bool integer = x.type != Type::f32 && !fixed;
  if (integer) {
    check_activation(x);
    check_activation(y);
    require(x.type == y.type, "input and output have to have the same type");
  }
  require(!fixed || same_quantization(x, y), "input and output have to have the same format");
  if (integer || fixed) {
    require(node.integer("count_include_pad") == 0,
            "counting the padding is not available for integers");
  }
  const bool average = node.op == Op::average_pool;
  const ValueId pooled = node.output();
  ValueId out = pooled;
  if (integer && average && y.type == Type::s8 && same_quantization(x, y)) {
    Value nearest = y;
    round_to_nearest(nearest);
    out = b.temporary(y.type, y.shape, nearest.quantization);
    b.alias(out, pooled);
  }
  LayerBuilder layer = b.layer<ai_layer_pool>(NNLIB_LAYER_TYPE(POOL), fixed     ? on_fixed
                                                                      : integer ? on_integer
                                                                                : on_float);
  layer.input(b.tensor(node.input(0))).output(b.tensor(out));
  set_window<ai_layer_pool>(layer, window);
  if (node.integer("count_include_pad") != 0) {
    layer.set(NNLIB_MEMBER(ai_layer_pool, count_include_pad), uint8_t{1});
  }
}

void max_pool(NetworkBuilder& b, const Node& node) {
  pool(b, node, NNLIB_FUNCTION(forward_mp), NNLIB_FUNCTION(forward_mp_integer),
       NNLIB_FUNCTION(forward_mp_fixed));
}
void average_pool(NetworkBuilder& b, const Node& node) {
  pool(b, node, NNLIB_FUNCTION(forward_ap), NNLIB_FUNCTION(forward_ap_integer),
       NNLIB_FUNCTION(forward_ap_fixed));
}

constexpr Lowering kPoolRows[] = {
    {Op::max_pool, max_pool, kFloat | kInteger | kFixed, "over width and height"},
    {Op::average_pool, average_pool, kFloat | kInteger | kFixed,
     "over width and height; counting the padding: float only"},
};

}  // namespace

PoolWindow pool_window(const Node& node, const Value& x, const Value& y) {
  require(x.rank() == 4 && y.rank() == 4 && x.shape[0] == 1 && x.shape[3] == y.shape[3],
          "pooling needs a map with 4 dimensions and batch 1");
  PoolWindow w{node.integers("kernel", {1, 1}), node.integers("strides", {1, 1}),
               node.integers("pads", {0, 0, 0, 0})};
  for (size_t i = 0; i < 2; ++i) {
    require(w.kernel.at(i) > 0 && w.kernel[i] <= UINT16_MAX && w.strides.at(i) > 0 &&
                w.strides[i] <= UINT16_MAX,
            "windows and strides have to be from 1 to 65535");
    require(w.pads.at(i) >= 0 && w.pads[i] < w.kernel[i], "the padding exceeds the window");
    const int64_t last = (y.shape[i + 1] - 1) * w.strides[i] - w.pads[i];
    require(last < x.shape[i + 1], "a window lies outside the map");
    // Where the model rounds the size up, the last window reaches over the map's end.
    const int64_t needed = last + w.kernel[i] - x.shape[i + 1];
    require(needed <= w.pads.at(i + 2) || node.integer("count_include_pad") == 0,
            "counting the padding where the size is rounded up is not available");
    w.pads[i + 2] = std::max(w.pads[i + 2], needed);
  }
  for (const Value* v : {&x, &y}) {
    require(v->shape[1] <= UINT16_MAX && v->shape[2] <= UINT16_MAX && v->shape[3] <= UINT16_MAX,
            "a dimension exceeds 65535");
  }
  return w;
}

std::span<const Lowering> pool_lowerings() {
  return kPoolRows;
}

}  // namespace nnlib::importer
