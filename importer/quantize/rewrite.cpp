// SPDX-License-Identifier: MIT
#include "importer/quantize/rewrite.hpp"

#include <algorithm>

#include "importer/graph/refusals.hpp"
#include "importer/lower/lowering.hpp"
#include "importer/pass/quantization.hpp"

namespace nnlib::importer {
namespace {

template <class List>
auto& at(List& list, ValueId id) {
  return list[static_cast<size_t>(id)];
}

// The result's elements are elements of the first input, or between them in its format.
bool keeps_format(Op op, bool fixed) {
  return (moves_bytes(op) && op != Op::concat) || op == Op::pad || op == Op::resize ||
         (fixed && (op == Op::average_pool || op == Op::relu || op == Op::clip));
}

// Of fixed point.
int bits_of(Target target) {
  return target == Target::q7 ? 8 : 16;
}

bool is_bound(Op op) {
  return op == Op::relu || op == Op::clip;
}

// Operators whose results saturate where the bound behind them does.
bool takes_bound(Op op) {
  return has_weights(op) || op == Op::add || op == Op::average_pool;
}

// --- formats of activations
// -------------------------------------------------------------------------

// The relu or clip that alone reads a node's result, or -1.
int bound_behind(const Graph& graph, const Node& node) {
  const std::vector<int> readers = graph.consumers(node.output());
  return takes_bound(node.op) && readers.size() == 1 && !graph.is_output(node.output()) &&
                 is_bound(graph.nodes[static_cast<size_t>(readers[0])].op)
             ? readers[0]
             : -1;
}

class FormatChoice {
 public:
  FormatChoice(const Graph& graph, const std::vector<Histogram>& spreads,
               const RewriteOptions& options)
      : graph_(graph), spreads_(spreads), options_(options) {}

  Formats choose() {
    formats_.resize(graph_.values.size());
    for (const ValueId id : graph_.inputs) {
      of(id) = spread_format(id);
    }
    for (const Node& node : graph_.nodes) {
      for (const ValueId id : node.outputs) {
        if (id != kAbsent) {
          of(id) = result_format(node, id);
        }
      }
    }
    return std::move(formats_);
  }

 private:
  std::optional<Quantization>& of(ValueId id) { return at(formats_, id); }

  Quantization spread_format(ValueId id) const {
    const Histogram& spread = at(spreads_, id);
    if (is_fixed_point(options_.target)) {
      return fixed_point(fixed_format(spread, bits_of(options_.target), options_.ranges));
    }
    return affine_format(spread, element_type(options_.target), options_.ranges);
  }

  Quantization result_format(const Node& node, ValueId id) {
    const bool fixed = is_fixed_point(options_.target);
    const ValueId x = node.input(0);
    if (fixed && (node.op == Op::tanh || node.op == Op::sigmoid)) {
      return fixed_point(options_.target == Target::q7 ? 7 : 15);
    }
    const int from = x == kAbsent ? -1 : graph_.producer(x);
    const bool bounds = is_bound(node.op) && from >= 0 &&
                        bound_behind(graph_, graph_.nodes[static_cast<size_t>(from)]) >= 0;
    if ((bounds || keeps_format(node.op, fixed)) && x != kAbsent && of(x)) {
      return *of(x);
    }
    const int bound = bound_behind(graph_, node);
    return spread_format(bound < 0 ? id : graph_.nodes[static_cast<size_t>(bound)].output());
  }

  const Graph& graph_;
  const std::vector<Histogram>& spreads_;
  const RewriteOptions& options_;
  Formats formats_;
};

// --- nodes
// ------------------------------------------------------------------------------------------

class Rewriter {
 public:
  Rewriter(const Graph& graph, const Formats& formats, const RewriteOptions& options)
      : from_(graph), formats_(formats), options_(options) {
    const size_t values = graph.values.size();
    floats_.resize(values, kAbsent);
    quantized_.resize(values, kAbsent);
    result_.twins.resize(values, kAbsent);
    result_.weights.resize(graph.nodes.size(), kAbsent);
    result_.quantized.resize(graph.nodes.size(), false);
  }

