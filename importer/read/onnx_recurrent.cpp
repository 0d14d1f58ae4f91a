// SPDX-License-Identifier: MIT
// ONNX LSTM, GRU and RNN: as recurrent layers where these compute the same, else step by step.
#include <algorithm>
#include <map>
#include <tuple>

#include "importer/read/onnx_context.hpp"

namespace nnlib::importer {
namespace {

struct Sequence {
  int64_t steps = 0;
  int64_t batch = 0;
  int64_t features = 0;
  int64_t units = 0;
  int64_t directions = 1;
  ValueId x = kAbsent;  // [T, B, F]
};

// What one direction of a node computes with.
struct Direction {
  bool backwards = false;
  ValueId kernel = kAbsent;     // [gates * U, F]
  ValueId recurrent = kAbsent;  // [gates * U, U]
  ValueId input_bias = kAbsent;
  ValueId state_bias = kAbsent;  // [gates * U], zeros when the node has none
  ValueId initial_h = kAbsent;   // [B, U]; absent: zeros
  ValueId initial_c = kAbsent;
  ValueId peepholes = kAbsent;  // [3 * U], gates i, o, f
  std::vector<std::string> activations;
};

// Results of one direction; the last cell state only of an LSTM.
struct States {
  ValueId all = kAbsent;     // [T, B, U], in the order of the input; absent when not asked for
  ValueId last = kAbsent;    // [B, U]
  ValueId last_c = kAbsent;  // [B, U]
};

class Recurrent {
 public:
  Recurrent(OnnxContext& context, int64_t gate_count, std::vector<std::string> usual)
      : c(context), b(context.build), gates(gate_count), usual_activations(std::move(usual)) {
    read_sequence();
  }
  virtual ~Recurrent() = default;

  void run() {
    std::vector<States> states;
    for (int64_t i = 0; i < s.directions; ++i) {
      const Direction d = direction(i);
      states.push_back(fits_layer(d) ? by_layer(d) : by_steps(d));
    }
    give_outputs(states);
  }

 protected:
  virtual bool fits_layer(const Direction& d) const = 0;
  // One batch item: x [T, F] to [T, U], or to [1, U] with the last state alone.
  virtual ValueId layer(const Direction& d, ValueId x, bool whole) = 0;
  // One step of the whole batch: x [B, F] and the states [B, U] to the new states; an absent state
  // is 0.
  virtual void step(const Direction& d, ValueId x, ValueId& h, ValueId& cell) = 0;

  // The sums of `count` neighbouring gates [B, count * U] from input and state.
  ValueId sums(const Direction& d, ValueId x, ValueId h, int64_t first, int64_t count) {
    const auto key = std::tuple{d.backwards, h == kAbsent, first, count};
    auto [known, added] = blocks_.try_emplace(key);
    if (added) {
      const auto block = [&](ValueId of) {
        return b.narrow(of, 0, first * s.units, count * s.units);
      };
      const ValueId kernel = block(d.kernel);
      known->second = {h == kAbsent ? kernel : b.concat({kernel, block(d.recurrent)}, 1),
                       b.binary(Op::add, block(d.input_bias), block(d.state_bias))};
    }
    return b.dense(h == kAbsent ? x : b.concat({x, h}, 1), known->second.weights,
                   known->second.bias);
  }

  ValueId part(ValueId x, int64_t which) {
    const auto axis = static_cast<int64_t>(b.shape(x).size()) - 1;
    return b.narrow(x, axis, which * s.units, s.units);
  }
  ValueId rows(ValueId weights, int64_t which) {
    return b.narrow(weights, 0, which * s.units, s.units);
  }
  // The gate blocks of weights or a bias in another order.
  ValueId reordered(ValueId weights, std::initializer_list<int64_t> order) {
    std::vector<ValueId> parts;
    for (const int64_t which : order) {
      parts.push_back(rows(weights, which));
    }
    return b.concat(parts, 0);
  }
  ValueId activated(const std::string& name, ValueId x) {
    constexpr std::pair<const char*, Op> known[] = {
        {"Sigmoid", Op::sigmoid},         {"Tanh", Op::tanh},          {"Relu", Op::relu},
        {"Softsign", Op::soft_sign},      {"Softplus", Op::soft_plus}, {"Elu", Op::elu},
        {"HardSigmoid", Op::hard_sigmoid}};
    for (const auto& [word, op] : known) {
      if (name == word) {
        return b.unary(op, x);
      }
    }
    throw NotAvailable{"activation " + name + " is not available",
                       "Sigmoid, Tanh, Relu, Softsign, Softplus, Elu and HardSigmoid are"};
  }
  bool usual(const Direction& d) const {
    return d.activations == usual_activations && d.initial_h == kAbsent;
  }
  bool asked_for_all() const { return c.output_used(0); }

