// SPDX-License-Identifier: MIT
// The texts of layer_rule.hpp, read.
#ifndef NNLIB_CHECK_TENSOR_RULE_HPP
#define NNLIB_CHECK_TENSOR_RULE_HPP

#include "check/symbols.hpp"

namespace nnlib {

struct TensorRule {
  enum Extent : uint8_t { kAnyShape, kDims, kElements };

  char kind = 'a';
  bool optional = false;
  bool repeats = false;
  Extent extent = kAnyShape;
  const char* terms = "";  // of the dimensions or the elements
};

// Reads one tensor's rule and moves the text on; false at the end.
bool next_tensor_rule(const char*& text, TensorRule& rule);

// One term of a rule.
struct Term {
  uint64_t value;
  bool known;   // false: any size will do
  char symbol;  // of a single letter that has no value yet, else 0
};

// Reads a term and moves the text behind it and a comma.
Term next_term(const char*& text, const Symbols& symbols);

}  // namespace nnlib

#endif
