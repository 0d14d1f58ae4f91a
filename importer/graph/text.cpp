// SPDX-License-Identifier: MIT
#include "importer/graph/text.hpp"

#include <cctype>
#include <charconv>
#include <cstring>
#include <stdexcept>

namespace nnlib::importer {
namespace {

// --- numbers and names ------------------------------------------------------------------------

template <class T>
std::string shortest(T value) {
  char text[64];
  return {text, std::to_chars(text, text + sizeof(text), value).ptr};
}

// A float that reads as one.
std::string with_point(double value) {
  std::string text = shortest(value);
  return text.find_first_of(".einf") == std::string::npos ? text + ".0" : text;
}

bool is_word(std::string_view name) {
  if (name.empty() || std::isdigit(static_cast<unsigned char>(name[0])) || name == "in" ||
      name == "out" || name == "const" || name == "_") {
    return false;
  }
  for (const char c : name) {
    if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_' && c != '.' && c != '/') {
      return false;
    }
  }
  return true;
}

std::string quoted(std::string_view text) {
  std::string out = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      out += '\\';
    }
    out += c == '\n' ? ' ' : c;
  }
  return out + '"';
}

std::string name_text(std::string_view name) {
  return is_word(name) ? std::string(name) : quoted(name);
}

template <class List, class Print>
std::string joined(const List& list, std::string_view between, Print print) {
  std::string out;
  for (const auto& item : list) {
    if (!out.empty()) {
      out += between;
    }
    out += print(item);
  }
  return out;
}

template <class List>
std::string bracketed(const List& list) {
  return "[" + joined(list, ",", [](auto x) { return shortest(x); }) + "]";
}

// --- printing ---------------------------------------------------------------------------------

std::string value_text(const Value& value) {
  std::string out =
      name_text(value.name) + ": " + std::string(type_name(value.type)) + bracketed(value.shape);
  if (const auto& q = value.quantization; q && q->fixed) {
    out += " fix(" + shortest(q->fraction_bits()) + ")";
  } else if (q) {
    out += q->per_tensor()
               ? " q(" + shortest(q->scales[0]) + "," + shortest(q->zero_points.at(0)) + ")"
               : " q(" + bracketed(q->scales) + "," + bracketed(q->zero_points) +
                     ",axis=" + shortest(q->axis) + ")";
  }
  return out;
}

std::string elements_text(const Value& value) {
  if (value.type == Type::f32) {
    return joined(value.as<float>(), " ", [](float x) { return shortest(x); });
  }
  if (value.type == Type::f64) {
    return joined(value.as<double>(), " ", [](double x) { return shortest(x); });
  }
  if (value.type == Type::f16) {
    return joined(value.as<uint16_t>(), " ", [](uint16_t x) { return shortest(x); });
  }
  return joined(to_integers(value), " ", [](int64_t x) { return shortest(x); });
}

std::string attribute_text(const Attribute& attribute) {
  struct Visitor {
    std::string operator()(int64_t x) const { return shortest(x); }
    std::string operator()(const std::vector<int64_t>& x) const { return bracketed(x); }
    std::string operator()(double x) const { return with_point(x); }
    std::string operator()(const std::vector<double>& x) const {
      return "[" + joined(x, ",", with_point) + "]";
    }
    std::string operator()(const std::string& x) const { return quoted(x); }
  };
  return std::visit(Visitor{}, attribute);
}

std::string node_text(const Graph& graph, const Node& node) {
  const auto print = [&graph](ValueId id) {
    return id == kAbsent ? std::string("_") : value_text(graph.value(id));
  };
  const auto print_name = [&graph](ValueId id) {
    return id == kAbsent ? std::string("_") : name_text(graph.value(id).name);
  };
  std::string out = joined(node.outputs, ", ", print) + " = " + std::string(op_name(node.op)) +
                    "(" + joined(node.inputs, ", ", print_name) + ")";
  if (!node.attributes.empty()) {
    out += " {" +
           joined(node.attributes, ", ",
                  [](const auto& a) { return a.first + "=" + attribute_text(a.second); }) +
           "}";
  }
  if (!node.name.empty()) {
    out += " @" + quoted(node.name);
  }
  if (!node.origin.empty()) {
    out += " (" + node.origin + ")";
  }
  return out;
}