  OnnxContext& c;
  GraphBuilder& b;
  Sequence s;
  int64_t gates;

 private:
  void read_sequence();
  Direction direction(int64_t i);
  ValueId of_direction(size_t input, int64_t i);
  ValueId initial(size_t input, int64_t i);
  States by_layer(const Direction& d);
  States by_steps(const Direction& d);
  void give_outputs(std::vector<States> states);

  struct Block {
    ValueId weights, bias;
  };
  std::map<std::tuple<bool, bool, int64_t, int64_t>, Block> blocks_;
  std::vector<std::string> usual_activations;
};

void Recurrent::read_sequence() {
  c.require_float();
  for (const char* name : {"clip", "input_forget"}) {
    if (c.has_attribute(name) && (std::string_view(name) == "clip" || c.integer(name, 0) != 0)) {
      throw NotAvailable{std::string("attribute ") + name + " is not available",
                         "export without it"};
    }
  }
  for (const char* name : {"activation_alpha", "activation_beta"}) {
    if (!c.numbers(name).empty()) {
      throw NotAvailable{std::string("attribute ") + name + " is not available",
                         "activations with their usual parameters are"};
    }
  }
  if (c.rank() != 3 || c.rank(1) != 3 || c.rank(2) != 3) {
    throw NotAvailable{"input or weights of another rank than 3", ""};
  }
  c.constant_numbers(1, "its weights");
  c.constant_numbers(2, "its weights");
  const bool batch_first = c.integer("layout", 0) != 0;
  s.x = batch_first ? b.transpose(c.input(), {1, 0, 2}) : c.input();
  const Shape shape = b.shape(s.x);
  s = {shape[0], shape[1], shape[2], c.shape(2)[2], c.shape(1)[0], s.x};
  if (c.shape(1)[1] != gates * s.units || c.shape(1)[2] != s.features ||
      c.shape(2) != Shape{s.directions, gates * s.units, s.units} || s.steps < 1 || s.units < 1 ||
      s.directions < 1 || s.directions > 2) {
    throw NotAvailable{"weights that do not fit its input", ""};
  }
  if (c.has_input(4)) {
    for (const int64_t length : c.constant_integers(4, "sequence_lens")) {
      if (length != s.steps) {
        throw NotAvailable{"sequences shorter than the input are not available",
                           "leave sequence_lens out"};
      }
    }
  }
}

ValueId Recurrent::of_direction(size_t input, int64_t i) {
  const ValueId picked = b.narrow(c.input(input), 0, i, 1);
  Shape shape = b.shape(picked);
  shape.erase(shape.begin());
  return b.reshape(picked, shape);
}

// Zeros count as absent.
ValueId Recurrent::initial(size_t input, int64_t i) {
  if (!c.has_input(input)) {
    return kAbsent;
  }
  if (c.value(input).constant()) {
    const std::vector<double> given = to_doubles(c.value(input));
    if (std::all_of(given.begin(), given.end(), [](double x) { return x == 0; })) {
      return kAbsent;
    }
  }
  if (c.integer("layout", 0) == 0) {
    return of_direction(input, i);
  }
  return b.reshape(b.narrow(c.input(input), 1, i, 1), {s.batch, s.units});
}

Direction Recurrent::direction(int64_t i) {
  const std::string how = c.text("direction", "forward");
  Direction d;
  d.backwards = how == "reverse" || i == 1;
  d.kernel = of_direction(1, i);
  d.recurrent = of_direction(2, i);
  const int64_t width = gates * s.units;
  if (c.has_input(3)) {
    c.constant_numbers(3, "its bias");
    const ValueId both = of_direction(3, i);
    d.input_bias = b.narrow(both, 0, 0, width);
    d.state_bias = b.narrow(both, 0, width, width);
  } else {
    d.input_bias = b.expand(b.scalar(0), {width});
    d.state_bias = d.input_bias;
  }
  d.initial_h = initial(5, i);
  if (gates == 4) {
    d.initial_c = initial(6, i);
    d.peepholes = c.has_input(7) ? of_direction(7, i) : kAbsent;
  }
  const std::vector<std::string> given = c.texts("activations");
  const auto each = static_cast<std::ptrdiff_t>(usual_activations.size());
  d.activations = usual_activations;
  if (static_cast<std::ptrdiff_t>(given.size()) >= (i + 1) * each) {
    d.activations.assign(given.begin() + i * each, given.begin() + (i + 1) * each);
  }
  return d;
}

States Recurrent::by_layer(const Direction& d) {
  std::vector<ValueId> all;
  std::vector<ValueId> last;
  for (int64_t item = 0; item < s.batch; ++item) {
    const ValueId x = b.reshape(b.narrow(s.x, 1, item, 1), {s.steps, s.features});
    const ValueId y = layer(d, x, asked_for_all());
    const int64_t end = asked_for_all() && !d.backwards ? s.steps - 1 : 0;
    last.push_back(b.narrow(y, 0, end, 1));
    if (asked_for_all()) {
      all.push_back(b.reshape(y, {s.steps, 1, s.units}));
    }
  }
  return {asked_for_all() ? b.concat(all, 1) : kAbsent, b.concat(last, 0), kAbsent};
}

States Recurrent::by_steps(const Direction& d) {
  ValueId h = d.initial_h;
  ValueId cell = d.initial_c;
  std::vector<ValueId> all(static_cast<size_t>(s.steps));
  for (int64_t i = 0; i < s.steps; ++i) {
    const int64_t t = d.backwards ? s.steps - 1 - i : i;
    step(d, b.reshape(b.narrow(s.x, 0, t, 1), {s.batch, s.features}), h, cell);
    all[static_cast<size_t>(t)] = b.reshape(h, {1, s.batch, s.units});
  }
  return {asked_for_all() ? b.concat(all, 0) : kAbsent, h, cell};
}

void Recurrent::give_outputs(std::vector<States> states) {
  const bool batch_first = c.integer("layout", 0) != 0;
  const auto stacked = [&](ValueId States::*which) {
    std::vector<ValueId> parts;
    for (const States& one : states) {
      parts.push_back(b.reshape(one.*which, {1, s.batch, s.units}));
    }
    const ValueId all = b.concat(parts, 0);
    return batch_first ? b.transpose(all, {1, 0, 2}) : all;
  };
  if (asked_for_all()) {
    std::vector<ValueId> parts;
    for (const States& one : states) {
      parts.push_back(b.reshape(one.all, {s.steps, 1, s.batch, s.units}));
    }
    const ValueId all = b.concat(parts, 1);
    c.outputs[0] = batch_first ? b.transpose(all, {2, 0, 1, 3}) : all;
    if (s.directions == 2) {
      // The last states are in it already.
      for (int64_t i = 0; i < 2; ++i) {
        states[static_cast<size_t>(i)].last =
            b.narrow(b.narrow(all, 0, i == 0 ? s.steps - 1 : 0, 1), 1, i, 1);
      }
    }
  }
  if (c.output_used(1)) {
    c.outputs[1] = stacked(&States::last);
  }
  if (c.output_used(2)) {
    c.outputs[2] = stacked(&States::last_c);
  }
}

class Lstm : public Recurrent {
 public:
  explicit Lstm(OnnxContext& context) : Recurrent(context, 4, {"Sigmoid", "Tanh", "Tanh"}) {}

