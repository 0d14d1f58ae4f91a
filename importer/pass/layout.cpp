// SPDX-License-Identifier: MIT
#include "importer/pass/layout.hpp"

#include <algorithm>

#include "importer/pass/graph_builder.hpp"
#include "importer/pass/host_math.hpp"

namespace nnlib::importer {
namespace {

// Element by element with one activation: order and shape do not matter to it.
bool is_pointwise(Op op) {
  return unary_math(op) != nullptr || op == Op::quantize || op == Op::dequantize ||
         op == Op::requantize || op == Op::cast || op == Op::identity || op == Op::lookup;
}

// Operands broadcast against each other.
bool broadcasts(Op op) {
  return binary_math(op) != nullptr || op == Op::prelu || op == Op::where;
}

bool is_reduction(Op op) {
  return op >= Op::reduce_sum && op <= Op::reduce_log_sum_exp;
}

// Axes of size 1 aside, the order stays.
bool only_reshapes(const Shape& from, const Shape& perm) {
  int64_t last = -1;
  for (const int64_t axis : perm) {
    if (from[static_cast<size_t>(axis)] != 1) {
      if (axis < last) {
        return false;
      }
      last = axis;
    }
  }
  return true;
}

bool is_channels_last(const Shape& perm) {
  bool is = perm.size() >= 3 && perm.front() == 0 && perm.back() == 1;
  for (size_t i = 1; is && i + 1 < perm.size(); ++i) {
    is = perm[i] == static_cast<int64_t>(i) + 1;
  }
  return is;
}

class Layout {
 public:
  explicit Layout(Graph& graph) : g_(graph), b_(graph) {}

  void run(bool channels_last_io) {
    settle(&Layout::sink);
    settle(&Layout::hoist);
    if (channels_last_io) {
      drop_at_inputs();
      drop_at_outputs();
    }
    settle(&Layout::simplify);
  }

 private:
  using Rule = bool (Layout::*)(const Node&);

  void settle(Rule rule) {
    // Each step moves a node towards an end or removes one; the bound is for safety.
    for (size_t round = 0; round < 1000; ++round) {
      bool changed = false;
      const size_t count = g_.nodes.size();
      for (size_t i = 0; i < count; ++i) {
        const Node node = g_.nodes[i];
        if (node.outputs.size() == 1 && is_read(node.output())) {
          b_.set_context(node);
          changed = (this->*rule)(node) || changed;
        }
      }
      g_.sort();
      g_.remove_dead();
      if (!changed) {
        break;
      }
    }
  }

  bool is_read(ValueId id) const { return g_.is_output(id) || !g_.consumers(id).empty(); }

  const Node* giver(ValueId id, Op op) const {
    const Node* node = id == kAbsent ? nullptr : b_.producer(id);
    return node != nullptr && node->op == op ? node : nullptr;
  }

  void become(const Node& node, ValueId result) { b_.replace(node.output(), result); }

  // Pairs that cancel or merge, and what turns out to be something simpler.
  bool simplify(const Node& node) {
    if (node.op == Op::transpose) {
      return simplify_transpose(node);
    }
    if (node.op != Op::reshape) {
      return false;
    }
    if (const Node* before = giver(node.input(0), Op::reshape)) {
      become(node, b_.reshape(before->input(0), Shape(b_.shape(node.output()))));
      return true;
    }
    if (b_.shape(node.input(0)) == b_.shape(node.output()) && !needs_copy(node)) {
      become(node, node.input(0));
      return true;
    }
    return false;
  }

  // An output that would be an input or a constant.
  bool needs_copy(const Node& node) const {
    return g_.is_output(node.output()) &&
           (g_.is_input(node.input(0)) || b_.constant(node.input(0)) ||
            g_.is_output(node.input(0)));
  }

  bool simplify_transpose(const Node& node) {
    const ValueId x = node.input(0);
    const Shape perm = node.integers("perm");
    if (const Node* before = giver(x, Op::transpose)) {
      const Shape both = permuted(before->integers("perm"), perm);
      const ValueId from = before->input(0);
      if (std::is_sorted(both.begin(), both.end())) {
        const Node copy{node.name, node.origin, Op::reshape, {from}, {node.output()}, {}};
        if (needs_copy(copy)) {
          return false;
        }
        become(node, from);
      } else {
        become(node, b_.transpose(from, both));
      }
      return true;
    }
    if (only_reshapes(b_.shape(x), perm)) {
      const ValueId y = b_.emit(Op::reshape, {x}, b_.value(x).type, Shape(b_.shape(node.output())),
                                {}, b_.value(node.output()).quantization);
      become(node, y);
      return true;
    }
    // The same transposition of the same tensor once.
    for (const int other : g_.consumers(x)) {
      const Node twin = g_.nodes[static_cast<size_t>(other)];
      if (twin.op == Op::transpose && twin.output() < node.output() &&
          twin.integers("perm") == perm) {
        become(node, twin.output());
        return true;
      }
    }
    return false;
  }

