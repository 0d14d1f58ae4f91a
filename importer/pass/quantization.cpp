// SPDX-License-Identifier: MIT
#include "importer/pass/quantization.hpp"

#include <algorithm>
#include <cmath>

#include "importer/pass/evaluate.hpp"
#include "importer/pass/graph_builder.hpp"
#include "importer/pass/host_math.hpp"
#include "importer/pass/islands.hpp"

namespace nnlib::importer {

bool moves_bytes(Op op) {
  switch (op) {
    case Op::reshape:
    case Op::transpose:
    case Op::slice:
    case Op::concat:
    case Op::tile:
    case Op::expand:
    case Op::gather:
    case Op::depth_to_space:
    case Op::space_to_depth:
    case Op::max_pool:
    case Op::identity:
      return true;
    default:
      return false;
  }
}

Quantization unit_quantization() {
  return {{1.0F}, {0}, 0};
}

bool give_quantization(Graph& graph, ValueId id, const Quantization& quantization) {
  Value& value = graph.value(id);
  if (value.quantization) {
    return *value.quantization == quantization;
  }
  value.quantization = quantization;
  const int from = graph.producer(id);
  if (from < 0 || !moves_bytes(graph.nodes[static_cast<size_t>(from)].op)) {
    return true;
  }
  bool agreed = true;
  const std::vector<ValueId> inputs = graph.nodes[static_cast<size_t>(from)].inputs;
  for (const ValueId input : inputs) {
    const Type type = graph.value(input).type;
    if (type == Type::u8 || type == Type::s8) {
      agreed = give_quantization(graph, input, quantization) && agreed;
    }
  }
  return agreed;
}

namespace {

constexpr size_t kBytes = 256;
constexpr int kShift = 128;  // between the zero points of the same number as u8 and as s8

bool is_byte(Type type) {
  return type == Type::u8 || type == Type::s8;
}

// One input, moved as it is; nearest pixels are.
bool moves_one(const Node& node) {
  return (moves_bytes(node.op) && node.op != Op::concat) ||
         (node.op == Op::resize && node.text("mode", "nearest") == "nearest");
}

class Canonical {
 public:
  explicit Canonical(Graph& graph) : g_(graph), b_(graph) {}

  void run() {
    for (size_t round = 0; round < 1000 && round_of_rules(); ++round) {
    }
    fold_constants();
    g_.sort();
    g_.remove_dead();
  }

 private:
  bool round_of_rules() {
    bool changed = false;
    const size_t count = g_.nodes.size();
    for (size_t i = 0; i < count; ++i) {
      const Node node = g_.nodes[i];
      if (node.outputs.size() != 1 ||
          (g_.consumers(node.output()).empty() && !g_.is_output(node.output()))) {
        continue;
      }
      b_.set_context(node);
      const ValueId result = node.op == Op::quantize ? at_quantize(node) : below_dequantize(node);
      if (result != kAbsent) {
        b_.replace(node.output(), result);
        changed = true;
      }
    }
    g_.sort();
    g_.remove_dead();
    return changed;
  }

  // The bytes behind a dequantization of one scale; kAbsent for another value.
  ValueId bytes_behind(ValueId id) const {
    const Node* node = id == kAbsent ? nullptr : b_.producer(id);
    return node != nullptr && node->op == Op::dequantize ? node->input(0) : kAbsent;
  }
  ValueId activation_behind(ValueId id) const {
    const ValueId bytes = bytes_behind(id);
    if (bytes == kAbsent) {
      return kAbsent;
    }
    const Value& value = b_.value(bytes);
    return is_byte(value.type) && value.quantization && value.quantization->per_tensor() ? bytes
                                                                                         : kAbsent;
  }

  bool read_once(ValueId id) const { return g_.consumers(id).size() == 1 && !g_.is_output(id); }

  ValueId again(const Node& node, std::vector<ValueId> inputs, Type type,
                const Quantization& quantization) {
    const Shape shape = b_.shape(node.output());
    return b_.name_after(
        node, b_.emit(node.op, std::move(inputs), type, shape, node.attributes, quantization));
  }

  // --- movement and relu: of bytes instead of floats --------------------------------------------

