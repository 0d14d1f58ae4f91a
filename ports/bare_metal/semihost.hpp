// SPDX-License-Identifier: MIT
// Semihosting: what a program asks of the debugger or emulator that runs it. The operation numbers
// are those of the published interface, the same on Arm M-profile and on RISC-V.
#ifndef NNLIB_PORTS_BARE_METAL_SEMIHOST_HPP
#define NNLIB_PORTS_BARE_METAL_SEMIHOST_HPP

#include <cstddef>
#include <cstdint>

namespace nnlib::semihost {

enum Operation : int {
  kOpen = 0x01,
  kWrite = 0x05,
  kRead = 0x06,
  kGetCommandLine = 0x15,
  kExitExtended = 0x20,
};

enum Stream : int { kInput, kOutput, kError };

inline intptr_t call(Operation operation, const intptr_t* arguments) {
#if defined(__arm__)
  register intptr_t result __asm__("r0") = operation;
  register const void* block __asm__("r1") = arguments;
  __asm__ volatile("bkpt 0xab" : "+r"(result) : "r"(block) : "memory");
#elif defined(__riscv)
  register intptr_t result __asm__("a0") = operation;
  register const void* block __asm__("a1") = arguments;
  // The three instructions must be uncompressed and lie in one page.
  __asm__ volatile(
      ".option push\n.option norvc\n.balign 16\n"
      "slli x0, x0, 0x1f\nebreak\nsrai x0, x0, 7\n.option pop"
      : "+r"(result)
      : "r"(block)
      : "memory");
#else
#error "no semihosting call for this architecture"
#endif
  return result;
}

// The number of bytes that were not transferred, or -1. `operation` is kRead or kWrite.
intptr_t transfer(Operation operation, Stream stream, const void* bytes, size_t count);

// All 32 bits reach the debugger. An emulator's own exit status may keep fewer.
[[noreturn]] inline void exit(int status) {
  constexpr intptr_t kApplicationExit = 0x20026;
  const intptr_t block[] = {kApplicationExit, status};
  call(kExitExtended, block);
  for (;;) {
  }
}

}  // namespace nnlib::semihost

#endif
