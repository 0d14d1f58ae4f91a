// SPDX-License-Identifier: MIT
// Choices made by bytes: of a fuzzer, or of a random number generator.
#ifndef TEST_FUZZ_CHOICES_HPP
#define TEST_FUZZ_CHOICES_HPP

#include <cstddef>
#include <cstdint>
#include <initializer_list>

class Choices {
 public:
  Choices(const uint8_t* bytes, size_t size) : next_(bytes), end_(bytes + size) {}

  bool exhausted() const { return next_ == end_; }
  // 0 to count - 1; 0 when the bytes are used up.
  uint32_t below(uint32_t count) {
    uint32_t word = byte();
    for (uint32_t reach = 256; reach < count && reach != 0; reach *= 256) {
      word = word * 256 + byte();
    }
    return word % count;
  }
  uint32_t between(uint32_t least, uint32_t most) { return least + below(most - least + 1); }
  // One time in so many; not when the bytes are used up.
  bool one_in(uint32_t times) { return below(times) == 1; }
  template <class T>
  T of(std::initializer_list<T> items) {
    return items.begin()[below(static_cast<uint32_t>(items.size()))];
  }
  uint32_t word() { return byte() | byte() << 8 | byte() << 16 | byte() << 24; }

 private:
  uint32_t byte() { return next_ != end_ ? *next_++ : 0u; }

  const uint8_t* next_;
  const uint8_t* end_;
};

#endif
