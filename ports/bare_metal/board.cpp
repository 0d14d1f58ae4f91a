// SPDX-License-Identifier: MIT
#include "ports/bare_metal/board.hpp"

#include <cerrno>

#include "ports/bare_metal/semihost.hpp"

// From the linker script.
extern "C" {
extern uint32_t __stack[];
extern char __heap_start[];
extern uint32_t __heap_end[];  // and the stack's limit
}

namespace nnlib::board {
namespace {

constexpr uint32_t kPaint = 0xC5C5C5C5;

uint32_t* first_painted = __heap_end;
char* heap_top = __heap_start;
char* heap_mark = __heap_start;

size_t bytes_between(const void* from, const void* to) {
  return reinterpret_cast<uintptr_t>(to) - reinterpret_cast<uintptr_t>(from);
}

size_t stack_used() {
  const uint32_t* word = first_painted;
  while (word < __stack && *word == kPaint) {
    ++word;
  }
  return bytes_between(word, __stack);
}

// One line for standard error, put together without the C library: that may be what failed.
class Line {
 public:
  Line& text(const char* what) {
    while (*what != '\0') {
      put(*what++);
    }
    return *this;
  }
  Line& number(uint32_t value, uint32_t base = 10) {
    char digits[10];
    size_t count = 0;
    do {
      digits[count++] = "0123456789abcdef"[value % base];
      value /= base;
    } while (value != 0);
    while (count != 0) {
      put(digits[--count]);
    }
    return *this;
  }
  void print() const { semihost::transfer(semihost::kWrite, semihost::kError, text_, length_); }

 private:
  void put(char c) {
    if (length_ < sizeof(text_)) {
      text_[length_++] = c;
    }
  }
  char text_[96];
  size_t length_ = 0;
};

}  // namespace

__attribute__((noinline)) void paint_stack(uint32_t above) {
  constexpr size_t kOwnFrameBytes = 64;
  uint32_t* const end =
      static_cast<uint32_t*>(__builtin_frame_address(0)) - kOwnFrameBytes / sizeof(uint32_t);
  first_painted = __heap_end + above / sizeof(uint32_t);
  for (volatile uint32_t* word = first_painted; word < end; word = word + 1) {
    *word = kPaint;
  }
}

void* take_heap(ptrdiff_t bytes) {
  if (bytes > reinterpret_cast<char*>(__heap_end) - heap_top) {
    errno = ENOMEM;
    return reinterpret_cast<void*>(-1);
  }
  char* const block = heap_top;
  heap_top += bytes;
  if (heap_top > heap_mark) {
    heap_mark = heap_top;
  }
  return block;
}

void leave(int status) {
  Line()
      .text("[Board] status ")
      .number(static_cast<uint32_t>(status))
      .text(", stack ")
      .number(stack_used())
      .text(", heap ")
      .number(bytes_between(__heap_start, heap_mark))
      .text("\n")
      .print();
  semihost::exit(status);
}

void leave_after_fault(uint32_t cause, uint32_t program_counter, uint32_t detail) {
  Line()
      .text("[Board] fault ")
      .number(cause)
      .text(" at 0x")
      .number(program_counter, 16)
      .text(", detail 0x")
      .number(detail, 16)
      .text("\n")
      .print();
  semihost::exit(kFaultStatus);
}

}  // namespace nnlib::board
