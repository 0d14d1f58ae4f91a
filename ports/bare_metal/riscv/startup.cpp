// SPDX-License-Identifier: MIT
// The C library starts the program and does input and output; this adds the memory marks and the
// trap handler, before any other constructor runs.
#include "ports/bare_metal/board.hpp"

// The compiler option for these instructions would choose other C libraries.
#define WITH_CONTROL_REGISTERS(code) ".option push\n.option arch, +zicsr\n" code "\n.option pop"

extern "C" {
void* sbrk(ptrdiff_t bytes);
[[noreturn]] void _exit(int status);
}

namespace {

// Aligned as the trap vector must be.
__attribute__((interrupt, aligned(4))) void trap() {
  uint32_t cause;
  uint32_t program_counter;
  uint32_t value;
  __asm__ volatile(WITH_CONTROL_REGISTERS("csrr %0, mcause\n csrr %1, mepc\n csrr %2, mtval")
                   : "=r"(cause), "=r"(program_counter), "=r"(value));
  nnlib::board::leave_after_fault(cause, program_counter, value);
}

__attribute__((constructor(101))) void start() {
  __asm__ volatile(WITH_CONTROL_REGISTERS("csrw mtvec, %0")::"r"(trap));
  nnlib::board::paint_stack(0);
}

}  // namespace

void* sbrk(ptrdiff_t bytes) {
  return nnlib::board::take_heap(bytes);
}

void _exit(int status) {
  nnlib::board::leave(status);
}