  // --- downwards -------------------------------------------------------------------------------

  bool sink(const Node& node) {
    if (node.op == Op::transpose || node.op == Op::reshape) {
      return simplify(node);
    }
    if (is_pointwise(node.op)) {
      return below_pointwise(node);
    }
    if (broadcasts(node.op)) {
      return below_broadcast(node);
    }
    if (is_reduction(node.op)) {
      return below_reduction(node);
    }
    switch (node.op) {
      case Op::concat:
        return below_concat(node);
      case Op::dense:
        return into_weights(node);
      case Op::softmax:
      case Op::log_softmax:
      case Op::hardmax:
        return below_along_axis(node);
      case Op::pad:
      case Op::slice:
      case Op::tile:
      case Op::expand:
        return below_per_axis(node);
      default:
        return false;
    }
  }

  // The operator with other operands, its result of the shape; attributes as they are.
  ValueId again(const Node& node, std::vector<ValueId> inputs, Shape shape, Attributes attributes) {
    const Value out = b_.value(node.output());
    return b_.emit(node.op, std::move(inputs), out.type, std::move(shape), std::move(attributes),
                   out.quantization);
  }

  bool below_pointwise(const Node& node) {
    const ValueId x = node.input(0);
    const std::optional<Quantization>& q = b_.value(node.output()).quantization;
    if (q && !q->per_tensor()) {
      return false;
    }
    std::vector<ValueId> inputs = node.inputs;
    if (const Node* before = giver(x, Op::transpose)) {
      const Shape perm = before->integers("perm");
      inputs[0] = before->input(0);
      const Shape shape = b_.shape(inputs[0]);
      become(node, b_.transpose(again(node, inputs, shape, node.attributes), perm));
      return true;
    }
    if (const Node* before = giver(x, Op::reshape)) {
      inputs[0] = before->input(0);
      const Shape shape = b_.shape(inputs[0]);
      const Shape wanted = b_.shape(node.output());
      become(node, b_.reshape(again(node, inputs, shape, node.attributes), wanted));
      return true;
    }
    return false;
  }

  // The operand before the transposition, or one that broadcasts as the operand did after it.
  std::optional<ValueId> untransposed(ValueId id, const Shape& perm) {
    if (const Node* before = giver(id, Op::transpose)) {
      return before->integers("perm") == perm ? std::optional(before->input(0)) : std::nullopt;
    }
    const Value value = b_.value(id);
    if (value.elements() == 1 && value.rank() == 0) {
      return id;
    }
    if (value.shape.size() > perm.size()) {
      return std::nullopt;
    }
    const Shape inverse = inverse_permutation(perm);
    if (!b_.constant(id)) {
      // Another activation: worth it where its own transposition is needed anyway. Towards
      // channels last alone, or two operands would take turns for ever.
      const std::vector<int> readers = g_.consumers(id);
      const bool there =
          is_channels_last(inverse) && std::any_of(readers.begin(), readers.end(), [&](int reader) {
            const Node& other = g_.nodes[static_cast<size_t>(reader)];
            return other.op == Op::transpose && other.integers("perm") == inverse &&
                   is_read(other.output());
          });
      const bool small = std::count_if(value.shape.begin(), value.shape.end(),
                                       [](int64_t size) { return size != 1; }) <= 1;
      if (!there && !small) {
        return std::nullopt;
      }
    }
    Shape wide(perm.size() - value.shape.size(), 1);
    wide.insert(wide.end(), value.shape.begin(), value.shape.end());
    return b_.transpose(b_.reshape(id, wide), inverse);
  }

  bool below_broadcast(const Node& node) {
    const Shape out = b_.shape(node.output());
    for (const ValueId id : node.inputs) {
      if (const Node* before = giver(id, Op::transpose)) {
        const Shape perm = before->integers("perm");
        return perm.size() == out.size() && below_operands(node, perm, node.attributes);
      }
    }
    return below_common_reshape(node);
  }

