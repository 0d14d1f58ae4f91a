// SPDX-License-Identifier: MIT
// Layers that move elements and compute nothing: any type.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "importer/lower/activation.hpp"
#include "importer/lower/groups.hpp"
#include "importer/lower/quantized.hpp"

namespace nnlib::importer {
namespace {

void check_moved(const Value& from, const Value& to) {
  require(from.type == to.type, "input and output have to have the same type");
  require((!is_quantized(from) && !is_fixed(from)) || same_quantization(from, to),
          "input and output have to have the same scale and zero point");
}

void reshape(NetworkBuilder& b, const Node& node) {
  check_moved(b.value(node.input(0)), b.value(node.output()));
  b.alias(node.output(), node.input(0));
}

bool needs_table(const Value& x, const Value& like) {
  return is_quantized(x) && is_quantized(like) && !same_quantization(x, like) &&
         x.type == like.type;
}

// A value with the scale and the zero point of another one.
void requantize(NetworkBuilder& b, ValueId id, ValueId out) {
  const Value x = b.value(id);
  const Value like = b.value(out);
  check_activation(x);
  check_activation(like);
  Node table;
  table.op = Op::requantize;
  Tensor& from = b.tensor(id);
  Tensor& to = b.tensor(out);
  b.layer<ai_layer_nl>(NNLIB_LAYER_TYPE(NL), NNLIB_FUNCTION(forward_nl_integer))
      .input(from)
      .output(to)
      .in_place(to, from)
      .set(NNLIB_MEMBER(ai_layer_nl, nl_params),
           b.parameters("table", format_of(x.type), unary_table(table, x, like)));
}

// The inputs that are not yet where they belong in the output are brought there, if some are.
bool concat_in_place(NetworkBuilder& b, const Node& node) {
  struct Missing {
    ValueId id;
    uint64_t offset;
  };
  std::vector<Missing> missing;
  uint64_t offset = 0;
  for (const ValueId id : node.inputs) {
    const Value& x = b.value(id);
    if (!b.lies_inside(id, node.output(), offset)) {
      missing.push_back({id, offset});
    }
    offset += static_cast<uint64_t>(x.elements()) * type_bytes(x.type);
  }
  if (missing.size() == node.inputs.size()) {
    return false;
  }
  const Value y = b.value(node.output());
  for (const Missing& m : missing) {
    const Value x = b.value(m.id);
    const ValueId part = b.temporary(y.type, x.shape, y.quantization);
    b.place_inside(part, node.output(), m.offset);
    if (needs_table(x, y)) {
      requantize(b, m.id, part);
    } else {
      b.copy(m.id, part);
    }
  }
  return true;
}

void concat(NetworkBuilder& b, const Node& node) {
  const Value y = b.value(node.output());
  const auto axis = static_cast<size_t>(node.integer("axis"));
  require(axis < y.shape.size() && !node.inputs.empty(), "the axis does not exist");
  int64_t total = 0;
  for (const ValueId id : node.inputs) {
    const Value& x = b.value(id);
    if (!needs_table(x, y)) {
      check_moved(x, y);
    }
    Shape expected = y.shape;
    require(x.rank() == y.rank(), "the inputs do not fit together");
    expected[axis] = x.shape[axis];
    require(x.shape == expected, "the inputs do not fit together");
    total += x.shape[axis];
  }
  require(total == y.shape[axis], "the inputs do not fit together");
  if (concat_in_place(b, node)) {
    return;
  }
  std::vector<ValueId> inputs;
  for (const ValueId id : node.inputs) {
    const Value x = b.value(id);
    inputs.push_back(id);
    if (needs_table(x, y)) {
      inputs.back() = b.temporary(x.type, x.shape, y.quantization);
      requantize(b, id, inputs.back());
    }
  }
  const auto dims = [axis](const Value& v) {
    const Around a = around(v.shape, axis);
    return Dims{1, a.middle * a.inner, a.outer, 1};
  };
  LayerBuilder layer =
      b.layer<ai_layer_concat>(NNLIB_LAYER_TYPE(CONCAT), NNLIB_FUNCTION(forward_concat));
  for (const ValueId id : inputs) {
    layer.input(b.tensor(id, dims(b.value(id))));
  }
  layer.output(b.tensor(node.output(), dims(y)))
      .set(NNLIB_MEMBER(ai_layer_concat, axis), AI_SHAPE_C);
}

// Every step-th element along one dimension: what windows of one pixel meet.
void skip(NetworkBuilder& b, ValueId from, ValueId to, size_t axis, int64_t step) {
  const Value x = b.value(from);
  require(x.type == Type::f32 || is_quantized(x),
          "steps other than 1 are not available for this type");
  const Around in = around(x.shape, axis);
  const Around out = around(b.value(to).shape, axis);
  require(std::max({in.outer, in.middle, in.inner}) <= UINT16_MAX && step <= UINT16_MAX,
          "a dimension exceeds 65535");
  b.layer<ai_layer_pool>(NNLIB_LAYER_TYPE(POOL), x.type == Type::f32
                                                     ? NNLIB_FUNCTION(forward_mp)
                                                     : NNLIB_FUNCTION(forward_mp_integer))
      .input(b.tensor(from, {1, in.inner, in.middle, in.outer}))
      .output(b.tensor(to, {1, out.inner, out.middle, out.outer}))
      .set(NNLIB_MEMBER(ai_layer_pool, pool_size), 1, 1)
      .set(NNLIB_MEMBER(ai_layer_pool, pool_stride), static_cast<uint32_t>(step), 1)
      .set(NNLIB_MEMBER(ai_layer_pool, pool_pad), {0, 0, 0, 0});
}

void slice(NetworkBuilder& b, const Node& node) {
  const Value x = b.value(node.input(0));
  const auto starts = node.integers("starts");
  const auto ends = node.integers("ends");
  const auto steps = node.integers("steps", std::vector<int64_t>(starts.size(), 1));
  require(starts.size() == x.shape.size() && ends.size() == x.shape.size(),
          "starts and ends have to be known");
  for (size_t i = 0; i < starts.size(); ++i) {
    require(starts[i] >= 0 && starts[i] < ends[i] && ends[i] <= x.shape[i],
            "the slice is empty or lies outside the tensor");
  }
  check_moved(x, b.value(node.output()));
  std::vector<size_t> skipped;
  Shape shape;
  for (size_t i = 0; i < steps.size(); ++i) {
    require(steps[i] >= 1, "steps below 1 are not available");
    shape.push_back(ends[i] - starts[i]);
    if (steps[i] > 1) {
      skipped.push_back(i);
    }
  }
  ValueId cut = skipped.empty() ? node.output() : b.temporary(x.type, shape, x.quantization);
  const auto run = skipped.empty() ? run_of_slice(b.graph(), node) : std::nullopt;
  if (shape == x.shape) {
    b.alias(cut, node.input(0));
  } else if (!run || !b.view(cut, node.input(0), *run)) {
    const auto dims = slice_dims(x.shape, starts, ends);
    require(dims.has_value(), "more than four dimensions are cut");
    LayerBuilder layer =
        b.layer<ai_layer_slice>(NNLIB_LAYER_TYPE(SLICE), NNLIB_FUNCTION(forward_slice));
    layer.input(b.tensor(node.input(0), dims->in))
        .output(b.tensor(cut, dims->out))
        .set(NNLIB_MEMBER(ai_layer_slice, starts), b.parameters<int32_t>("starts", dims->starts))
        .set(NNLIB_MEMBER(ai_layer_slice, ends), b.parameters<int32_t>("ends", dims->ends));
  }
  for (const size_t axis : skipped) {
    shape[axis] = (shape[axis] + steps[axis] - 1) / steps[axis];
    const ValueId to =
        axis == skipped.back() ? node.output() : b.temporary(x.type, shape, x.quantization);
    require(b.value(to).elements() == elements_of(shape), "the output has a wrong size");
    skip(b, cut, to, axis, steps[axis]);
    cut = to;
  }
}

void transpose(NetworkBuilder& b, const Node& node) {
  const Value x = b.value(node.input(0));
  const auto perm = node.integers("perm");
  check_moved(x, b.value(node.output()));
  auto sorted = perm;
  std::sort(sorted.begin(), sorted.end());
  for (size_t i = 0; i < sorted.size(); ++i) {
    require(sorted[i] == static_cast<int64_t>(i), "perm is no permutation");
  }
  require(perm.size() == x.shape.size(), "perm is no permutation");
  const auto dims = transpose_dims(x.shape, perm);
  require(dims.has_value(), "the permutation takes more than four dimensions");
  if (std::is_sorted(dims->perm.begin(), dims->perm.end())) {
    b.alias(node.output(), node.input(0));
    return;
  }
  b.layer<ai_layer_transpose>(NNLIB_LAYER_TYPE(TRANSPOSE), NNLIB_FUNCTION(forward_transpose))
      .input(b.tensor(node.input(0), dims->in))
      .output(b.tensor(node.output(), dims->out))
      .set(NNLIB_MEMBER(ai_layer_transpose, perm), dims->perm);
}

// One element of the type of `v`, of a real value.
Bytes element_of(const Value& v, double real) {
  Bytes bytes(type_bytes(v.type));
  if (v.type == Type::f32) {
    const auto value = static_cast<float>(real);
    std::memcpy(bytes.data(), &value, sizeof(value));
  } else if (is_fixed(v)) {
    const double most = std::ldexp(1.0, static_cast<int>(8 * bytes.size()) - 1);
    const double q = std::round(real / static_cast<double>(v.quantization->scales[0]));
    const auto value = static_cast<int16_t>(std::clamp(q, -most, most - 1));
    if (bytes.size() == 2) {
      std::memcpy(bytes.data(), &value, sizeof(value));
    } else {
      bytes[0] = static_cast<uint8_t>(value);
    }
  } else if (is_quantized(v)) {
    const double q = std::round(real / static_cast<double>(v.quantization->scales[0])) +
                     v.quantization->zero_points[0];
    const double least = v.type == Type::s8 ? INT8_MIN : 0;
    bytes[0] = static_cast<uint8_t>(static_cast<int>(std::clamp(q, least, least + 255)));
  } else {
    require(real == std::floor(real) && std::abs(real) < 2147483648.0, "the value is no integer");
    const auto value = static_cast<int64_t>(real);
    std::memcpy(bytes.data(), &value, bytes.size());
  }
  return bytes;
}

// One dimension after the other is padded as the width of a map.
void pad(NetworkBuilder& b, const Node& node) {
  const Value x = b.value(node.input(0));
  const Value y = b.value(node.output());
  const auto pads = node.integers("pads");
  const size_t rank = x.shape.size();
  const std::string mode = node.text("mode", "constant");
  require(pads.size() == 2 * rank, "the paddings have to be known");
  check_moved(x, y);
  std::vector<size_t> padded;
  for (size_t i = 0; i < rank; ++i) {
    require(pads[i] >= 0 && pads[rank + i] >= 0, "negative paddings are not available",
            "cut the tensor with a slice");
    require(y.shape.at(i) == x.shape[i] + pads[i] + pads[rank + i],
            "the output's size does not follow from the input's");
    if (pads[i] != 0 || pads[rank + i] != 0) {
      padded.push_back(i);
      const int64_t most = std::max(pads[i], pads[rank + i]);
      require(mode != "reflect" || most < x.shape[i], "the reflection is longer than the tensor");
      require(mode != "symmetric" || most <= 1, "mode symmetric is not available",
              "reflect, edge and constant are, and symmetric by one element");
    }
  }
  if (padded.empty()) {
    b.alias(node.output(), node.input(0));
    return;
  }
  const std::map<std::string, uint32_t> modes = {{"constant", AI_PAD_CONSTANT},
                                                 {"reflect", AI_PAD_REFLECT},
                                                 {"edge", AI_PAD_EDGE},
                                                 {"symmetric", AI_PAD_EDGE}};
  require(modes.contains(mode), "mode " + mode + " is not available",
          "constant, reflect and edge are");
  ValueId from = node.input(0);
  Shape shape = x.shape;
  for (size_t i = 0; i < padded.size(); ++i) {
    const size_t axis = padded[i];
    const Around a = around(shape, axis);
    // Two neighbours at the outside are one layer.
    const bool both = i + 1 < padded.size() && padded[i + 1] == axis + 1 && a.outer == 1 &&
                      modes.at(mode) != AI_PAD_REFLECT;
    const size_t width = both ? axis + 1 : axis;
    const Around w = around(shape, width);
    const Dims in = {1, w.inner, w.middle, w.outer};
    shape[axis] += pads[axis] + pads[rank + axis];
    const uint32_t top = both ? static_cast<uint32_t>(pads[axis]) : 0;
    if (both) {
      shape[width] += pads[width] + pads[rank + width];
      ++i;
    }
    const Around out = around(shape, width);
    const ValueId to =
        i + 1 == padded.size() ? node.output() : b.temporary(x.type, shape, x.quantization);
    LayerBuilder layer = b.layer<ai_layer_pad>(NNLIB_LAYER_TYPE(PAD), NNLIB_FUNCTION(forward_pad));
    layer.input(b.tensor(from, in))
        .output(b.tensor(to, {1, out.inner, out.middle, out.outer}))
        .set(NNLIB_MEMBER(ai_layer_pad, mode), modes.at(mode))
        .set(NNLIB_MEMBER(ai_layer_pad, pads), {top, static_cast<uint32_t>(pads[width])});
    if (mode == "constant") {
      layer.set(NNLIB_MEMBER(ai_layer_pad, value),
                b.parameters("value", format_of(x.type), element_of(x, node.number("value"))));
    }
    from = to;
  }
}

// One dimension after the other, each as the channels of its own map.
void tile(NetworkBuilder& b, const Node& node) {
  const Value x = b.value(node.input(0));
  const auto repeats = node.integers("repeats");
  require(repeats.size() == x.shape.size(), "the repeats have to be known");
  check_moved(x, b.value(node.output()));
  std::vector<size_t> axes;
  for (size_t i = 0; i < repeats.size(); ++i) {
    require(repeats[i] >= 1 && repeats[i] <= UINT16_MAX, "repeats have to be from 1 to 65535");
    if (repeats[i] != 1) {
      axes.push_back(i);
    }
  }
  if (axes.empty()) {
    b.alias(node.output(), node.input(0));
    return;
  }
  ValueId from = node.input(0);
  Shape shape = x.shape;
  for (const size_t axis : axes) {
    const Around a = around(shape, axis);
    const auto times = static_cast<uint16_t>(repeats[axis]);
    shape[axis] *= times;
    const ValueId to =
        axis == axes.back() ? node.output() : b.temporary(x.type, shape, x.quantization);
    const uint32_t run = a.middle * a.inner;
    b.layer<ai_layer_tile>(NNLIB_LAYER_TYPE(TILE), NNLIB_FUNCTION(forward_tile))
        .input(b.tensor(from, {1, run, a.outer, 1}))
        .output(b.tensor(to, {1, run * times, a.outer, 1}))
        .set(NNLIB_MEMBER(ai_layer_tile, repeats), std::vector<uint16_t>{1, 1, times});
    from = to;
  }
}

void resize(NetworkBuilder& b, const Node& node) {
  const Value x = b.value(node.input(0));
  const Value y = b.value(node.output());
  require(x.rank() == 4 && y.rank() == 4 && x.shape[0] == 1 && y.shape[0] == 1 &&
              x.shape[3] == y.shape[3],
          "resizing needs maps with 4 dimensions, batch 1 and the same channels");
  check_moved(x, y);
  const std::string mode = node.text("mode", "nearest");
  const std::string coordinates = node.text("coordinates", "asymmetric");
  std::vector<double> scales = node.numbers("scales");
  std::vector<float> kept;
  for (size_t i = 0; i < 2; ++i) {
    const int64_t in = x.shape[i + 1];
    const int64_t out = y.shape[i + 1];
    double scale = i < scales.size() ? scales[i] : double(out) / double(in);
    if (coordinates == "align_corners") {
      scale = in > 1 ? double(out - 1) / double(in - 1) : double(out);
    }
    require(scale > 0, "the scale has to be above 0");
    if (mode == "nearest") {
      require(coordinates == "asymmetric" ||
                  (coordinates == "half_pixel" && out % in == 0 && out / in == scale),
              "nearest pixels by " + coordinates + " are not available",
              "asymmetric ones are, and half_pixel by whole factors");
    }
    kept.push_back(static_cast<float>(scale));
  }
  require(mode == "nearest" || (mode == "linear" && x.type == Type::f32),
          "mode " + mode + " is not available", "nearest and linear are");
  LayerBuilder layer =
      b.layer<ai_layer_upsample>(NNLIB_LAYER_TYPE(UPSAMPLE), NNLIB_FUNCTION(forward_upsample));
  layer.input(b.tensor(node.input(0)))
      .output(b.tensor(node.output()))
      .set(NNLIB_MEMBER(ai_layer_upsample, mode),
           mode == "nearest" ? AI_UPSAMPLE_NEAREST : AI_UPSAMPLE_BILINEAR)
      .set(NNLIB_MEMBER(ai_layer_upsample, center), coordinates == "half_pixel")
      .set(NNLIB_MEMBER(ai_layer_upsample, scales), b.parameters<float>("scales", kept));
}

constexpr Lowering kShapeRows[] = {
    {Op::reshape, reshape, kAnyType, "takes no time and no memory"},
    {Op::identity, reshape, kAnyType, "takes no time and no memory"},
    {Op::concat, concat, kAnyType, ""},
    {Op::slice, slice, kAnyType, "steps from 1 on; at most four dimensions cut"},
    {Op::transpose, transpose, kAnyType, "at most four dimensions after joining neighbours"},
    {Op::pad, pad, kAnyType, "constant, reflect, edge; symmetric by one element; not negative"},
    {Op::tile, tile, kAnyType, ""},
    {Op::resize, resize, kAnyType,
     "nearest: asymmetric, or half_pixel by whole factors; linear: float; no cubic"},
};

}  // namespace

std::span<const Lowering> shape_lowerings() {
  return kShapeRows;
}

}  // namespace nnlib::importer