  ValueId below_dequantize(const Node& node) {
    if (b_.value(node.output()).type != Type::f32) {
      return kAbsent;
    }
    const ValueId bytes = activation_behind(node.input(0));
    if (bytes == kAbsent || b_.constant(bytes)) {
      return kAbsent;
    }
    const Value from = b_.value(bytes);
    if (!moves_one(node) && !(node.op == Op::relu && reaches_zero(from))) {
      return kAbsent;
    }
    std::vector<ValueId> inputs = node.inputs;
    inputs[0] = bytes;
    const ValueId moved = again(node, inputs, from.type, *from.quantization);
    return b_.emit(Op::dequantize, {moved}, Type::f32, Shape(b_.shape(moved)));
  }

  static bool reaches_zero(const Value& v) {
    const int least = v.type == Type::s8 ? INT8_MIN : 0;
    const int zero = v.quantization->zero_points[0];
    return zero >= least && zero <= least + 255;
  }

  // --- an operator between dequantizations and a quantization ------------------------------------

  ValueId at_quantize(const Node& quantize) {
    const ValueId x = quantize.input(0);
    const Value target = b_.value(quantize.output());
    if (!target.quantization || !target.quantization->per_tensor()) {
      return kAbsent;
    }
    if (const ValueId twin = same_quantize(quantize); twin != kAbsent) {
      return twin;
    }
    if (const ValueId bytes = activation_behind(x); bytes != kAbsent) {
      const Value& from = b_.value(bytes);
      const bool same = from.type == target.type && from.quantization == target.quantization;
      return same ? bytes : table(x, target);
    }
    const Node* found = b_.producer(x);
    if (found == nullptr || !read_once(x)) {
      return kAbsent;
    }
    const Node node = *found;
    if (moves_one(node)) {
      std::vector<ValueId> inputs = node.inputs;
      inputs[0] = b_.emit(Op::quantize, {node.input(0)}, target.type,
                          Shape(b_.shape(node.input(0))), {}, target.quantization);
      return again(node, inputs, target.type, *target.quantization);
    }
    switch (node.op) {
      case Op::conv2d:
      case Op::depthwise_conv2d:
      case Op::dense:
        return weighted(node, target);
      case Op::add:
      case Op::concat:
        return several(node, target);
      case Op::average_pool:
      case Op::reduce_mean:
        return averaged(node, target);
      default:
        break;
    }
    if (node.op == Op::relu || node.op == Op::clip) {
      if (const ValueId y = bounded(node, target); y != kAbsent) {
        return y;
      }
    }
    return table(x, target);
  }

  // A quantization of the same value that was there before.
  ValueId same_quantize(const Node& quantize) const {
    const Value& own = b_.value(quantize.output());
    for (const int reader : g_.consumers(quantize.input(0))) {
      const Node& other = g_.nodes[static_cast<size_t>(reader)];
      const Value& value = b_.value(other.output());
      if (other.op == Op::quantize && other.output() < quantize.output() &&
          value.type == own.type && value.quantization == own.quantization) {
        return other.output();
      }
    }
    return kAbsent;
  }

  // Bytes of another meaning.
  ValueId requantized(ValueId bytes, const Value& target) {
    const Value from = b_.value(bytes);
    if (from.type == target.type && from.quantization == target.quantization) {
      return bytes;
    }
    return b_.emit(Op::requantize, {bytes}, target.type, from.shape, {}, target.quantization);
  }

  // What an operator that keeps the type gives: the target's numbers in that type.
  static Value in_type(const Value& target, Type type) {
    Value kept = target;
    if (type != target.type) {
      kept.type = type;
      kept.quantization->zero_points[0] += type == Type::s8 ? -kShift : kShift;
    }
    return kept;
  }

  // relu or clip after an operator that can saturate to the same end.
  ValueId bounded(const Node& function, const Value& target) {
    const ValueId inner = function.input(0);
    const Node* before = b_.producer(inner);
    const bool integer_operator =
        before != nullptr &&
        (before->op == Op::conv2d || before->op == Op::depthwise_conv2d ||
         before->op == Op::dense || before->op == Op::add || before->op == Op::average_pool);
    if (!integer_operator || !read_once(inner)) {
      return kAbsent;
    }
    const ValueId bytes =
        b_.emit(Op::quantize, {inner}, target.type, target.shape, {}, target.quantization);
    return again(function, {bytes}, target.type, *target.quantization);
  }

