// SPDX-License-Identifier: MIT
// ONNX operators on maps of channels: convolutions, pooling, normalization.
#include <algorithm>

#include "importer/read/onnx_window.hpp"

namespace nnlib::importer {
namespace {

Attributes window_attributes(const OnnxWindow& w) {
  return {{"strides", w.strides}, {"dilations", w.dilations}, {"pads", w.pads}};
}

// Rows and columns of weights [.., .., kh, kw] or [.., .., kw], which become four-dimensional.
ValueId square_weights(OnnxContext& c, ValueId weights) {
  Shape shape = c.build.shape(weights);
  if (static_cast<int64_t>(shape.size()) != c.rank()) {
    throw NotAvailable{"its weights have another rank than its input", ""};
  }
  if (shape.size() == 3) {
    shape.insert(shape.begin() + 2, 1);
  }
  return c.build.reshape(weights, shape);
}

ValueId known_weights(OnnxContext& c, size_t i) {
  const ValueId weights = c.input(i);
  const int from = c.build.graph().producer(weights);
  const bool dequantized =
      from >= 0 && c.build.graph().nodes[static_cast<size_t>(from)].op == Op::dequantize;
  if (!c.build.constant(weights) && !dequantized) {
    throw NotAvailable{"its weights must be known at import",
                       "give them with --freeze " + c.value(i).name + "=..."};
  }
  return weights;
}

void conv(OnnxContext& c) {
  c.require_float();
  const Shape in = map_size(c);
  const int64_t channels = c.shape()[1];
  const ValueId weights = square_weights(c, known_weights(c, 1));
  const Shape w_shape = c.build.shape(weights);
  const OnnxWindow w = OnnxWindow::of(c, {w_shape[2], w_shape[3]}, in);
  const int64_t groups = c.integer("group", 1);
  if (groups < 1 || channels % groups != 0 || w_shape[0] % groups != 0 ||
      w_shape[1] != channels / groups) {
    throw NotAvailable{"its weights do not fit its input", ""};
  }
  const ValueId x = to_map(c, c.input());
  const Shape out{c.shape()[0], w.out[0], w.out[1], w_shape[0]};
  Attributes attributes = window_attributes(w);
  ValueId y = kAbsent;
  if (groups == channels && groups != 1) {
    const ValueId filters = c.build.transpose(
        c.build.reshape(weights, {w_shape[0], w_shape[2], w_shape[3]}), {1, 2, 0});
    y = c.build.emit(Op::depthwise_conv2d, {x, filters, c.optional_input(2)}, Type::f32, out,
                     attributes);
  } else {
    attributes["groups"] = groups;
    y = c.build.emit(Op::conv2d, {x, c.build.transpose(weights, {0, 2, 3, 1}), c.optional_input(2)},
                     Type::f32, out, attributes);
  }
  c.output(from_map(c, y));
}

// What pads cut off and how large the result is.
void place_transposed(const OnnxContext& c, OnnxWindow& w, const Shape& in) {
  const Shape extra = two_of(c, "output_padding", 0, 0);
  const std::string how = c.text("auto_pad", "NOTSET");
  const bool same = how == "SAME_UPPER" || how == "SAME_LOWER";
  Shape wanted;
  if (c.has_attribute("output_shape")) {
    wanted = two_of(c, "output_shape", 1, 1);
  } else if (same) {
    wanted = {in[0] * w.strides[0], in[1] * w.strides[1]};
  }
  w.out.clear();
  for (size_t i = 0; i < 2; ++i) {
    const int64_t full = w.strides[i] * (in[i] - 1) + extra[i] + w.extent(i);
    if (!wanted.empty()) {
      const int64_t total = std::max<int64_t>(full - wanted[i], 0);
      w.pads[i] = how == "SAME_UPPER" ? total / 2 : total - total / 2;
      w.pads[2 + i] = total - w.pads[i];
      w.out.push_back(wanted[i]);
    } else {
      w.out.push_back(full - w.pads[i] - w.pads[2 + i]);
    }
  }
}

void conv_transpose(OnnxContext& c) {
  c.require_float();
  const Shape in = map_size(c);
  const int64_t channels = c.shape()[1];
  const ValueId weights = square_weights(c, known_weights(c, 1));
  const Shape s = c.build.shape(weights);
  const int64_t groups = c.integer("group", 1);
  if (groups < 1 || s[0] != channels || channels % groups != 0) {
    throw NotAvailable{"its weights do not fit its input", ""};
  }
  OnnxWindow w = OnnxWindow::of(c, {s[2], s[3]}, in);
  place_transposed(c, w, in);
  const ValueId grouped = c.build.reshape(weights, {groups, channels / groups, s[1], s[2], s[3]});
  const ValueId filters = c.build.reshape(c.build.transpose(grouped, {0, 2, 3, 4, 1}),
                                          {groups * s[1], s[2], s[3], channels / groups});
  Attributes attributes = window_attributes(w);
  attributes["groups"] = groups;
  const ValueId y =
      c.build.emit(Op::conv2d_transpose, {to_map(c, c.input()), filters, c.optional_input(2)},
                   Type::f32, {c.shape()[0], w.out[0], w.out[1], groups * s[1]}, attributes);
  c.output(from_map(c, y));
}

void pool(OnnxContext& c, Op op) {
  c.require_outputs(1);
  const Type type = c.value(0).type;
  const bool bytes = op == Op::max_pool && (type == Type::u8 || type == Type::s8);
  if (!bytes) {
    c.require_float();
  }
  const Shape in = map_size(c);
  const OnnxWindow w = OnnxWindow::of(c, two_of(c, "kernel_shape", 1, 1), in);
  if (w.dilations != Shape{1, 1}) {
    throw NotAvailable{"dilated pooling is not available", "dilations of 1 are"};
  }
  const bool counts_pads = c.integer("count_include_pad", 0) != 0;
  for (size_t i = 0; i < 2; ++i) {
    if (w.pads[i] >= w.kernel[i] || w.pads[2 + i] >= w.kernel[i]) {
      throw NotAvailable{"a window that lies in the padding alone",
                         "pads below the window are taken"};
    }
    const int64_t reached = (w.out[i] - 1) * w.strides[i] + w.kernel[i];
    if (counts_pads && reached > in[i] + w.pads[i] + w.pads[2 + i]) {
      throw NotAvailable{"ceil_mode with count_include_pad is not available", "either is"};
    }
  }
  const ValueId x = to_map(c, c.input());
  Attributes attributes{{"kernel", w.kernel}, {"strides", w.strides}, {"pads", w.pads}};
  if (op == Op::average_pool && counts_pads) {
    attributes["count_include_pad"] = int64_t{1};
  }
  const ValueId y = c.build.emit(op, {x}, type, {c.shape()[0], w.out[0], w.out[1], c.shape()[1]},
                                 attributes, c.value(0).quantization);
  c.output(from_map(c, y));
}

void max_pool(OnnxContext& c) {
  pool(c, Op::max_pool);
}
void average_pool(OnnxContext& c) {
  pool(c, Op::average_pool);
}

// All positions in a row, whatever the number of dimensions.
ValueId as_row(OnnxContext& c) {
  const Shape s = c.shape();
  if (s.size() < 3) {
    throw NotAvailable{"its input has no dimensions to work on", ""};
  }
  return c.build.reshape(channels_last(c.build, c.input()),
                         {s[0], 1, element_count({s.begin() + 2, s.end()}), s[1]});
}

template <Op op>
void global_pool(OnnxContext& c) {
  c.require_float();
  Shape s = c.shape();
  if (s.size() == 4) {
    const ValueId y = c.build.emit(op, {channels_last(c.build, c.input())}, Type::f32,
                                   {s[0], 1, 1, s[1]}, {{"kernel", Shape{s[2], s[3]}}});
    c.output(channels_second(c.build, y));
    return;
  }
  const ValueId row = as_row(c);
  const int64_t positions = c.build.shape(row)[2];
  const ValueId y =
      c.build.emit(op, {row}, Type::f32, {s[0], 1, 1, s[1]}, {{"kernel", Shape{1, positions}}});
  std::fill(s.begin() + 2, s.end(), 1);
  c.output(c.build.reshape(y, s));
}

void batch_norm(OnnxContext& c) {
  c.require_float();
  c.require_outputs(1);
  if (c.integer("training_mode", 0) != 0 ||
      (c.opset < 7 && c.integer("is_test", 0) == 0 && c.node.outputs.size() > 1)) {
    throw NotAvailable{"training is not available", "export for inference"};
  }
  if (c.integer("spatial", 1) == 0) {
    throw NotAvailable{"spatial = 0 is not available", ""};
  }
  for (size_t i = 1; i < 5; ++i) {
    c.constant_numbers(i, "its statistics");
  }
  GraphBuilder& b = c.build;
  const ValueId deviation =
      b.unary(Op::sqrt, b.binary(Op::add, c.input(4), c.number("epsilon", 1e-5)));
  const ValueId scale = b.binary(Op::div, c.input(1), deviation);
  const ValueId bias = b.binary(Op::sub, c.input(2), b.binary(Op::mul, c.input(3), scale));
  // Weights that a chain of operators scales are folded at once.
  if (b.constant(c.input())) {
    Shape wide(static_cast<size_t>(c.rank()) - 1, 1);
    wide[0] = b.shape(scale)[0];
    const ValueId scaled = b.binary(Op::mul, c.input(), b.reshape(scale, wide));
    c.output(b.binary(Op::add, scaled, b.reshape(bias, wide)));
    return;
  }
  if (c.rank() < 2 || b.shape(scale) != Shape{c.shape()[1]}) {
    throw NotAvailable{"statistics that do not fit its input", ""};
  }
  c.output(channels_second(b, b.like(Op::batch_norm, {channels_last(b, c.input()), scale, bias})));
}

void instance_norm(OnnxContext& c) {
  c.require_float();
  const Shape s = c.shape();
  const ValueId y = c.build.like(Op::instance_norm, {as_row(c), c.input(1), c.input(2)},
                                 {{"epsilon", c.number("epsilon", 1e-5)}});
  Shape last{s[0]};
  last.insert(last.end(), s.begin() + 2, s.end());
  last.push_back(s[1]);
  c.output(channels_second(c.build, c.build.reshape(y, last)));
}

void lrn(OnnxContext& c) {
  c.require_float();
  const int64_t size = c.integer("size", 0);
  if (size < 1 || size % 2 == 0 || size > INT16_MAX) {
    throw NotAvailable{"a window of an even number of channels", "odd sizes are available"};
  }
  const ValueId y = c.build.like(Op::lrn, {channels_last(c.build, c.input())},
                                 {{"size", size},
                                  {"alpha", c.number("alpha", 1e-4) / static_cast<double>(size)},
                                  {"beta", c.number("beta", 0.75)},
                                  {"k", c.number("bias", 1)}});
  c.output(channels_second(c.build, y));
}

constexpr OnnxOperator kSpatialOperators[] = {
    {"AveragePool", average_pool, "one and two dimensions"},
    {"BatchNormalization", batch_norm, "inference; statistics known at import"},
    {"Conv", conv, "one and two dimensions; weights known at import"},
    {"ConvTranspose", conv_transpose, "one and two dimensions; weights known at import"},
    {"GlobalAveragePool", global_pool<Op::average_pool>, ""},
    {"GlobalMaxPool", global_pool<Op::max_pool>, ""},
    {"InstanceNormalization", instance_norm, "scale and bias known at import"},
    {"LRN", lrn, "odd sizes"},
    {"MaxPool", max_pool, "one and two dimensions, not dilated, no indices; float, int8, uint8"},
};

}  // namespace

std::span<const OnnxOperator> onnx_spatial_operators() {
  return kSpatialOperators;
}

}  // namespace nnlib::importer