 private:
  bool fits_layer(const Direction& d) const override {
    return usual(d) && d.initial_c == kAbsent && d.peepholes == kAbsent && !c.output_used(2);
  }

  ValueId layer(const Direction& d, ValueId x, bool whole) override {
    const auto order = {int64_t{0}, int64_t{2}, int64_t{3},
                        int64_t{1}};  // i, o, f, c to i, f, c, o
    const ValueId bias = b.binary(Op::add, d.input_bias, d.state_bias);
    return b.emit(
        Op::lstm,
        {x, reordered(d.kernel, order), reordered(d.recurrent, order), reordered(bias, order),
         kAbsent},
        Type::f32, {whole ? s.steps : 1, s.units},
        {{"go_backwards", int64_t{d.backwards}}, {"reverse", int64_t{d.backwards && whole}}});
  }

  // Gates i, o, f, c; the first three together where no peephole looks at a state in between.
  void step(const Direction& d, ValueId x, ValueId& h, ValueId& cell) override {
    const bool together = d.peepholes == kAbsent;
    const ValueId previous = h;
    const ValueId iof =
        together ? activated(d.activations[0], sums(d, x, previous, 0, 3)) : kAbsent;
    const auto gate = [&](int64_t which) {
      if (together) {
        return part(iof, which);
      }
      ValueId sum = sums(d, x, previous, which, 1);
      if (cell != kAbsent) {
        sum = b.binary(Op::add, sum, b.binary(Op::mul, cell, rows(d.peepholes, which)));
      }
      return activated(d.activations[0], sum);
    };
    const ValueId candidate = activated(d.activations[1], sums(d, x, previous, 3, 1));
    ValueId next = b.binary(Op::mul, gate(0), candidate);
    if (cell != kAbsent) {
      next = b.binary(Op::add, next, b.binary(Op::mul, gate(2), cell));
    }
    cell = next;
    const ValueId o = gate(1);
    h = b.binary(Op::mul, o, activated(d.activations[2], cell));
  }
};

class Gru : public Recurrent {
 public:
  explicit Gru(OnnxContext& context)
      : Recurrent(context, 3, {"Sigmoid", "Tanh"}),
        after(context.integer("linear_before_reset", 0) != 0) {}

