// SPDX-License-Identifier: MIT
#include "check/tensor_rule.hpp"

namespace nnlib {
namespace {

bool ends_term(char c) {
  return c == '\0' || c == ' ' || c == ',' || c == ')' || c == '*';
}

}  // namespace

bool next_tensor_rule(const char*& text, TensorRule& rule) {
  while (*text == ' ') {
    ++text;
  }
  if (*text == '\0') {
    return false;
  }
  rule = {};
  if (*text == '?') {
    rule.optional = true;
    ++text;
  }
  rule.kind = *text++;
  if (*text == '(' || *text == '#') {
    rule.extent = *text == '(' ? TensorRule::kDims : TensorRule::kElements;
    rule.terms = ++text;
  }
  while (*text != '\0' && *text != ' ') {
    rule.repeats = *text++ == '*';
  }
  return true;
}

Term next_term(const char*& text, const Symbols& symbols) {
  Term term = {1, true, 0};
  const char* start = text;
  for (; !ends_term(*text); ++text) {
    const bool divides = *text == '/';
    text += divides ? 1 : 0;
    uint64_t factor = 0;
    if (*text >= '0' && *text <= '9') {
      factor = static_cast<uint64_t>(*text - '0');
    } else if (Symbols::is_symbol(*text) && symbols.known(*text)) {
      factor = symbols[*text];
    } else {
      term.known = false;
    }
    if (divides && factor == 0) {
      term.known = false;
    } else {
      term.value = divides ? term.value / factor : term.value * factor;
    }
  }
  if (!term.known && text - start == 1 && Symbols::is_symbol(*start)) {
    term.symbol = *start;
  }
  if (*text == ',') {
    ++text;
  }
  return term;
}

}  // namespace nnlib
