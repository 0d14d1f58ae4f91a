// SPDX-License-Identifier: MIT
#include "importer/read/onnx_einsum.hpp"

#include <algorithm>
#include <string_view>

namespace nnlib::importer {
namespace {

// "ab,bc->ac" without spaces; the dimensions of an ellipsis are the labels ..., '8', '9', so that
// those of several operands meet at the right.
struct Equation {
  std::vector<std::string> operands;
  std::string result;
};

bool has(const std::string& labels, char label) {
  return labels.find(label) != std::string::npos;
}

std::string with_labels_for_dots(const std::string& term, const std::string& labels) {
  const size_t dots = term.find("...");
  return dots == std::string::npos ? term : term.substr(0, dots) + labels + term.substr(dots + 3);
}

std::string operand_labels(const std::string& term, int64_t rank) {
  constexpr std::string_view kDigits = "0123456789";
  const int64_t hidden = std::clamp<int64_t>(rank - static_cast<int64_t>(term.size()) + 3, 0, 10);
  const std::string labels = with_labels_for_dots(
      term, std::string(kDigits.substr(kDigits.size() - static_cast<size_t>(hidden))));
  if (static_cast<int64_t>(labels.size()) != rank) {
    throw NotAvailable{"an equation that does not fit its operands", ""};
  }
  return labels;
}

// Where the equation gives no result: the labels that stand once, in their order.
std::string implied_result(const std::string& all, const std::string& once,
                           const std::string& hidden) {
  std::string result = hidden;
  for (const char label : once) {
    result += !has(hidden, label) && std::count(all.begin(), all.end(), label) == 1
                  ? std::string(1, label)
                  : "";
  }
  return result;
}

Equation equation_of(OnnxContext& c) {
  std::string text = c.text("equation", "");
  text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
  const size_t arrow = text.find("->");
  std::string left = text.substr(0, arrow);
  if (std::count(left.begin(), left.end(), ',') + 1 != static_cast<int64_t>(c.inputs.size())) {
    throw NotAvailable{"an equation that does not fit its operands", ""};
  }
  Equation e;
  std::string all;
  for (size_t i = 0; i < c.inputs.size(); ++i) {
    const size_t comma = left.find(',');
    all += e.operands.emplace_back(operand_labels(left.substr(0, comma), c.rank(i)));
    left = comma == std::string::npos ? "" : left.substr(comma + 1);
  }
  std::string once = all;
  std::sort(once.begin(), once.end());
  once.erase(std::unique(once.begin(), once.end()), once.end());
  const std::string hidden = once.substr(0, once.find_first_not_of("0123456789"));
  e.result = arrow == std::string::npos ? implied_result(all, once, hidden)
                                        : with_labels_for_dots(text.substr(arrow + 2), hidden);
  for (const char label : e.result) {
    if (!has(once, label) || std::count(e.result.begin(), e.result.end(), label) != 1) {
      throw NotAvailable{"an equation with a result that does not follow", ""};
    }
  }
  return e;
}

// An operand and the labels of its dimensions.
struct Labelled {
  ValueId id;
  std::string labels;
};

class Einsum {
 public:
  explicit Einsum(OnnxContext& context) : c_(context), b_(context.build) {}

  ValueId run(const Equation& e) {
    Labelled all = summed(operand(e, 0), e.result + (e.operands.size() > 1 ? e.operands[1] : ""));
    if (e.operands.size() == 2) {
      all = product(all, summed(operand(e, 1), e.result + e.operands[0]), e.result);
    }
    return ordered(all, e.result).id;
  }

 private:
  Labelled operand(const Equation& e, size_t i) {
    const std::string& labels = e.operands[i];
    for (const char label : labels) {
      if (std::count(labels.begin(), labels.end(), label) != 1) {
        throw NotAvailable{"diagonals are not available", "take them apart before the network"};
      }
    }
    return {c_.input(i), labels};
  }

  // Without the dimensions that nobody else names.
  Labelled summed(Labelled x, const std::string& kept) {
    Shape axes;
    std::string left;
    for (size_t i = 0; i < x.labels.size(); ++i) {
      if (has(kept, x.labels[i])) {
        left += x.labels[i];
      } else {
        axes.push_back(static_cast<int64_t>(i));
      }
    }
    return axes.empty() ? x : Labelled{b_.reduce(Op::reduce_sum, x.id, axes, false), left};
  }

  Labelled ordered(const Labelled& x, const std::string& labels) {
    Shape perm;
    for (const char label : labels) {
      perm.push_back(static_cast<int64_t>(x.labels.find(label)));
    }
    return {b_.transpose(x.id, perm), labels};
  }

  int64_t size_of(const Labelled& x, char label) { return b_.shape(x.id)[x.labels.find(label)]; }
  int64_t count(const Labelled& x, const std::string& labels) {
    int64_t product = 1;
    for (const char label : labels) {
      product *= size_of(x, label);
    }
    return product;
  }

  Labelled product(const Labelled& x, const Labelled& y, const std::string& result) {
    std::string both, contracted, left, right;
    for (const char label : x.labels) {
      if (!has(y.labels, label)) {
        left += label;
        continue;
      }
      (has(result, label) ? both : contracted) += label;
      if (size_of(x, label) != size_of(y, label)) {
        throw NotAvailable{"operands that repeat", "expand them before"};
      }
    }
    for (const char label : y.labels) {
      right += has(x.labels, label) ? "" : std::string(1, label);
    }
    const int64_t batch = count(x, both);
    const int64_t inner = count(x, contracted);
    const ValueId a =
        b_.reshape(ordered(x, both + left + contracted).id, {batch, count(x, left), inner});
    const ValueId b =
        b_.reshape(ordered(y, both + contracted + right).id, {batch, inner, count(y, right)});
    Shape shape;
    for (const char label : both + left) {
      shape.push_back(size_of(x, label));
    }
    for (const char label : right) {
      shape.push_back(size_of(y, label));
    }
    return {b_.reshape(b_.matmul(a, b), shape), both + left + right};
  }

  OnnxContext& c_;
  GraphBuilder& b_;
};

}  // namespace

void einsum(OnnxContext& c) {
  if (c.inputs.empty() || c.inputs.size() > 2) {
    throw NotAvailable{"more than two operands are not available", "multiply two at a time"};
  }
  for (size_t i = 0; i < c.inputs.size(); ++i) {
    c.require_float(i);
  }
  c.output(Einsum(c).run(equation_of(c)));
}

}  // namespace nnlib::importer
