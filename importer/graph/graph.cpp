// SPDX-License-Identifier: MIT
#include "importer/graph/graph.hpp"

#include <algorithm>
#include <stdexcept>

namespace nnlib::importer {
namespace {

template <class T>
const T* attribute_of(const Node& node, std::string_view name) {
  const auto found = node.attributes.find(name);
  return found == node.attributes.end() ? nullptr : std::get_if<T>(&found->second);
}

template <class T>
T attribute_or(const Node& node, std::string_view name, T otherwise) {
  const T* value = attribute_of<T>(node, name);
  return value != nullptr ? *value : std::move(otherwise);
}

bool contains(const std::vector<ValueId>& ids, ValueId id) {
  return std::find(ids.begin(), ids.end(), id) != ids.end();
}

}  // namespace

int64_t Node::integer(std::string_view attribute, int64_t otherwise) const {
  return attribute_or(*this, attribute, otherwise);
}

double Node::number(std::string_view attribute, double otherwise) const {
  if (const auto* whole = attribute_of<int64_t>(*this, attribute)) {
    return static_cast<double>(*whole);
  }
  return attribute_or(*this, attribute, otherwise);
}

std::vector<int64_t> Node::integers(std::string_view attribute,
                                    std::vector<int64_t> otherwise) const {
  return attribute_or(*this, attribute, std::move(otherwise));
}

std::vector<double> Node::numbers(std::string_view attribute, std::vector<double> otherwise) const {
  if (const auto* whole = attribute_of<std::vector<int64_t>>(*this, attribute)) {
    return {whole->begin(), whole->end()};
  }
  return attribute_or(*this, attribute, std::move(otherwise));
}

std::string Node::text(std::string_view attribute, std::string otherwise) const {
  return attribute_or(*this, attribute, std::move(otherwise));
}

std::optional<Node> Node::fused(const std::string& part) const {
  const std::optional<Op> part_op = op_of_name(text(part));
  if (!part_op) {
    return std::nullopt;
  }
  Node node;
  node.op = *part_op;
  const std::string prefix = part + "_";
  for (const auto& [attribute, value] : attributes) {
    if (attribute.starts_with(prefix)) {
      node.attributes[attribute.substr(prefix.size())] = value;
    }
  }
  return node;
}

std::string Graph::unique_name(std::string wanted) {
  if (wanted.empty()) {
    wanted = "value";
  }
  if (int& uses = names_[wanted]; ++uses > 1) {
    std::string unique;
    do {
      unique = wanted + "#" + std::to_string(uses++);
    } while (names_.contains(unique));
    --uses;
    names_[unique] = 1;
    return unique;
  }
  return wanted;
}

ValueId Graph::add(Value value) {
  value.name = unique_name(std::move(value.name));
  values.push_back(std::move(value));
  return static_cast<ValueId>(values.size() - 1);
}

void Graph::rename(ValueId id, std::string wanted) {
  std::string& own = value(id).name;
  if (own == wanted) {
    return;
  }
  for (Value& other : values) {
    if (other.name == wanted) {  // an intermediate result that took its node's word
      other.name = unique_name(wanted);
    }
  }
  own = std::move(wanted);
  names_[own] = std::max(names_[own], 1);
}

bool Graph::is_input(ValueId id) const {
  return contains(inputs, id);
}

bool Graph::is_output(ValueId id) const {
  return contains(outputs, id);
}

int Graph::producer(ValueId id) const {
  for (size_t i = 0; i < nodes.size(); ++i) {
    if (contains(nodes[i].outputs, id)) {
      return static_cast<int>(i);
    }
  }
  return -1;
}

std::vector<int> Graph::consumers(ValueId id) const {
  std::vector<int> found;
  for (size_t i = 0; i < nodes.size(); ++i) {
    if (contains(nodes[i].inputs, id)) {
      found.push_back(static_cast<int>(i));
    }
  }
  return found;
}

void Graph::replace_uses(ValueId from, ValueId to) {
  for (Node& node : nodes) {
    std::replace(node.inputs.begin(), node.inputs.end(), from, to);
  }
  std::replace(outputs.begin(), outputs.end(), from, to);
}

void Graph::remove_dead() {
  std::vector<bool> read(values.size(), false);
  const auto mark = [&read](const std::vector<ValueId>& ids) {
    for (const ValueId id : ids) {
      if (id != kAbsent) {
        read[static_cast<size_t>(id)] = true;
      }
    }
  };
  mark(outputs);
  std::vector<Node> kept;
  for (size_t i = nodes.size(); i-- > 0;) {
    if (std::any_of(nodes[i].outputs.begin(), nodes[i].outputs.end(),
                    [&](ValueId id) { return id != kAbsent && read[static_cast<size_t>(id)]; })) {
      mark(nodes[i].inputs);
      kept.push_back(std::move(nodes[i]));
    }
  }
  std::reverse(kept.begin(), kept.end());
  nodes = std::move(kept);

  mark(inputs);
  for (const Node& node : nodes) {
    mark(node.outputs);
  }
  std::vector<ValueId> moved(values.size(), kAbsent);
  std::vector<Value> named;
  for (size_t i = 0; i < values.size(); ++i) {
    if (read[i]) {
      moved[i] = static_cast<ValueId>(named.size());
      named.push_back(std::move(values[i]));
    }
  }
  values = std::move(named);
  const auto move = [&moved](std::vector<ValueId>& ids) {
    for (ValueId& id : ids) {
      id = id == kAbsent ? kAbsent : moved[static_cast<size_t>(id)];
    }
  };
  move(inputs);
  move(outputs);
  for (Node& node : nodes) {
    move(node.inputs);
    move(node.outputs);
  }
}

void Graph::sort() {
  // Node that gives each value: -1 for inputs and constants, -2 for nobody.
  std::vector<int> giver(values.size(), -2);
  const auto index = [this](ValueId id) {
    if (id < 0 || static_cast<size_t>(id) >= values.size()) {
      throw std::runtime_error("a tensor number out of range");
    }
    return static_cast<size_t>(id);
  };
  for (size_t i = 0; i < values.size(); ++i) {
    giver[i] = values[i].constant() ? -1 : -2;
  }
  for (const ValueId id : inputs) {
    giver[index(id)] = -1;
  }
  for (size_t i = 0; i < nodes.size(); ++i) {
    for (const ValueId id : nodes[i].outputs) {
      if (id == kAbsent) {
        continue;
      }
      if (giver[index(id)] != -2) {
        throw std::runtime_error("tensor '" + value(id).name + "' is written twice");
      }
      giver[index(id)] = static_cast<int>(i);
    }
  }
  const auto check = [&](ValueId id) {
    if (giver[index(id)] == -2) {
      throw std::runtime_error("nothing writes tensor '" + value(id).name + "'");
    }
  };
  // Depth first with a stack of our own: a graph may be deeper than the program's.
  enum class State : uint8_t { fresh, open, done };
  std::vector<State> state(nodes.size(), State::fresh);
  std::vector<size_t> order;
  std::vector<std::pair<size_t, size_t>> stack;  // node, next input
  for (size_t root = 0; root < nodes.size(); ++root) {
    if (state[root] != State::fresh) {
      continue;
    }
    state[root] = State::open;
    stack.emplace_back(root, 0);
    while (!stack.empty()) {
      auto& [at, next] = stack.back();
      if (next == nodes[at].inputs.size()) {
        state[at] = State::done;
        order.push_back(at);
        stack.pop_back();
        continue;
      }
      const ValueId id = nodes[at].inputs[next++];
      if (id == kAbsent) {
        continue;
      }
      check(id);
      if (const int from = giver[static_cast<size_t>(id)]; from >= 0) {
        const auto source = static_cast<size_t>(from);
        if (state[source] == State::open) {
          throw std::runtime_error("the graph has a cycle at '" + value(id).name + "'");
        }
        if (state[source] == State::fresh) {
          state[source] = State::open;
          stack.emplace_back(source, 0);
        }
      }
    }
  }
  std::for_each(outputs.begin(), outputs.end(), check);
  std::vector<Node> sorted;
  for (const size_t i : order) {
    sorted.push_back(std::move(nodes[i]));
  }
  nodes = std::move(sorted);
}

}  // namespace nnlib::importer