  // All operands in the order before perm, the result transposed instead.
  bool below_operands(const Node& node, const Shape& perm, const Attributes& attributes) {
    std::vector<ValueId> inputs;
    for (const ValueId id : node.inputs) {
      const std::optional<ValueId> moved = untransposed(id, perm);
      if (!moved) {
        return false;
      }
      inputs.push_back(*moved);
    }
    const Shape shape = permuted(b_.shape(node.output()), inverse_permutation(perm));
    become(node, b_.transpose(again(node, inputs, shape, attributes), perm));
    return true;
  }

  // Operands that are reshaped from one shape to another alike.
  bool below_common_reshape(const Node& node) {
    std::vector<ValueId> inputs;
    Shape from;
    for (const ValueId id : node.inputs) {
      const Node* before = giver(id, Op::reshape);
      if (b_.constant(id) && b_.value(id).elements() == 1) {
        inputs.push_back(b_.reshape(id, {}));
        continue;
      }
      if (before == nullptr || b_.shape(id) != b_.shape(node.output()) ||
          (!from.empty() && b_.shape(before->input(0)) != from)) {
        return false;
      }
      from = b_.shape(before->input(0));
      inputs.push_back(before->input(0));
    }
    if (from.empty()) {
      return false;
    }
    const Shape wanted = b_.shape(node.output());
    become(node, b_.reshape(again(node, inputs, from, node.attributes), wanted));
    return true;
  }

  bool below_reduction(const Node& node) {
    const Node* before = giver(node.input(0), Op::transpose);
    if (before == nullptr) {
      return false;
    }
    const Shape perm = before->integers("perm");
    const ValueId x = before->input(0);
    const Shape axes = node.integers("axes");
    Shape moved = permuted(perm, axes);
    std::sort(moved.begin(), moved.end());
    const Shape out = b_.shape(node.output());
    const bool keeps = out.size() == perm.size();
    const ValueId y = b_.reduce(node.op, x, moved, true);
    if (keeps) {
      become(node, b_.transpose(y, perm));
      return true;
    }
    // The axes that stay, in the order of the result.
    Shape stay;
    for (const int64_t axis : perm) {
      if (!std::binary_search(moved.begin(), moved.end(), axis)) {
        stay.push_back(axis);
      }
    }
    Shape sorted = stay;
    std::sort(sorted.begin(), sorted.end());
    Shape order;
    for (const int64_t axis : stay) {
      order.push_back(std::lower_bound(sorted.begin(), sorted.end(), axis) - sorted.begin());
    }
    const ValueId dropped = b_.reshape(y, permuted(b_.shape(x), sorted));
    become(node, b_.transpose(dropped, order));
    return true;
  }

  bool below_concat(const Node& node) {
    Shape perm;
    for (const ValueId id : node.inputs) {
      if (const Node* before = giver(id, Op::transpose)) {
        perm = before->integers("perm");
      }
    }
    return !perm.empty() &&
           below_operands(node, perm, {{"axis", perm[static_cast<size_t>(node.integer("axis"))]}});
  }

  bool below_along_axis(const Node& node) {
    const Node* before = giver(node.input(0), Op::transpose);
    if (before == nullptr) {
      return false;
    }
    const Shape perm = before->integers("perm");
    const int64_t axis = node.integer("axis");
    const int64_t moved = perm[static_cast<size_t>(axis)];
    const auto last = static_cast<int64_t>(perm.size()) - 1;
    if (axis == last && moved != last) {
      return false;  // the layer wants the last axis
    }
    Attributes attributes = node.attributes;
    attributes["axis"] = moved;
    const Shape shape = b_.shape(before->input(0));
    become(node, b_.transpose(again(node, {before->input(0)}, shape, attributes), perm));
    return true;
  }

  // Attributes that have an entry, or two, for each axis.
  bool below_per_axis(const Node& node) {
    const Node* before = giver(node.input(0), Op::transpose);
    if (before == nullptr) {
      return false;
    }
    const Shape perm = before->integers("perm");
    if (b_.shape(node.output()).size() != perm.size()) {
      return false;
    }
    const Shape inverse = inverse_permutation(perm);
    Attributes attributes = node.attributes;
    for (const char* name : {"starts", "ends", "steps", "repeats"}) {
      if (node.has(name)) {
        attributes[name] = permuted(node.integers(name), inverse);
      }
    }
    if (node.has("pads")) {
      const Shape pads = node.integers("pads");
      const auto half = static_cast<std::ptrdiff_t>(perm.size());
      Shape moved = permuted({pads.begin(), pads.begin() + half}, inverse);
      const Shape after = permuted({pads.begin() + half, pads.end()}, inverse);
      moved.insert(moved.end(), after.begin(), after.end());
      attributes["pads"] = moved;
    }
    const Shape shape = permuted(b_.shape(node.output()), inverse);
    become(node, b_.transpose(again(node, {before->input(0)}, shape, attributes), perm));
    return true;
  }