  Rewritten run() {
    Graph& to = result_.graph;
    to.name = from_.name;
    for (const ValueId id : from_.inputs) {
      const Value& v = from_.value(id);
      at(floats_, id) = at(result_.twins, id) = to.add(v);
      to.inputs.push_back(at(floats_, id));
    }
    for (size_t i = 0; i < from_.nodes.size(); ++i) {
      const Node& node = from_.nodes[i];
      if (worth(node) && trial(node)) {
        result_.quantized[i] = true;
        result_.weights[i] = emit(to, node, [this](ValueId id) { return as_quantized(id); });
        at(quantized_, node.output()) = to.nodes.back().output();
        note_twin(node, to.nodes.back().output());
      } else {
        keep(node);
      }
    }
    for (const ValueId id : from_.outputs) {
      const ValueId real = as_float(id);
      to.outputs.push_back(real);
      to.rename(real, from_.value(id).name);
    }
    return std::move(result_);
  }

 private:
  void note_twin(const Node& node, ValueId twin) {
    const bool bounded = bound_behind(from_, node) >= 0;
    at(result_.twins, node.output()) = bounded ? kAbsent : twin;
  }

  bool named(const Node& node) const {
    return options_.keep_float.contains(node.name) ||
           options_.keep_float.contains(from_.value(node.output()).name);
  }

  // A layer and the bound behind it are one.
  bool kept(const Node& node) const {
    const int bound = bound_behind(from_, node);
    return named(node) || (bound >= 0 && named(from_.nodes[static_cast<size_t>(bound)]));
  }

  // Whether quantizing a node spares anything: it has weights, or what it reads is there already.
  bool worth(const Node& node) const {
    if (node.outputs.size() != 1 || kept(node) || from_.value(node.output()).type != Type::f32) {
      return false;
    }
    return has_weights(node.op) ||
           std::any_of(node.inputs.begin(), node.inputs.end(), [this](ValueId id) {
             return id != kAbsent && (at(quantized_, id) != kAbsent || from_.is_input(id));
           });
  }

  // Whether there is a layer: the node alone, quantized, can be lowered.
  bool trial(const Node& node) {
    Graph alone;
    try {
      const auto port = [&](ValueId id) {
        const Value& v = from_.value(id);
        if (v.constant()) {
          return constant(alone, id);
        }
        alone.inputs.push_back(alone.add(activation(id)));
        return alone.inputs.back();
      };
      emit(alone, node, port);
      alone.outputs = {alone.nodes.back().output()};
      lower(alone);
      return true;
    } catch (const Refused&) {
      return false;
    }
  }

  // A value in its format.
  Value activation(ValueId id) const {
    const Value& v = from_.value(id);
    if (v.type != Type::f32 || !at(formats_, id)) {
      throw Refused("no numbers to be quantized");
    }
    return {v.name, element_type(options_.target), v.shape, at(formats_, id), nullptr};
  }

  // A constant operand, of all its range.
  ValueId constant(Graph& to, ValueId id) const {
    const Value& v = from_.value(id);
    if (v.type != Type::f32) {
      throw Refused("no numbers to be quantized");
    }
    const std::vector<double> numbers = to_doubles(v);
    Histogram spread;
    spread.widen(numbers);
    const Type type = element_type(options_.target);
    const Quantization q = is_fixed_point(options_.target)
                               ? fixed_point(fixed_format(std::max(-spread.low(), spread.high()),
                                                          bits_of(options_.target)))
                               : affine_format(spread.low(), spread.high(), type);
    return to.add(quantized_constant(v, numbers, type, q, 1));
  }

  ValueId as_quantized(ValueId id) {
    if (from_.value(id).constant()) {
      return constant(result_.graph, id);
    }
    ValueId& known = at(quantized_, id);
    if (known == kAbsent) {
      known = convert(Op::quantize, at(floats_, id), activation(id));
    }
    return known;
  }

  ValueId as_float(ValueId id) {
    ValueId& known = at(floats_, id);
    if (known == kAbsent) {
      const Value& v = from_.value(id);
      known = v.constant() ? result_.graph.add(v) : convert(Op::dequantize, at(quantized_, id), v);
    }
    return known;
  }

