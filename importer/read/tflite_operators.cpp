// SPDX-License-Identifier: MIT
// TFLite's operators as canonical ones.
#include <algorithm>
#include <map>
#include <numeric>

#include "importer/read/tflite_file.hpp"

namespace nnlib::importer {
namespace {

using Ints = std::vector<int64_t>;

Ints strides_of(int64_t h, int64_t w) {
  return {h, w};
}

// Explicit paddings top, left, bottom, right; SAME splits what is needed, the odd one behind.
Ints pads_of(int padding, const Shape& in, const Shape& out, const Ints& kernel,
             const Ints& strides, const Ints& dilations) {
  Ints pads(4, 0);
  if (padding == 0) {
    for (size_t i = 0; i < 2; ++i) {
      const int64_t needed =
          (out.at(i + 1) - 1) * strides[i] + (kernel[i] - 1) * dilations[i] + 1 - in.at(i + 1);
      pads[i] = std::max<int64_t>(needed, 0) / 2;
      pads[i + 2] = std::max<int64_t>(needed, 0) - pads[i];
    }
  }
  return pads;
}

void require_map(const Value& v) {
  if (v.rank() != 4) {
    throw Untranslatable("tensors of 4 dimensions are needed");
  }
}

// Weights of a float layer that are stored as integers with scales, as floats.
ValueId float_weights(const TfliteOperator& op, ValueId id, bool last_axis) {
  const Value stored = op.value(id);
  if (stored.type == Type::f32 || op.in(0).type != Type::f32 || !stored.constant()) {
    return id;
  }
  if (!stored.quantization) {
    throw Untranslatable("integer weights without scale");
  }
  const Quantization& q = *stored.quantization;
  const auto integers = to_integers(stored);
  const size_t channels = q.scales.size();
  const size_t run = last_axis ? 1 : integers.size() / channels;
  std::vector<float> floats;
  for (size_t i = 0; i < integers.size(); ++i) {
    const size_t c = channels == 1 ? 0 : (i / run) % channels;
    floats.push_back(static_cast<float>(integers[i] - q.zero_points[c]) * q.scales[c]);
  }
  return op.graph.add_constant<float>(stored.name, stored.shape, floats);
}

void convolution(const TfliteOperator& op, bool depthwise, const Ints& strides,
                 const Ints& dilations, int padding, int activation) {
  const Value x = op.in(0);
  const Value w = op.in(1);
  require_map(x);
  require_map(w);
  require_map(op.out());
  const ValueId out = op.before_activation(activation);
  const Ints kernel = {w.shape[1], w.shape[2]};
  ValueId weights = float_weights(op, op.input(1), depthwise);
  if (depthwise) {  // [1][Kh][Kw][C]
    Value flat = op.graph.value(weights);
    if (flat.shape[0] != 1) {
      throw Untranslatable("weights of a wrong shape");
    }
    flat.shape.erase(flat.shape.begin());
    if (flat.quantization) {
      flat.quantization->axis = 2;
    }
    weights = op.graph.add(std::move(flat));
  }
  Node& node = op.add(depthwise ? Op::depthwise_conv2d : Op::conv2d,
                      {op.input(0), weights, op.input(2)}, {out});
  node.attributes = {
      {"strides", strides},
      {"dilations", dilations},
      {"pads", pads_of(padding, x.shape, op.out().shape, kernel, strides, dilations)}};
  if (!depthwise && w.shape[3] > 0 && x.shape[3] != w.shape[3]) {
    node.attributes["groups"] = x.shape[3] / w.shape[3];
  }
  op.add_activation(out, activation);
}

void conv_2d(const TfliteOperator& op) {
  const auto& p = op.parameters<tfl::Conv2D, tfl::Options_Conv2D>();
  convolution(op, false, strides_of(p.stride_h(), p.stride_w()),
              strides_of(p.dilation_h(), p.dilation_w()), p.padding(), p.activation());
}

void depthwise_conv_2d(const TfliteOperator& op) {
  const auto& p = op.parameters<tfl::DepthwiseConv2D, tfl::Options_DepthwiseConv2D>();
  convolution(op, true, strides_of(p.stride_h(), p.stride_w()),
              strides_of(p.dilation_h(), p.dilation_w()), p.padding(), p.activation());
}

void transpose_conv(const TfliteOperator& op) {
  const auto& p = op.parameters<tfl::TransposeConv, tfl::Options_TransposeConv>();
  const Value w = op.in(1);
  require_map(w);
  require_map(op.in(2));
  require_map(op.out());
  const Ints strides = strides_of(p.stride_h(), p.stride_w());
  const Ints kernel = {w.shape[1], w.shape[2]};
  // The paddings of the convolution that it turns round.
  const Ints pads = pads_of(p.padding(), op.out().shape, op.in(2).shape, kernel, strides, {1, 1});
  const ValueId out = op.before_activation(p.activation());
  op.add(Op::conv2d_transpose, {op.input(2), op.input(1), op.input(3)}, {out}).attributes = {
      {"strides", strides}, {"pads", pads}};
  op.add_activation(out, p.activation());
}

void fully_connected(const TfliteOperator& op) {
  const auto& p = op.parameters<tfl::FullyConnected, tfl::Options_FullyConnected>();
  if (p.weights_format() != 0) {
    throw Untranslatable("shuffled weights are not available");
  }
  const ValueId out = op.before_activation(p.activation());
  const ValueId weights = float_weights(op, op.input(1), false);
  op.add(Op::dense, {op.input(0), weights, op.input(2)}, {out});
  op.add_activation(out, p.activation());
}

void pool(const TfliteOperator& op, Op canonical) {
  const auto& p = op.parameters<tfl::Pool2D, tfl::Options_Pool2D>();
  require_map(op.in(0));
  require_map(op.out());
  const Ints kernel = {p.filter_height(), p.filter_width()};
  const Ints strides = strides_of(p.stride_h(), p.stride_w());
  const Ints pads = pads_of(p.padding(), op.in(0).shape, op.out().shape, kernel, strides, {1, 1});
  const ValueId out = op.before_activation(p.activation());
  op.add(canonical, {op.input(0)}, {out}).attributes = {
      {"kernel", kernel}, {"strides", strides}, {"pads", pads}};
  op.add_activation(out, p.activation());
}
void average_pool_2d(const TfliteOperator& op) {
  pool(op, Op::average_pool);
}
void max_pool_2d(const TfliteOperator& op) {
  pool(op, Op::max_pool);
}

template <Op canonical>
void unary(const TfliteOperator& op) {
  op.add(canonical, {op.input(0)}, {op.output()});
}

template <Op canonical, tfl::Options kind = tfl::Options_NONE>
void binary(const TfliteOperator& op) {
  op.value(op.input(0));
  op.value(op.input(1));
  int activation = 0;
  if constexpr (kind != tfl::Options_NONE) {
    activation = op.parameters<tfl::Binary, kind>().activation();
  }
  const ValueId out = op.before_activation(activation);
  op.add(canonical, {op.input(0), op.input(1)}, {out});
  op.add_activation(out, activation);
}

void relu6(const TfliteOperator& op) {
  op.add(Op::clip, {op.input(0)}, {op.output()}).attributes = {{"min", 0.0}, {"max", 6.0}};
}
void relu_n1_to_1(const TfliteOperator& op) {
  op.add(Op::clip, {op.input(0)}, {op.output()}).attributes = {{"min", -1.0}, {"max", 1.0}};
}
void leaky_relu(const TfliteOperator& op) {
  const double alpha =
      static_cast<double>(op.parameters<tfl::LeakyRelu, tfl::Options_LeakyRelu>().alpha());
  op.add(Op::leaky_relu, {op.input(0)}, {op.output()}).attributes = {{"alpha", alpha}};
}
void softmax(const TfliteOperator& op) {
  const double beta =
      static_cast<double>(op.parameters<tfl::Softmax, tfl::Options_Softmax>().beta());
  op.add(Op::softmax, {op.input(0)}, {op.output()}).attributes = {{"axis", op.in(0).rank() - 1},
                                                                  {"beta", beta}};
}
void log_softmax(const TfliteOperator& op) {
  op.add(Op::log_softmax, {op.input(0)}, {op.output()}).attributes = {
      {"axis", op.in(0).rank() - 1}};
}

template <Op canonical>
void reduce(const TfliteOperator& op) {
  Ints axes = op.constant(1);
  for (int64_t& axis : axes) {
    axis = op.axis(axis, op.in(0).rank());
  }
  std::sort(axes.begin(), axes.end());
  op.add(canonical, {op.input(0)}, {op.output()}).attributes = {{"axes", axes}};
}

void concatenation(const TfliteOperator& op) {
  const auto& p = op.parameters<tfl::Concatenation, tfl::Options_Concatenation>();
  std::vector<ValueId> inputs;
  for (size_t i = 0; i < op.input_count(); ++i) {
    inputs.push_back(op.input(i));
  }
  const ValueId out = op.before_activation(p.activation());
  op.add(Op::concat, std::move(inputs), {out}).attributes = {
      {"axis", op.axis(p.axis(), op.out().rank())}};
  op.add_activation(out, p.activation());
}

void pack(const TfliteOperator& op) {
  const int64_t axis =
      op.axis(op.parameters<tfl::Stack, tfl::Options_Stack>().axis(), op.out().rank());
  Shape part = op.out().shape;
  part[static_cast<size_t>(axis)] = 1;
  std::vector<ValueId> parts;
  for (size_t i = 0; i < op.input_count(); ++i) {
    parts.push_back(op.temporary(Value(op.in(i)), part));
    op.add(Op::reshape, {op.input(i)}, {parts.back()});
  }
  op.add(Op::concat, parts, {op.output()}).attributes = {{"axis", axis}};
}

void slice_node(const TfliteOperator& op, ValueId from, ValueId to, Ints starts, Ints ends,
                Ints steps = {}) {
  Node& node = op.add(Op::slice, {from}, {to});
  node.attributes = {{"starts", std::move(starts)}, {"ends", std::move(ends)}};
  if (!steps.empty()) {
    node.attributes["steps"] = std::move(steps);
  }
}

// Parts along an axis, one for each output.
void cut(const TfliteOperator& op, size_t input, int64_t axis, bool drop_axis) {
  const Value x = op.in(input);
  const auto at = static_cast<size_t>(axis);
  int64_t start = 0;
  for (size_t i = 0; i < op.output_count(); ++i) {
    const Value out = op.out(i);
    const int64_t size = drop_axis ? 1 : out.shape.at(at);
    Ints starts(x.shape.size(), 0);
    Ints ends = x.shape;
    starts[at] = start;
    ends[at] = start += size;
    ValueId to = op.output(i);
    if (drop_axis) {
      Shape part = x.shape;
      part[at] = 1;
      to = op.temporary(out, part);
    }
    slice_node(op, op.input(input), to, starts, ends);
    if (drop_axis) {
      op.add(Op::reshape, {to}, {op.output(i)});
    }
  }
}
void split(const TfliteOperator& op) {
  cut(op, 1, op.axis(op.constant(0).at(0), op.in(1).rank()), false);
}
void split_v(const TfliteOperator& op) {
  cut(op, 0, op.axis(op.constant(2).at(0), op.in(0).rank()), false);
}
void unpack(const TfliteOperator& op) {
  cut(op, 0, op.axis(op.parameters<tfl::Unstack, tfl::Options_Unstack>().axis(), op.in(0).rank()),
      true);
}

void slice(const TfliteOperator& op) {
  const Value x = op.in(0);
  Ints starts = op.constant(1);
  Ints ends = op.constant(2);
  if (starts.size() != x.shape.size() || ends.size() != x.shape.size()) {
    throw Untranslatable("begin and size do not fit the tensor");
  }
  for (size_t i = 0; i < ends.size(); ++i) {
    ends[i] = ends[i] < 0 ? x.shape[i] : starts[i] + ends[i];
  }
  slice_node(op, op.input(0), op.output(), starts, ends);
}

void strided_slice(const TfliteOperator& op) {
  const auto& p = op.parameters<tfl::StridedSlice, tfl::Options_StridedSlice>();
  if (p.ellipsis_mask() != 0 || p.new_axis_mask() != 0 || p.offset()) {
    throw Untranslatable("ellipses, new axes and offsets are not available", "reshape before");
  }
  const Value x = op.in(0);
  const Ints begin = op.constant(1);
  const Ints end = op.constant(2);
  Ints steps = op.constant(3);
  const size_t given = begin.size();
  if (given > x.shape.size() || end.size() != given || steps.size() != given) {
    throw Untranslatable("begin, end and strides do not fit the tensor");
  }
  Ints starts(x.shape.size(), 0);
  Ints ends = x.shape;
  steps.resize(x.shape.size(), 1);
  Shape kept = x.shape;
  for (size_t i = 0; i < given; ++i) {
    const auto masked = [i](int32_t mask) { return i < 31 && ((mask >> i) & 1) != 0; };
    const auto index = [&](int64_t v) {
      return std::clamp<int64_t>(v < 0 ? v + x.shape[i] : v, 0, x.shape[i]);
    };
    if (steps[i] < 1) {
      throw Untranslatable("strides below 1 are not available");
    }
    starts[i] = masked(p.begin_mask()) ? 0 : index(begin[i]);
    ends[i] = masked(p.end_mask()) ? x.shape[i] : index(end[i]);
    if (masked(p.shrink_axis_mask())) {
      ends[i] = starts[i] + 1;
    }
    kept[i] = (ends[i] - starts[i] + steps[i] - 1) / steps[i];
  }
  const ValueId cut_out =
      kept == op.out().shape ? op.output() : op.temporary(Value(op.out()), kept);
  slice_node(op, op.input(0), cut_out, starts, ends, steps);
  if (cut_out != op.output()) {
    op.add(Op::reshape, {cut_out}, {op.output()});
  }
}

void transpose(const TfliteOperator& op) {
  Ints perm = op.constant(1);
  op.add(Op::transpose, {op.input(0)}, {op.output()}).attributes = {{"perm", perm}};
}

void tile(const TfliteOperator& op) {
  op.add(Op::tile, {op.input(0)}, {op.output()}).attributes = {{"repeats", op.constant(1)}};
}

void pad_node(const TfliteOperator& op, const char* mode, double value) {
  const Ints pairs = op.constant(1);
  const size_t rank = op.in(0).shape.size();
  if (pairs.size() != 2 * rank) {
    throw Untranslatable("the paddings do not fit the tensor");
  }
  Ints pads(2 * rank);
  for (size_t i = 0; i < rank; ++i) {
    pads[i] = pairs[2 * i];
    pads[rank + i] = pairs[2 * i + 1];
  }
  op.add(Op::pad, {op.input(0)}, {op.output()}).attributes = {
      {"pads", pads}, {"mode", std::string(mode)}, {"value", value}};
}
void pad(const TfliteOperator& op) {
  pad_node(op, "constant", 0);
}
void padv2(const TfliteOperator& op) {
  const Value& v = op.in(2);
  if (!v.constant() || v.elements() != 1) {
    throw Untranslatable("the value has to be a constant");
  }
  double value = to_doubles(v).at(0);
  if (v.quantization) {
    value =
        (value - v.quantization->zero_points[0]) * static_cast<double>(v.quantization->scales[0]);
  }
  pad_node(op, "constant", value);
}
void mirror_pad(const TfliteOperator& op) {
  pad_node(
      op,
      op.parameters<tfl::MirrorPad, tfl::Options_MirrorPad>().mode() == 0 ? "reflect" : "symmetric",
      0);
}

void resize(const TfliteOperator& op, const char* mode, bool corners, bool half_pixel) {
  op.add(Op::resize, {op.input(0)}, {op.output()}).attributes = {
      {"mode", std::string(mode)},
      {"coordinates", std::string(corners      ? "align_corners"
                                  : half_pixel ? "half_pixel"
                                               : "asymmetric")}};
}
void resize_nearest_neighbor(const TfliteOperator& op) {
  const auto& p = op.parameters<tfl::ResizeNearest, tfl::Options_ResizeNearest>();
  resize(op, "nearest", p.align_corners(), p.half_pixel_centers());
}
void resize_bilinear(const TfliteOperator& op) {
  const auto& p = op.parameters<tfl::ResizeBilinear, tfl::Options_ResizeBilinear>();
  resize(op, "linear", p.align_corners(), p.half_pixel_centers());
}

template <Op canonical>
void block(const TfliteOperator& op) {
  op.add(canonical, {op.input(0)}, {op.output()}).attributes = {
      {"block",
       int64_t{op.parameters<tfl::Block, tfl::Options_SpaceToDepth, tfl::Options_DepthToSpace>()
                   .block_size()}}};
}

void quantize(const TfliteOperator& op) {
  op.add(op.in(0).type == Type::f32 ? Op::quantize : Op::requantize, {op.input(0)}, {op.output()});
}

void dequantize(const TfliteOperator& op) {
  const Value& x = op.in(0);
  // Half floats were widened when they were read.
  op.add(x.type == Type::f32 ? Op::identity : Op::dequantize, {op.input(0)}, {op.output()});
}

// Joins the constants of the four gates.
ValueId joined(const TfliteOperator& op, std::initializer_list<size_t> inputs, Shape shape,
               const char* what) {
  std::vector<float> all;
  for (const size_t i : inputs) {
    const Value& v = op.value(float_weights(op, op.input(i), false));
    if (!v.constant() || v.type != Type::f32) {
      throw Untranslatable(std::string(what) + " have to be float constants");
    }
    const auto part = v.as<float>();
    all.insert(all.end(), part.begin(), part.end());
  }
  if (static_cast<int64_t>(all.size()) != elements_of(shape)) {
    throw Untranslatable(std::string(what) + " do not fit together");
  }
  return op.graph.add_constant<float>(what, std::move(shape), all);
}

void lstm(const TfliteOperator& op) {
  const auto& p = op.parameters<tfl::Lstm, tfl::Options_Lstm>();
  const Value x = op.in(0);
  const Value y = op.out();
  const auto absent = [&op](size_t first, size_t last) {
    for (size_t i = first; i <= last; ++i) {
      if (op.input(i) != kAbsent) {
        return false;
      }
    }
    return true;
  };
  if (x.type != Type::f32) {
    throw Untranslatable("integer LSTMs are not available", "convert this layer in float");
  }
  if (op.input(1) == kAbsent || op.input(5) == kAbsent || !absent(16, 17) || !absent(20, 23)) {
    throw Untranslatable(
        "coupled gates, projections and layer normalization in an LSTM are not available");
  }
  if (p.proj_clip() != 0 || (p.cell_clip() != 0 && !op.options.ignore_cell_clip)) {
    throw Untranslatable("cell_clip is not available", "leave it out with --ignore-cell-clip");
  }
  if (x.rank() != 3 || y.rank() != 3 || x.shape[p.time_major() ? 1 : 0] != 1) {
    throw Untranslatable("an LSTM needs a tensor of 3 dimensions and batch 1");
  }
  const std::map<int, std::string> activations = {{0, "identity"}, {1, "relu"}, {4, "tanh"}};
  if (!activations.contains(p.activation())) {
    throw Untranslatable("its activation is not available", "tanh, relu and none are");
  }
  const int64_t steps = x.shape[p.time_major() ? 0 : 1];
  const int64_t features = x.shape[2];
  const int64_t units = y.shape[2];
  const ValueId in = op.temporary(x, {steps, features});
  const ValueId out = op.temporary(y, {steps, units});
  const ValueId peepholes =
      absent(9, 11) ? kAbsent : joined(op, {9, 11, 10}, {3 * units}, "peepholes");
  const std::string activation = activations.at(p.activation());
  op.add(Op::reshape, {op.input(0)}, {in});
  const ValueId kernel = joined(op, {1, 2, 3, 4}, {4 * units, features}, "kernel");
  const ValueId recurrent = joined(op, {5, 6, 7, 8}, {4 * units, units}, "recurrent");
  const ValueId bias = joined(op, {12, 13, 14, 15}, {4 * units}, "bias");
  op.add(Op::lstm, {in, kernel, recurrent, bias, peepholes}, {out}).attributes = {
      {"activation", activation},
      {"recurrent_activation", std::string("sigmoid")},
      {"out_activation", activation}};
  op.add(Op::reshape, {out}, {op.output()});
}

using Translation = void (*)(const TfliteOperator&);

const std::map<int32_t, Translation>& translations() {
  static const std::map<int32_t, Translation> all = {
      {0, binary<Op::add, tfl::Options_Add>},
      {1, average_pool_2d},
      {2, concatenation},
      {3, conv_2d},
      {4, depthwise_conv_2d},
      {5, block<Op::depth_to_space>},
      {6, dequantize},
      {8, unary<Op::floor>},
      {9, fully_connected},
      {14, unary<Op::sigmoid>},
      {17, max_pool_2d},
      {18, binary<Op::mul, tfl::Options_Mul>},
      {19, unary<Op::relu>},
      {20, relu_n1_to_1},
      {21, relu6},
      {22, unary<Op::reshape>},
      {23, resize_bilinear},
      {25, softmax},
      {26, block<Op::space_to_depth>},
      {28, unary<Op::tanh>},
      {34, pad},
      {39, transpose},
      {40, reduce<Op::reduce_mean>},
      {41, binary<Op::sub, tfl::Options_Sub>},
      {42, binary<Op::div, tfl::Options_Div>},
      {43, unary<Op::reshape>},
      {44, lstm},
      {45, strided_slice},
      {47, unary<Op::exp>},
      {49, split},
      {50, log_softmax},
      {54, binary<Op::prelu>},
      {55, binary<Op::maximum>},
      {57, binary<Op::minimum>},
      {59, unary<Op::neg>},
      {60, padv2},
      {65, slice},
      {66, unary<Op::sin>},
      {67, transpose_conv},
      {69, tile},
      {70, unary<Op::reshape>},
      {73, unary<Op::log>},
      {74, reduce<Op::reduce_sum>},
      {75, unary<Op::sqrt>},
      {76, unary<Op::rsqrt>},
      {81, reduce<Op::reduce_prod>},
      {82, reduce<Op::reduce_max>},
      {83, pack},
      {88, unpack},
      {89, reduce<Op::reduce_min>},
      {90, binary<Op::floor_div>},
      {92, unary<Op::square>},
      {97, resize_nearest_neighbor},
      {98, leaky_relu},
      {100, mirror_pad},
      {101, unary<Op::abs>},
      {102, split_v},
      {104, unary<Op::ceil>},
      {108, unary<Op::cos>},
      {111, unary<Op::elu>},
      {114, quantize},
      {117, unary<Op::hard_swish>},
  };
  return all;
}

}  // namespace

void translate_tflite(const TfliteOperator& op, int32_t code) {
  const auto found = translations().find(code);
  if (found == translations().end()) {
    throw Untranslatable("this operator is not available");
  }
  op.value(op.input(0));
  op.value(op.output());
  found->second(op);
}

}  // namespace nnlib::importer