  ValueId weighted(const Node& node, const Value& target) {
    const ValueId x = activation_behind(node.input(0));
    ValueId weights = bytes_behind(node.input(1));
    if (x == kAbsent || weights == kAbsent || !b_.constant(weights) || b_.constant(x)) {
      return kAbsent;
    }
    const Value from = b_.value(x);
    weights = fitting_weights(weights, from.type);
    if (weights == kAbsent) {
      return kAbsent;
    }
    const Value w = b_.value(weights);
    const auto outputs = static_cast<int64_t>(b_.shape(node.output()).back());
    if (!w.quantization->per_tensor() &&
        static_cast<int64_t>(w.quantization->scales.size()) != outputs) {
      return kAbsent;
    }
    ValueId bias = kAbsent;
    if (node.input(2) != kAbsent) {
      bias = integer_bias(node.input(2), from.quantization->scales[0], *w.quantization, outputs);
      if (bias == kAbsent) {
        return kAbsent;
      }
    }
    const Value kept = in_type(target, from.type);
    return requantized(again(node, {x, weights, bias}, kept.type, *kept.quantization), target);
  }

  // u8 with u8; else s8 around zero point 0. kAbsent where that cannot be.
  ValueId fitting_weights(ValueId id, Type activation) {
    const Value w = b_.value(id);
    const std::vector<int32_t>& zeros = w.quantization->zero_points;
    const auto all = [&](int32_t zero) {
      return std::all_of(zeros.begin(), zeros.end(), [zero](int32_t z) { return z == zero; });
    };
    if ((w.type == Type::u8 && activation == Type::u8) || (w.type == Type::s8 && all(0))) {
      return id;
    }
    if (w.type != Type::u8 || !all(kShift)) {
      return kAbsent;
    }
    Value moved = w;
    Bytes bytes = *w.data;
    for (uint8_t& byte : bytes) {
      byte ^= kShift;
    }
    moved.type = Type::s8;
    std::fill(moved.quantization->zero_points.begin(), moved.quantization->zero_points.end(), 0);
    moved.data = std::make_shared<const Bytes>(std::move(bytes));
    return g_.add(moved);
  }

  // In units of the products, whatever it was stored in; kAbsent unless it is known.
  ValueId integer_bias(ValueId id, float x_scale, const Quantization& w, int64_t outputs) {
    const ValueId stored = bytes_behind(id);
    if (stored == kAbsent ? !b_.constant(id) : !b_.constant(stored)) {
      return kAbsent;
    }
    const Value value = b_.value(stored == kAbsent ? id : stored);
    if (value.elements() != outputs) {
      return kAbsent;
    }
    std::vector<double> numbers = to_doubles(value);
    std::vector<int32_t> units;
    for (size_t i = 0; i < numbers.size(); ++i) {
      if (stored != kAbsent) {
        const Quantization& q = *value.quantization;
        const size_t entry = q.per_tensor() ? 0 : i;
        numbers[i] = (numbers[i] - q.zero_points[entry]) * static_cast<double>(q.scales[entry]);
      }
      const double unit =
          static_cast<double>(x_scale) * static_cast<double>(w.scales[w.per_tensor() ? 0 : i]);
      const double rounded = std::nearbyint(numbers[i] / unit);
      if (!(std::fabs(rounded) <= INT32_MAX)) {
        return kAbsent;
      }
      units.push_back(static_cast<int32_t>(rounded));
    }
    return g_.add_constant(value.name, {outputs}, std::span<const int32_t>(units));
  }

  // Operands that are all bytes: added as they are, or put together in the result's meaning.
  ValueId several(const Node& node, const Value& target) {
    std::vector<ValueId> inputs;
    for (const ValueId id : node.inputs) {
      ValueId bytes = activation_behind(id);
      if (bytes == kAbsent) {
        return kAbsent;
      }
      if (node.op == Op::concat) {
        bytes = requantized(bytes, target);
      } else if (b_.value(bytes).type != target.type) {
        bytes = requantized(bytes, in_type(b_.value(bytes), target.type));
      }
      inputs.push_back(bytes);
    }
    return again(node, inputs, target.type, *target.quantization);
  }

  ValueId averaged(const Node& node, const Value& target) {
    const ValueId x = activation_behind(node.input(0));
    const Shape pads = node.integers("pads");
    const bool counts = node.integer("count_include_pad") != 0 &&
                        std::any_of(pads.begin(), pads.end(), [](int64_t p) { return p != 0; });
    if (x == kAbsent || counts) {
      return kAbsent;
    }
    Node plain = node;
    plain.attributes.erase("count_include_pad");
    const Value kept = in_type(target, b_.value(x).type);
    return requantized(again(plain, {x}, kept.type, *kept.quantization), target);
  }