  ValueId convert(Op op, ValueId x, const Value& like) {
    Graph& to = result_.graph;
    const ValueId y = to.add(like);
    to.nodes.push_back({"", "", op, {x}, {y}, {}});
    return y;
  }

  // The node as it is, on floats.
  void keep(const Node& node) {
    Node copy = node;
    for (ValueId& id : copy.inputs) {
      id = id == kAbsent ? kAbsent : as_float(id);
    }
    for (ValueId& id : copy.outputs) {
      if (id != kAbsent) {
        const ValueId result = result_.graph.add(from_.value(id));
        at(floats_, id) = at(result_.twins, id) = result;
        id = result;
      }
    }
    result_.graph.nodes.push_back(std::move(copy));
  }

  // Appends the quantized node; `operand` gives quantized values of `to`. Returns its weights.
  template <class Operand>
  ValueId emit(Graph& to, const Node& node, Operand operand) {
    Node copy = node;
    const Value result = activation(node.output());
    ValueId weights = kAbsent;
    if (has_weights(node.op)) {
      const ValueId x = operand(node.input(0));
      const WeightsAndBias both = quantize_weights(node, *to.value(x).quantization, result);
      weights = to.add(both.weights);
      copy.inputs = {x, weights, to.add(both.bias)};
    } else {
      for (ValueId& id : copy.inputs) {
        id = id == kAbsent ? kAbsent : operand(id);
        if (node.op == Op::concat && to.value(id).quantization != result.quantization) {
          Value part = to.value(id);
          part.quantization = result.quantization;
          part.data = nullptr;
          const ValueId moved = to.add(part);
          to.nodes.push_back({"", "", Op::requantize, {id}, {moved}, {}});
          id = moved;
        }
      }
    }
    const Shape pads = node.integers("pads");
    if (node.op == Op::average_pool &&
        std::all_of(pads.begin(), pads.end(), [](int64_t pad) { return pad == 0; })) {
      copy.attributes.erase("count_include_pad");
    }
    copy.outputs = {to.add(result)};
    to.nodes.push_back(std::move(copy));
    return weights;
  }

  WeightsAndBias quantize_weights(const Node& node, const Quantization& in,
                                  const Value& result) const {
    const Value& w = from_.value(node.input(1));
    const Value* b = from_.find(node.input(2));
    if (!w.constant() || w.type != Type::f32 || (b != nullptr && !b->constant())) {
      throw Refused("the weights are no constants");
    }
    const size_t channels = output_channels(node.op, w).count;
    const std::vector<double> bias =
        b != nullptr ? to_doubles(*b) : std::vector<double>(channels, 0.0);
    if (is_fixed_point(options_.target)) {
      const int bits = bits_of(options_.target);
      const bool narrow = node.op == Op::dense && options_.weights.type == Type::s8;
      return fixed_weights(node.op, w, bias, {in.fraction_bits(), bits},
                           result.quantization->fraction_bits(), narrow ? 8 : bits,
                           options_.ranges);
    }
    return integer_weights(node.op, w, bias, in.scales[0], result.quantization->scales[0],
                           options_.weights);
  }

  const Graph& from_;
  const Formats& formats_;
  const RewriteOptions& options_;
  Rewritten result_;
  std::vector<ValueId> floats_, quantized_;  // the values here, by their ids in the float graph
};

void check_names(const Graph& graph, const std::set<std::string>& names) {
  for (const std::string& name : names) {
    const bool known = std::any_of(graph.nodes.begin(), graph.nodes.end(), [&](const Node& node) {
      const Value* result = graph.find(node.output());
      return node.name == name || (result != nullptr && result->name == name);
    });
    if (!known) {
      throw Refused("no layer is called '" + name + "'");
    }
  }
}

}  // namespace

Formats choose_formats(const Graph& graph, const std::vector<Histogram>& spreads,
                       const RewriteOptions& options) {
  return FormatChoice(graph, spreads, options).choose();
}

Rewritten rewrite(const Graph& graph, const Formats& formats, const RewriteOptions& options) {
  check_names(graph, options.keep_float);
  return Rewriter(graph, formats, options).run();
}

}  // namespace nnlib::importer