 private:
  bool fits_layer(const Direction& d) const override { return usual(d); }

  ValueId layer(const Direction& d, ValueId x, bool whole) override {
    const ValueId bias = b.binary(Op::add, d.input_bias, d.state_bias);
    const ValueId zero = b.scalar(0);
    const ValueId inside = rows(d.state_bias, 2);
    const std::vector<double> numbers = to_doubles(b.value(inside));
    const bool plain = std::all_of(numbers.begin(), numbers.end(), [](double v) { return v == 0; });
    if (!after || plain) {
      return gru(d, x, d.kernel, d.recurrent, bias, whole ? s.steps : 1, s.units);
    }
    // The bias inside the reset product: the layer has it outside alone. A unit that is always 1
    // carries it: its state is 0 before a first step that an added feature marks, and 1 from then
    // on. In that step the feature also closes the update gates of the other units, which stay 0.
    constexpr double kClosed = 200;
    constexpr double kOpen = 20;
    const int64_t u = s.units;
    const auto with_row = [&](ValueId block, double value) {
      const ValueId row = b.expand(b.scalar(value), {1});
      return b.concat({block, row}, 0);
    };
    const auto with_column = [&](ValueId block, ValueId column, double value) {
      Shape pads{0, 0, 1, 0};
      return b.concat({b.pad(block, pads, "constant", 0), with_column_end(column, value)}, 1);
    };
    std::vector<ValueId> kernels;
    std::vector<ValueId> recurrents;
    std::vector<ValueId> biases;
    for (int64_t gate = 0; gate < 3; ++gate) {
      const ValueId feature = b.expand(b.scalar(gate == 0 ? kClosed : 0), {u, 1});
      kernels.push_back(with_column(rows(d.kernel, gate), feature, 0));
      const ValueId carried = gate == 2 ? b.reshape(inside, {u, 1}) : b.expand(zero, {u, 1});
      recurrents.push_back(with_column(rows(d.recurrent, gate), carried, 0));
      const ValueId outside = rows(gate == 2 ? d.input_bias : bias, gate);
      biases.push_back(with_row(outside, gate == 0 ? -kClosed : gate == 2 ? kOpen : 0));
    }
    const ValueId marked = with_first_step(x, d.backwards);
    const ValueId y = gru(d, marked, b.concat(kernels, 0), b.concat(recurrents, 0),
                          b.concat(biases, 0), whole ? s.steps + 1 : 1, u + 1);
    const int64_t start = whole && !d.backwards ? 1 : 0;
    const int64_t steps = whole ? s.steps : 1;
    return b.slice(y, {start, 0}, {start + steps, u}, {1, 1});
  }