  // --- functions of one number as tables ---------------------------------------------------------

  // The value for each of the 256 bytes, when it depends on `bytes` (found on the way) and on
  // nothing else; every step rounded to float as the model's is.
  std::optional<std::vector<double>> values_of(ValueId id, ValueId& bytes, int depth) {
    const Value value = b_.value(id);
    if (value.constant()) {
      return value.elements() == 1 && value.type == Type::f32
                 ? std::optional(std::vector<double>(kBytes, to_doubles(value)[0]))
                 : std::nullopt;
    }
    if (const ValueId from = activation_behind(id); from != kAbsent) {
      if ((bytes != kAbsent && bytes != from) || b_.constant(from)) {
        return std::nullopt;
      }
      bytes = from;
      return all_bytes(b_.value(from));
    }
    const Node* found = b_.producer(id);
    if (found == nullptr || depth == 0 ||
        (unary_math(found->op) == nullptr && binary_math(found->op) == nullptr)) {
      return std::nullopt;
    }
    const Node node = *found;
    Graph scratch;
    Node copy = node;
    copy.inputs.clear();
    const Shape shape{static_cast<int64_t>(kBytes)};
    for (const ValueId input : node.inputs) {
      const auto values = values_of(input, bytes, depth - 1);
      if (!values) {
        return std::nullopt;
      }
      copy.inputs.push_back(
          scratch.add({"", Type::f32, shape, {}, bytes_of({shape, *values}, Type::f32)}));
    }
    copy.outputs = {scratch.add({"", Type::f32, shape, {}, nullptr})};
    if (!fold(scratch, copy)) {
      return std::nullopt;
    }
    return to_doubles(scratch.value(copy.outputs[0]));
  }

  static std::vector<double> all_bytes(const Value& v) {
    std::vector<double> values;
    const int least = v.type == Type::s8 ? INT8_MIN : 0;
    for (int q = least; q < least + static_cast<int>(kBytes); ++q) {
      const int zero = v.quantization->zero_points[0];
      values.push_back(
          static_cast<double>(static_cast<float>(q - zero) * v.quantization->scales[0]));
    }
    return values;
  }

  ValueId table(ValueId x, const Value& target) {
    constexpr int kDeepest = 16;
    ValueId bytes = kAbsent;
    const auto values = values_of(x, bytes, kDeepest);
    if (!values || bytes == kAbsent || b_.shape(bytes) != target.shape) {
      return kAbsent;
    }
    const Type type = b_.value(bytes).type;
    const Value kept = in_type(target, type);
    const int least = type == Type::s8 ? INT8_MIN : 0;
    Bytes entries;
    for (const double value : *values) {
      const float scaled = static_cast<float>(value) / kept.quantization->scales[0];
      const double rounded =
          std::nearbyint(static_cast<double>(scaled)) + kept.quantization->zero_points[0];
      const double byte = std::isnan(rounded) ? kept.quantization->zero_points[0]
                                              : std::clamp<double>(rounded, least, least + 255);
      entries.push_back(static_cast<uint8_t>(static_cast<int>(byte)));
    }
    const ValueId constant = g_.add({target.name + "_table",
                                     type,
                                     {static_cast<int64_t>(kBytes)},
                                     {},
                                     std::make_shared<const Bytes>(std::move(entries))});
    const std::vector<float> numbers(values->begin(), values->end());
    const ValueId exact = g_.add_constant<float>(
        target.name + "_function", {static_cast<int64_t>(kBytes)}, std::span(numbers));
    ValueId y =
        b_.emit(Op::lookup, {bytes, constant, exact}, type, target.shape, {}, kept.quantization);
    if (const Node* function = b_.producer(x); function->op != Op::dequantize) {
      y = b_.name_after(Node(*function), y);
    }
    return requantized(y, target);
  }

  void fold_constants() {
    const size_t count = g_.nodes.size();
    for (size_t i = 0; i < count; ++i) {
      const Node node = g_.nodes[i];
      if (node.op == Op::dequantize && b_.constant(node.input(0)) && !g_.is_output(node.output())) {
        g_.replace_uses(node.output(), g_.add(dequantized(b_.value(node.input(0)))));
      }
    }
  }

  Graph& g_;
  GraphBuilder b_;
};

}  // namespace

void quantize_canonically(Graph& graph) {
  Canonical(graph).run();
}

}  // namespace nnlib::importer