  // dense(flatten(transpose(x))): the weights' columns are put into the order of x.
  bool into_weights(const Node& node) {
    const Node* flatten = giver(node.input(0), Op::reshape);
    const Node* before = flatten == nullptr ? nullptr : giver(flatten->input(0), Op::transpose);
    if (before == nullptr || !is_known(node.input(1))) {
      return false;
    }
    const Shape perm = before->integers("perm");
    const ValueId x = before->input(0);
    const Shape turned = b_.shape(flatten->input(0));
    const Shape flat = b_.shape(node.input(0));
    const ValueId weights = node.input(1);
    const int64_t columns = b_.shape(weights)[1];
    if (perm[0] != 0 || element_count(turned) != turned[0] * columns) {
      return false;
    }
    Shape split = turned;
    split[0] = b_.shape(weights)[0];
    const ValueId wide = b_.transpose(b_.reshape(weights, split), inverse_permutation(perm));
    const ValueId moved = b_.reshape(wide, Shape(b_.shape(weights)));
    const Shape shape = b_.shape(node.output());
    become(node, again(node, {b_.reshape(x, flat), moved, node.input(2)}, shape, node.attributes));
    return true;
  }

  bool is_known(ValueId id) const {
    const Node* before = giver(id, Op::dequantize);
    return b_.constant(id) || (before != nullptr && b_.constant(before->input(0)));
  }

  // --- upwards ---------------------------------------------------------------------------------

  // transpose(f(x)) as f(transpose(x)), where nobody else reads f(x): towards an input.
  bool hoist(const Node& node) {
    if (node.op != Op::transpose) {
      return simplify(node);
    }
    const Node* before = b_.producer(node.input(0));
    if (g_.is_output(node.output()) || before == nullptr || !is_pointwise(before->op) ||
        g_.consumers(node.input(0)).size() != 1 || g_.is_output(node.input(0))) {
      return simplify_transpose(node);
    }
    const Node function = *before;
    std::vector<ValueId> inputs = function.inputs;
    inputs[0] = b_.transpose(inputs[0], node.integers("perm"));
    b_.set_context(function);
    become(node, again(function, inputs, Shape(b_.shape(node.output())), function.attributes));
    return true;
  }

  // --- inputs and outputs ----------------------------------------------------------------------

  void drop_at_inputs() {
    for (const ValueId id : g_.inputs) {
      const std::vector<int> readers = g_.consumers(id);
      const bool all = std::all_of(readers.begin(), readers.end(), [&](int reader) {
        const Node& node = g_.nodes[static_cast<size_t>(reader)];
        return node.op == Op::transpose && is_channels_last(node.integers("perm"));
      });
      if (readers.empty() || !all || g_.is_output(id)) {
        continue;
      }
      const Shape perm = g_.nodes[static_cast<size_t>(readers[0])].integers("perm");
      g_.value(id).shape = permuted(g_.value(id).shape, perm);
      for (const int reader : readers) {
        const Node node = g_.nodes[static_cast<size_t>(reader)];
        if (!g_.is_output(node.output())) {
          g_.replace_uses(node.output(), id);
        } else {
          g_.nodes[static_cast<size_t>(reader)].op = Op::identity;
          g_.nodes[static_cast<size_t>(reader)].attributes.clear();
        }
      }
    }
    g_.remove_dead();
  }

  void drop_at_outputs() {
    for (size_t i = 0; i < g_.outputs.size(); ++i) {
      const ValueId id = g_.outputs[i];
      const Node* node = giver(id, Op::transpose);
      if (node == nullptr || !is_channels_last(inverse_permutation(node->integers("perm")))) {
        continue;
      }
      const ValueId x = node->input(0);
      if (g_.is_input(x) || g_.is_output(x) || b_.constant(x)) {
        continue;
      }
      const std::string name = b_.value(id).name;
      g_.outputs[i] = x;
      g_.rename(x, name);
    }
    g_.remove_dead();
  }

  Graph& g_;
  GraphBuilder b_;
};

}  // namespace

void push_transpositions(Graph& graph, bool channels_last_io) {
  Layout(graph).run(channels_last_io);
}

}  // namespace nnlib::importer
