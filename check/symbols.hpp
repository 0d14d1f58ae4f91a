// SPDX-License-Identifier: MIT
// The letters that the rules of a layer use for its sizes.
#ifndef NNLIB_CHECK_SYMBOLS_HPP
#define NNLIB_CHECK_SYMBOLS_HPP

#include <cstdint>

namespace nnlib {

// One value for each of A to Z and a to z, some of them not known yet.
class Symbols {
 public:
  static constexpr bool is_symbol(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
  }

  bool known(char symbol) const { return (known_ >> place(symbol) & 1) != 0; }
  uint32_t operator[](char symbol) const { return known(symbol) ? values_[place(symbol)] : 0; }
  void set(char symbol, uint32_t value) {
    values_[place(symbol)] = value;
    known_ |= uint64_t{1} << place(symbol);
  }

 private:
  static uint32_t place(char symbol) { return static_cast<uint32_t>(symbol - 'A'); }

  uint32_t values_['z' - 'A' + 1] = {};
  uint64_t known_ = 0;
};

}  // namespace nnlib

#endif
