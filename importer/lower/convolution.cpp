// SPDX-License-Identifier: MIT
// Convolutions: ordinary, depthwise and transposed.
#include <cstring>

#include "importer/lower/activation.hpp"
#include "importer/lower/pool_window.hpp"
#include "importer/lower/quantized.hpp"
#include "layers_quantized/conv2d_fixed_choice.hpp"

namespace nnlib::importer {
namespace {

// The pooling that a pass has fused into a convolution (pass/fusing.hpp).
struct Pooled {
  Op op;
  PoolWindow window;
  Value map;  // that is pooled, and never whole
};

struct Geometry {
  uint32_t in_channels, out_channels, groups;
  uint32_t kernel[2];  // y, x
  std::vector<int64_t> strides, dilations, pads;
  std::optional<Pooled> pooled;
};

int64_t extent(int64_t in, int64_t before, int64_t after, int64_t kernel, int64_t dilation,
               int64_t stride) {
  return (in + before + after - ((kernel - 1) * dilation + 1)) / stride + 1;
}

void check_map(const Value& v) {
  require(v.rank() == 4, "maps have to have 4 dimensions");
  require(v.shape[0] == 1, "a batch inside the network has to be 1");
  require(v.shape[1] <= UINT16_MAX && v.shape[2] <= UINT16_MAX && v.shape[3] <= UINT16_MAX,
          "a dimension exceeds 65535");
}

Geometry geometry_of(NetworkBuilder& b, const Node& node, bool depthwise) {
  const Value& x = b.value(node.input(0));
  const Value& w = b.value(node.input(1));
  const Value& y = b.value(node.output());
  check_map(x);
  check_map(y);
  require(w.constant(), "weights that are computed at run time are not available",
          "freeze them with --freeze");
  require(w.rank() == (depthwise ? 3 : 4), "weights have the wrong number of dimensions");
  Geometry g;
  g.in_channels = static_cast<uint32_t>(x.shape[3]);
  g.out_channels = static_cast<uint32_t>(y.shape[3]);
  g.groups = depthwise ? g.in_channels : static_cast<uint32_t>(node.integer("groups", 1));
  const size_t first = depthwise ? 0 : 1;
  g.kernel[0] = static_cast<uint32_t>(w.shape[first]);
  g.kernel[1] = static_cast<uint32_t>(w.shape[first + 1]);
  g.strides = node.integers("strides", {1, 1});
  g.dilations = node.integers("dilations", {1, 1});
  g.pads = node.integers("pads", {0, 0, 0, 0});
  require(g.groups > 0 && g.in_channels % g.groups == 0 && g.out_channels % g.groups == 0,
          "the channels do not divide into the groups");
  const int64_t per_group = depthwise ? 1 : w.shape[3];
  require(
      (depthwise ? w.shape[2] : w.shape[0]) == y.shape[3] && per_group == g.in_channels / g.groups,
      "weights and maps have different channels");
  for (size_t i = 0; i < 2; ++i) {
    require(g.strides.at(i) > 0 && g.strides[i] <= UINT16_MAX && g.dilations.at(i) > 0 &&
                g.dilations[i] <= UINT16_MAX && g.kernel[i] > 0 && g.kernel[i] <= UINT16_MAX,
            "strides, dilations and kernels have to be from 1 to 65535");
    require(g.pads.at(i) >= 0 && g.pads.at(i + 2) >= 0 && g.pads[i] <= UINT16_MAX &&
                g.pads[i + 2] <= UINT16_MAX,
            "paddings have to be from 0 to 65535", "cut the map with a slice before the layer");
  }
  if (const Value* bias = b.graph().find(node.input(2))) {
    require(bias->constant() && bias->elements() == g.out_channels,
            "the bias is no constant of "
            "one value a channel");
  }
  return g;
}

uint64_t macs_of(const Geometry& g, const Value& map) {
  return static_cast<uint64_t>(map.elements()) * g.kernel[0] * g.kernel[1] *
         (g.in_channels / g.groups);
}

void add_pooling(Geometry& g, const Node& node, const Value& x, const Value& y) {
  const std::optional<Node> pool = node.fused("pool");
  if (!pool) {
    return;
  }
  Value map = y;
  for (size_t i = 0; i < 2; ++i) {
    map.shape[i + 1] =
        extent(x.shape[i + 1], g.pads[i], g.pads[i + 2], g.kernel[i], g.dilations[i], g.strides[i]);
  }
  check_map(map);
  g.pooled = Pooled{pool->op, pool_window(*pool, map, y), map};
}

void check_output(const Geometry& g, const Value& x, const Value& y) {
  for (size_t i = 0; i < 2; ++i) {
    const int64_t in = x.shape[i + 1] + g.pads[i] + g.pads[i + 2];
    require(in >= (int64_t{g.kernel[i]} - 1) * g.dilations[i] + 1 &&
                y.shape[i + 1] == extent(x.shape[i + 1], g.pads[i], g.pads[i + 2], g.kernel[i],
                                         g.dilations[i], g.strides[i]),
            "the output's size does not follow from the input's");
  }
}

// Weights as a table of (output channel, y, x, input channel), for any element type.
struct Kernel {
  uint32_t out_channels, height, width, in_channels;
  size_t element;
  Bytes bytes;