// --- parsing ----------------------------------------------------------------------------------

class Parser {
 public:
  explicit Parser(std::string_view text) : text_(text) {}

  Graph parse() {
    while (skip_lines(), at_ < text_.size()) {
      statement();
      spaces();
      if (at_ < text_.size() && text_[at_] != '\n') {
        fail("the end of the line expected");
      }
    }
    return std::move(graph_);
  }

 private:
  [[noreturn]] void fail(const std::string& what) const {
    throw std::runtime_error("line " + std::to_string(line_) + ": " + what);
  }

  void spaces() {
    while (at_ < text_.size() && (text_[at_] == ' ' || text_[at_] == '\t' || text_[at_] == '#')) {
      if (text_[at_] == '#') {
        at_ = std::min(text_.find('\n', at_), text_.size());
      } else {
        ++at_;
      }
    }
  }
  void skip_lines() {
    for (spaces(); at_ < text_.size() && text_[at_] == '\n'; spaces()) {
      ++at_;
      ++line_;
    }
  }
  bool accept(std::string_view token) {
    spaces();
    if (text_.substr(at_, token.size()) != token) {
      return false;
    }
    at_ += token.size();
    return true;
  }
  void expect(std::string_view token) {
    if (!accept(token)) {
      fail("'" + std::string(token) + "' expected");
    }
  }
  std::string word() {
    spaces();
    const size_t start = at_;
    while (at_ < text_.size() && (std::isalnum(static_cast<unsigned char>(text_[at_])) ||
                                  text_[at_] == '_' || text_[at_] == '.' || text_[at_] == '/')) {
      ++at_;
    }
    if (start == at_) {
      fail("a name expected");
    }
    return std::string(text_.substr(start, at_ - start));
  }
  std::string quoted_text() {
    expect("\"");
    std::string out;
    for (; at_ < text_.size() && text_[at_] != '"'; ++at_) {
      if (text_[at_] == '\\') {
        ++at_;
      }
      if (at_ < text_.size()) {
        out += text_[at_];
      }
    }
    expect("\"");
    return out;
  }
  bool next_is(char c) {
    spaces();
    return at_ < text_.size() && text_[at_] == c;
  }
  std::string name() { return next_is('"') ? quoted_text() : word(); }

