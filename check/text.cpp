// SPDX-License-Identifier: MIT
#include "check/text.hpp"

namespace nnlib {

Text& Text::operator<<(char character) {
  if (length_ < kCapacity) {
    characters_[length_] = character;
    cut(length_ + 1);
  }
  return *this;
}

Text& Text::operator<<(const char* text) {
  while (*text != '\0') {
    *this << *text++;
  }
  return *this;
}

Text& Text::unsigned_number(uint64_t number) {
  char digits[20];
  size_t count = 0;
  do {
    digits[count++] = static_cast<char>('0' + number % 10);
    number /= 10;
  } while (number != 0);
  while (count != 0) {
    *this << digits[--count];
  }
  return *this;
}

// As 1.23456e-7: exponents are few in sentences, and one form serves all sizes.
Text& Text::operator<<(float number) {
  if (number != number) {
    return *this << "NaN";
  }
  if (number < 0.0f) {
    *this << '-';
    number = -number;
  }
  if (number > 3.4028235e38f) {
    return *this << "infinity";
  }
  double digits = static_cast<double>(number);
  int32_t exponent = 0;
  while (digits >= 10.0) {
    digits /= 10.0;
    ++exponent;
  }
  while (digits != 0.0 && digits < 1.0) {
    digits *= 10.0;
    --exponent;
  }
  while (exponent > 0 && exponent < 6) {
    digits *= 10.0;
    --exponent;
  }
  while (exponent < 0 && exponent > -5) {
    digits /= 10.0;
    ++exponent;
  }
  const double unit = 1e6;
  const auto millionths = static_cast<uint64_t>(digits * unit + 0.5);
  *this << millionths / 1000000u;
  uint64_t fraction = millionths % 1000000u;
  if (fraction != 0) {
    *this << '.';
    for (uint64_t place = 100000; fraction != 0; place /= 10) {
      *this << static_cast<char>('0' + fraction / place);
      fraction %= place;
    }
  }
  return exponent == 0 ? *this : *this << 'e' << exponent;
}

}  // namespace nnlib