  Kernel(uint32_t o, uint32_t h, uint32_t w, uint32_t i, size_t element_bytes)
      : out_channels(o),
        height(h),
        width(w),
        in_channels(i),
        element(element_bytes),
        bytes(size_t{o} * h * w * i * element_bytes) {}
  uint8_t* at(uint32_t o, uint32_t y, uint32_t x, uint32_t i) {
    return bytes.data() + (((size_t{o} * height + y) * width + x) * in_channels + i) * element;
  }
};

// [Kh][Kw][C * m] -> [C * m][Kh][Kw][1]
Kernel of_depthwise(const Value& w) {
  const auto dim = [&w](size_t i) { return static_cast<uint32_t>(w.shape[i]); };
  Kernel k(dim(2), dim(0), dim(1), 1, type_bytes(w.type));
  const uint8_t* from = w.data->data();
  for (uint32_t y = 0; y < k.height; ++y) {
    for (uint32_t x = 0; x < k.width; ++x) {
      for (uint32_t o = 0; o < k.out_channels; ++o, from += k.element) {
        std::memcpy(k.at(o, y, x, 0), from, k.element);
      }
    }
  }
  return k;
}

Kernel of_ordinary(const Value& w) {
  const auto dim = [&w](size_t i) { return static_cast<uint32_t>(w.shape[i]); };
  Kernel k(dim(0), dim(1), dim(2), dim(3), type_bytes(w.type));
  k.bytes = *w.data;
  return k;
}

// 8-bit weights with the zero point between the taps of a dilated kernel and outside the channels
// of an output's own group.
Kernel stuffed(Kernel from, const Geometry& g, uint32_t groups, const Quantization& q) {
  const auto dilated = [&g](uint32_t size, size_t axis) {
    return (size - 1) * static_cast<uint32_t>(g.dilations[axis]) + 1;
  };
  require(from.bytes.size() * groups * static_cast<uint64_t>(g.dilations[0] * g.dilations[1]) <
              (1u << 26),
          "the weights would become too large");
  Kernel to(from.out_channels, dilated(from.height, 0), dilated(from.width, 1),
            from.in_channels * groups, 1);
  const uint32_t group_outputs = from.out_channels / groups;
  for (uint32_t o = 0; o < to.out_channels; ++o) {
    const int32_t zero_point = q.zero_points[q.per_tensor() ? 0 : o];
    std::memset(to.at(o, 0, 0, 0), zero_point & 0xFF,
                size_t{to.height} * to.width * to.in_channels);
    for (uint32_t y = 0; y < from.height; ++y) {
      for (uint32_t x = 0; x < from.width; ++x) {
        std::memcpy(
            to.at(o, y * static_cast<uint32_t>(g.dilations[0]),
                  x * static_cast<uint32_t>(g.dilations[1]), o / group_outputs * from.in_channels),
            from.at(o, y, x, 0), from.in_channels);
      }
    }
  }
  return to;
}

// [C][Kh][Kw][1] -> [Kh][Kw][C]
Bytes depthwise_bytes(Kernel& k) {
  Bytes out;
  for (uint32_t y = 0; y < k.height; ++y) {
    for (uint32_t x = 0; x < k.width; ++x) {
      for (uint32_t o = 0; o < k.out_channels; ++o) {
        const uint8_t* from = k.at(o, y, x, 0);
        out.insert(out.end(), from, from + k.element);
      }
    }
  }
  return out;
}

Tensor* bias_of(NetworkBuilder& b, const Node& node, uint32_t channels) {
  const Value* bias = b.graph().find(node.input(2));
  return bias == nullptr ? nullptr : &b.constant_tensor("bias", *bias, {1, channels, 1, 1});
}

// Of one kind of numbers: a convolution alone, one with pooling, and the two that pool in it.
struct Functions {
  Function alone, pooling, maximum, average;
};

// A layer of input, output, weights and bias, with the fields of the convolution still to be set.
LayerBuilder connected(NetworkBuilder& b, const Node& node, const Geometry& g,
                       const Functions& functions, Tensor& weights, uint64_t macs) {
  LayerBuilder layer =
      g.pooled
          ? b.layer<ai_layer_conv2d_nl_pool>(NNLIB_LAYER_TYPE(OPTIMIZED_CONV2D), functions.pooling)
          : b.layer<ai_layer_conv2d>(NNLIB_LAYER_TYPE(CONV2D), functions.alone);
  layer.input(b.tensor(node.input(0))).output(b.tensor(node.output())).weights(&weights).macs(macs);
  if (Tensor* bias = bias_of(b, node, g.out_channels)) {
    layer.weights(bias);
  }
  if (g.pooled) {
    const PoolWindow& window = g.pooled->window;
    const Shape& map = g.pooled->map.shape;
    const auto rows = static_cast<uint32_t>(std::min(window.kernel[0], map[1]));
    layer.scratch(b.scratch(format_of(b.value(node.output())),
                            {1, g.out_channels, static_cast<uint32_t>(map[2]), rows}));
    set_window<ai_layer_conv2d_nl_pool>(layer, window);
    layer.set(NNLIB_MEMBER(ai_layer_conv2d_nl_pool, pool_func),
              g.pooled->op == Op::max_pool ? functions.maximum : functions.average);
    layer.inside("base");
  }
  return layer;
}

void set_geometry(LayerBuilder& layer, const Geometry& g, uint32_t groups) {
  const auto at = [](const std::vector<int64_t>& v, size_t i) {
    return static_cast<uint32_t>(v[i]);
  };
  layer.set(NNLIB_MEMBER(ai_layer_conv2d, groups), groups)
      .set(NNLIB_MEMBER(ai_layer_conv2d, filter_stride), at(g.strides, 1), at(g.strides, 0))
      .set(NNLIB_MEMBER(ai_layer_conv2d, dilation), at(g.dilations, 1), at(g.dilations, 0))
      .set(NNLIB_MEMBER(ai_layer_conv2d, filter_pad),
           {at(g.pads, 0), at(g.pads, 1), at(g.pads, 2), at(g.pads, 3)});
}

// --- float
// ----------------------------------------------------------------------------------------

const Functions kFloatFunctions = {
    NNLIB_FUNCTION(forward_conv2d), NNLIB_FUNCTION(forward_conv2d_nl_pool),
    NNLIB_FUNCTION(pool_func_mp_array_f32), NNLIB_FUNCTION(pool_func_ap_array_f32)};

void lower_float(NetworkBuilder& b, const Node& node, const Geometry& g, bool depthwise,
                 const Functions& functions, const Value& counted) {
  const Value& w = b.value(node.input(1));
  const bool plain_depthwise = depthwise && g.out_channels == g.in_channels;
  Kernel kernel = depthwise ? of_depthwise(w) : of_ordinary(w);
  const uint32_t per_group = g.in_channels / g.groups;
  const Dims dims = plain_depthwise ? Dims{g.in_channels, g.kernel[1], g.kernel[0], 1}
                                    : Dims{per_group, g.kernel[1], g.kernel[0], g.out_channels};
  Tensor& weights = b.constant_tensor("weights", w.type, dims,
                                      plain_depthwise ? *w.data : std::move(kernel.bytes), {});
  LayerBuilder layer = connected(b, node, g, functions, weights, macs_of(g, counted));
  set_geometry(layer, g, g.groups);
  if (const auto activation = fused_activation(node)) {
    layer.set(NNLIB_MEMBER(ai_layer_conv2d, nl_func), activation->kernel);
    if (!activation->parameters.empty()) {
      layer.set(NNLIB_MEMBER(ai_layer_conv2d, nl_params),
                b.parameters<float>("activation", activation->parameters));
    }
  }
}

// --- integer
// --------------------------------------------------------------------------------------

const Functions kIntegerFunctions = {
    NNLIB_FUNCTION(forward_conv2d_integer), NNLIB_FUNCTION(forward_conv2d_nl_pool_integer),
    NNLIB_FUNCTION(pool_func_mp_array_integer), NNLIB_FUNCTION(pool_func_ap_array_integer)};

void lower_integer(NetworkBuilder& b, const Node& node, Geometry g, bool depthwise) {
  const Value& x = b.value(node.input(0));
  const Value& w = b.value(node.input(1));
  const Value& y = b.value(node.output());
  const Quantization weight_quantization =
      check_integer_weights(x, w, y, b.graph().find(node.input(2)), g.out_channels);
  const uint64_t macs = macs_of(g, g.pooled ? g.pooled->map : y);
  const bool dilated = g.dilations[0] != 1 || g.dilations[1] != 1;
  const bool one_each = g.groups == g.in_channels && g.out_channels == g.in_channels;
  Kernel kernel = depthwise ? of_depthwise(w) : of_ordinary(w);
  const uint32_t groups = one_each ? g.groups : 1;
  if (dilated || groups != g.groups) {
    kernel = stuffed(std::move(kernel), g, one_each ? 1 : g.groups, weight_quantization);
    g.dilations = {1, 1};
  }
  const bool depthwise_kernel = one_each && g.in_channels > 1;
  const Dims dims = depthwise_kernel
                        ? Dims{g.in_channels, kernel.width, kernel.height, 1}
                        : Dims{kernel.in_channels, kernel.width, kernel.height, g.out_channels};
  Tensor& weights = b.constant_tensor(
      "weights", w.type, dims, depthwise_kernel ? depthwise_bytes(kernel) : std::move(kernel.bytes),
      weight_quantization);
  LayerBuilder layer = connected(b, node, g, kIntegerFunctions, weights, macs);
  set_geometry(layer, g, groups);
  layer.scratch(b.scratch(
      g.pooled ? ai_conv2d_nl_pool_integer_scratch_size(&layer.as<ai_layer_conv2d_nl_pool>())
               : ai_conv2d_integer_scratch_size(&layer.as<ai_layer_conv2d>())));
}

// --- fixed point
// ----------------------------------------------------------------------------------

const Functions kFixedFunctions = {
    NNLIB_FUNCTION(forward_conv2d_fixed), NNLIB_FUNCTION(forward_conv2d_nl_pool_fixed),
    NNLIB_FUNCTION(pool_func_mp_array_fixed), NNLIB_FUNCTION(pool_func_ap_array_fixed)};

void lower_fixed(NetworkBuilder& b, const Node& node, const Geometry& g, bool depthwise) {
  const Value x = b.value(node.input(0));
  const Value w = b.value(node.input(1));
  const Value y = b.value(node.output());
  const Value& map = g.pooled ? g.pooled->map : y;
  check_fixed(x, w, y, b.graph().find(node.input(2)));
  const auto at = [](const std::vector<int64_t>& v, size_t i) {
    return static_cast<uint32_t>(v[i]);
  };
  const auto size = [](const Value& v, size_t i) { return static_cast<uint32_t>(v.shape[i]); };
  const ConvGeometry geometry{size(x, 2),       size(x, 1),       g.in_channels, g.out_channels,
                              g.kernel[1],      g.kernel[0],      at(g.pads, 1), at(g.pads, 0),
                              at(g.strides, 1), at(g.strides, 0), size(map, 2),  size(map, 1)};
  const uint32_t bits = 8 * static_cast<uint32_t>(type_bytes(x.type));
  require(g.dilations[0] == 1 && g.dilations[1] == 1, "dilation is not available for fixed point");
  require(choose_fixed_conv({bits, g.groups, geometry}, false) != FixedConvKernel::kUnsupported,
          bits == 8 ? "groups have to be 1 or one for each input channel"
                    : "16 bits take one group and as much height as width in everything");
  const bool by_channel = g.groups > 1;
  Kernel kernel = depthwise ? of_depthwise(w) : of_ordinary(w);
  const Dims dims = by_channel ? Dims{g.out_channels, kernel.width, kernel.height, 1}
                               : Dims{g.in_channels, kernel.width, kernel.height, g.out_channels};
  Tensor& weights = b.constant_tensor(
      "weights", w.type, dims, by_channel ? depthwise_bytes(kernel) : std::move(kernel.bytes),
      w.quantization);
  LayerBuilder layer = connected(b, node, g, kFixedFunctions, weights, macs_of(g, map));
  set_geometry(layer, g, g.groups);
  layer.scratch(b.scratch(
      g.pooled ? ai_conv2d_nl_pool_fixed_scratch_size(&layer.as<ai_layer_conv2d_nl_pool>())
               : ai_conv2d_fixed_scratch_size(&layer.as<ai_layer_conv2d>())));
}

void lower_forward(NetworkBuilder& b, const Node& node, bool depthwise) {
  const Value x = b.value(node.input(0));
  const Value y = b.value(node.output());
  Geometry g = geometry_of(b, node, depthwise);
  add_pooling(g, node, x, y);
  const Value& map = g.pooled ? g.pooled->map : y;
  check_output(g, x, map);
  if (x.type == Type::f32) {
    lower_float(b, node, g, depthwise, kFloatFunctions, map);
  } else if (is_fixed(x)) {
    lower_fixed(b, node, g, depthwise);
  } else {
    lower_integer(b, node, g, depthwise);
  }
}

void conv2d(NetworkBuilder& b, const Node& node) {
  lower_forward(b, node, false);
}
void depthwise_conv2d(NetworkBuilder& b, const Node& node) {
  lower_forward(b, node, true);
}

void conv2d_transpose(NetworkBuilder& b, const Node& node) {
  const Value x = b.value(node.input(0));
  const Geometry g = geometry_of(b, node, false);
  lower_float(b, node, g, false, {NNLIB_FUNCTION(forward_conv2d_transpose), {}, {}, {}}, x);
}

constexpr Lowering kConvolutionRows[] = {
    {Op::conv2d, conv2d, kFloat | kInteger | kFixed,
     "constant weights; integer: int8 weights have zero point 0, dilated kernels and groups are "
     "filled up with zeros"},
    {Op::depthwise_conv2d, depthwise_conv2d, kFloat | kInteger | kFixed,
     "constant weights; integer with several outputs a channel: filled up with zeros"},
    {Op::conv2d_transpose, conv2d_transpose, kFloat, "constant weights"},
};

}  // namespace

std::span<const Lowering> convolution_lowerings() {
  return kConvolutionRows;
}

}  // namespace nnlib::importer