  std::string_view number_text() {
    spaces();
    const size_t start = at_;
    while (at_ < text_.size() && (std::isalnum(static_cast<unsigned char>(text_[at_])) ||
                                  text_[at_] == '-' || text_[at_] == '+' || text_[at_] == '.')) {
      ++at_;
    }
    return text_.substr(start, at_ - start);
  }
  template <class T>
  T number() {
    const std::string_view digits = number_text();
    T value{};
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc() || end != digits.data() + digits.size()) {
      fail("a number expected, not '" + std::string(digits) + "'");
    }
    return value;
  }
  template <class T>
  std::vector<T> list() {
    std::vector<T> out;
    expect("[");
    while (!accept("]")) {
      if (!out.empty()) {
        expect(",");
      }
      out.push_back(number<T>());
    }
    return out;
  }
  template <class T>
  std::vector<T> one_or_list() {
    return next_is('[') ? list<T>() : std::vector<T>{number<T>()};
  }

  Value value_declaration() {
    Value value;
    value.name = name();
    expect(":");
    const std::string type = word();
    const auto known = type_of_name(type);
    if (!known) {
      fail("unknown type '" + type + "'");
    }
    value.type = *known;
    value.shape = list<int64_t>();
    if (accept("q(")) {
      Quantization q;
      q.scales = one_or_list<float>();
      expect(",");
      q.zero_points = one_or_list<int32_t>();
      if (accept(",")) {
        expect("axis=");
        q.axis = number<int>();
      }
      expect(")");
      value.quantization = std::move(q);
    } else if (accept("fix(")) {
      value.quantization = fixed_point(number<int>());
      expect(")");
    }
    return value;
  }

  ValueId declare(Value value) {
    const std::string declared = value.name;
    if (!ids_.try_emplace(declared, static_cast<ValueId>(graph_.values.size())).second) {
      fail("'" + declared + "' is declared twice");
    }
    return graph_.add(std::move(value));
  }
  ValueId use() {
    if (accept("_")) {
      return kAbsent;
    }
    const std::string used = name();
    const auto found = ids_.find(used);
    if (found == ids_.end()) {
      fail("'" + used + "' is not declared above");
    }
    return found->second;
  }

  template <class T>
  std::shared_ptr<const Bytes> elements(int64_t count) {
    std::vector<T> all;
    for (int64_t i = 0; i < count; ++i) {
      all.push_back(number<T>());
    }
    return make_bytes<T>(std::span<const T>(all));
  }
  std::shared_ptr<const Bytes> elements(Type type, int64_t count) {
    switch (type) {
      case Type::f32:
        return elements<float>(count);
      case Type::f64:
        return elements<double>(count);
      case Type::u8:
      case Type::boolean:
        return elements<uint8_t>(count);
      case Type::s8:
        return elements<int8_t>(count);
      case Type::f16:
      case Type::u16:
        return elements<uint16_t>(count);
      case Type::s16:
        return elements<int16_t>(count);
      case Type::u32:
        return elements<uint32_t>(count);
      case Type::s32:
        return elements<int32_t>(count);
      case Type::u64:
        return elements<uint64_t>(count);
      case Type::s64:
        break;
    }
    return elements<int64_t>(count);
  }

  Attribute attribute() {
    if (next_is('"')) {
      return quoted_text();
    }
    const size_t start = at_;
    const size_t end = next_is('[') ? text_.find(']', at_) : text_.find_first_of(",}", at_);
    const bool real = text_.substr(start, end - start).find_first_of(".einf") != std::string::npos;
    if (next_is('[')) {
      return real ? Attribute(list<double>()) : Attribute(list<int64_t>());
    }
    return real ? Attribute(number<double>()) : Attribute(number<int64_t>());
  }

  void node() {
    Node node;
    do {
      node.outputs.push_back(accept("_ ") ? kAbsent : declare(value_declaration()));
    } while (accept(","));
    expect("=");
    const std::string op = word();
    const auto known = op_of_name(op);
    if (!known) {
      fail("unknown operator '" + op + "'");
    }
    node.op = *known;
    expect("(");
    while (!accept(")")) {
      if (!node.inputs.empty()) {
        expect(",");
      }
      node.inputs.push_back(use());
    }
    if (accept("{")) {
      do {
        const std::string key = word();
        expect("=");
        node.attributes[key] = attribute();
      } while (accept(","));
      expect("}");
    }
    if (accept("@")) {
      node.name = quoted_text();
    }
    if (accept("(")) {
      node.origin = word();
      expect(")");
    }
    graph_.nodes.push_back(std::move(node));
  }

  void statement() {
    if (accept("in ")) {
      graph_.inputs.push_back(declare(value_declaration()));
    } else if (accept("const ")) {
      Value value = value_declaration();
      expect("=");
      value.data = elements(value.type, value.elements());
      declare(std::move(value));
    } else if (accept("out ")) {
      graph_.outputs.push_back(use());
    } else {
      node();
    }
  }

  std::string_view text_;
  size_t at_ = 0;
  int line_ = 1;
  Graph graph_;
  std::map<std::string, ValueId, std::less<>> ids_;
};

}  // namespace

std::string print_graph(const Graph& graph, size_t longest) {
  std::string out;
  for (const ValueId id : graph.inputs) {
    out += "in " + value_text(graph.value(id)) + "\n";
  }
  for (const Value& value : graph.values) {
    if (value.constant()) {
      const bool elided = static_cast<size_t>(value.elements()) > longest;
      out += "const " + value_text(value) + " = " + (elided ? "..." : elements_text(value)) + "\n";
    }
  }
  for (const Node& node : graph.nodes) {
    out += node_text(graph, node) + "\n";
  }
  for (const ValueId id : graph.outputs) {
    out += "out " + name_text(graph.value(id).name) + "\n";
  }
  return out;
}

Graph parse_graph(std::string_view text) {
  return Parser(text).parse();
}

}  // namespace nnlib::importer
