// SPDX-License-Identifier: MIT
// A line of text in a fixed buffer, for places without heap and without the C library's printing.
#ifndef NNLIB_CHECK_TEXT_HPP
#define NNLIB_CHECK_TEXT_HPP

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
  Text& operator<<(uint64_t number);
  Text& operator<<(uint32_t number) { return *this << uint64_t{number}; }
  Text& operator<<(int32_t number);
  Text& operator<<(float number);  // six significant digits

 private:
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
