// SPDX-License-Identifier: MIT
// A line of text in a fixed buffer, for places without heap and without the C library's printing.
#ifndef NNLIB_CHECK_TEXT_HPP
#define NNLIB_CHECK_TEXT_HPP

#include <concepts>
#include <cstddef>
#include <cstdint>

namespace nnlib {

// What does not fit is left out.
class Text {
 public:
  static constexpr size_t kCapacity = 255;

  void clear() { cut(0); }
  const char* c_str() const { return characters_; }
  size_t length() const { return length_; }
  void cut(size_t length) {
    length_ = length;
    characters_[length] = '\0';
  }

  Text& operator<<(const char* text);
  Text& operator<<(char character);
  Text& operator<<(float number);  // six significant digits
  template <std::integral Number>
  Text& operator<<(Number number) {
    if (number < 0) {
      *this << '-';
      return unsigned_number(~static_cast<uint64_t>(number) + 1);
    }
    return unsigned_number(static_cast<uint64_t>(number));
  }

 private:
  Text& unsigned_number(uint64_t number);

  char characters_[kCapacity + 1] = {};
  size_t length_ = 0;
};

// "1 value", "2 values"
struct Count {
  uint64_t number;
  const char* what;
};
inline Text& operator<<(Text& text, Count count) {
  return text << count.number << ' ' << count.what << (count.number == 1 ? "" : "s");
}

// "1 is needed", "2 are needed"
struct Needed {
  uint64_t number;
};
inline Text& operator<<(Text& text, Needed needed) {
  return text << needed.number << (needed.number == 1 ? " is needed" : " are needed");
}

}  // namespace nnlib

#endif