  // [U, 1] and an element below.
  ValueId with_column_end(ValueId column, double value) {
    return b.concat({column, b.expand(b.scalar(value), {1, 1})}, 0);
  }

  // The step that is taken first: (0, ..., 0, 1); the others get a feature 0.
  ValueId with_first_step(ValueId x, bool backwards) {
    const ValueId wide = b.pad(x, {0, 0, 0, 1}, "constant", 0);
    std::vector<double> mark(static_cast<size_t>(s.features) + 1, 0.0);
    mark.back() = 1;
    const ValueId first = b.numbers({1, s.features + 1}, mark);
    return backwards ? b.concat({wide, first}, 0) : b.concat({first, wide}, 0);
  }

  ValueId gru(const Direction& d, ValueId x, ValueId kernel, ValueId recurrent, ValueId bias,
              int64_t steps, int64_t units) {
    return b.emit(Op::gru, {x, kernel, recurrent, bias}, Type::f32, {steps, units},
                  {{"reset_after", int64_t{after}},
                   {"go_backwards", int64_t{d.backwards}},
                   {"reverse", int64_t{d.backwards && steps > 1}}});
  }

  // Gates z, r, n.
  void step(const Direction& d, ValueId x, ValueId& h, ValueId&) override {
    if (h == kAbsent) {
      h = b.expand(b.scalar(0), {s.batch, s.units});
    }
    const ValueId zr = activated(d.activations[0], sums(d, x, h, 0, 2));
    const ValueId z = part(zr, 0);
    const ValueId r = part(zr, 1);
    ValueId sum = kAbsent;
    if (after) {
      const ValueId rh = b.dense(h, rows(d.recurrent, 2), rows(d.state_bias, 2));
      const ValueId wx = b.dense(x, rows(d.kernel, 2), rows(d.input_bias, 2));
      sum = b.binary(Op::add, wx, b.binary(Op::mul, r, rh));
    } else {
      sum = sums(d, x, b.binary(Op::mul, r, h), 2, 1);
    }
    const ValueId n = activated(d.activations[1], sum);
    // h' = n + z (h - n)
    h = b.binary(Op::add, n, b.binary(Op::mul, z, b.binary(Op::sub, h, n)));
  }

  bool after;
};

class Rnn : public Recurrent {
 public:
  explicit Rnn(OnnxContext& context) : Recurrent(context, 1, {"Tanh"}) {}

 private:
  bool fits_layer(const Direction&) const override { return false; }
  ValueId layer(const Direction&, ValueId, bool) override { return kAbsent; }
  void step(const Direction& d, ValueId x, ValueId& h, ValueId&) override {
    h = activated(d.activations[0], sums(d, x, h, 0, 1));
  }
};

template <class Kind>
void recurrent(OnnxContext& c) {
  Kind(c).run();
}

constexpr OnnxOperator kRecurrentOperators[] = {
    {"GRU", recurrent<Gru>, "weights known at import; no clip, sequences of full length"},
    {"LSTM", recurrent<Lstm>,
     "weights known at import; no clip, no input_forget, sequences of full length"},
    {"RNN", recurrent<Rnn>, "weights known at import; no clip, sequences of full length"},
};

}  // namespace

std::span<const OnnxOperator> onnx_recurrent_operators() {
  return kRecurrentOperators;
}

}  // namespace nnlib::importer
