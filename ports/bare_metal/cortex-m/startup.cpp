// SPDX-License-Identifier: MIT
// Vector table, reset and fault handler for Armv6-M to Armv8.1-M.
#include <cstdlib>
#include <cstring>

#include "ports/bare_metal/board.hpp"
#include "ports/bare_metal/semihost.hpp"

using Function = void (*)();

extern "C" {

// From the linker script.
extern uint32_t __data_start[], __data_end[], __data_load[], __bss_start[], __bss_end[];
extern uint32_t __stack[], __stack_limit[];
extern const Function __init_array_start[], __init_array_end[];

int program_main(int argc, char** argv) __asm__("main");  // the language forbids calling it
[[noreturn]] void Reset_Handler();
[[noreturn]] void fault_report(uint32_t program_counter);
void Fault_Handler();
__attribute__((weak)) void SysTick_Handler();  // there when the program uses the clock

// The C library's exit path asks for these.
void _init();
void _fini();
void _init() {}
void _fini() {}
extern void* const __dso_handle;
void* const __dso_handle = nullptr;

}  // extern "C"

namespace {

#if __ARM_ARCH == 7 && defined(NNLIB_MPU_GUARDS)
constexpr uint32_t kGuardBytes = 1024;
#else
constexpr uint32_t kGuardBytes = 0;
#endif

[[maybe_unused]] volatile uint32_t& control_register(uint32_t address) {
  return *reinterpret_cast<volatile uint32_t*>(address);
}

[[maybe_unused]] void barrier() {
  __asm__ volatile("dsb\n isb" ::: "memory");
}

// Coprocessor access for the floating-point and vector units.
void enable_floating_point() {
#if defined(__ARM_FP) || defined(__ARM_FEATURE_MVE)
  volatile uint32_t& cpacr = control_register(0xE000ED88);
  cpacr = cpacr | 0xFu << 20;
  barrier();
#endif
}

// What a slip in the program should not survive: a division by zero, and, where the part can tell,
// a null pointer and an overflow of the stack.
void enable_traps() {
#if __ARM_ARCH >= 7
  volatile uint32_t& ccr = control_register(0xE000ED14);
  ccr = ccr | 1u << 4;
#endif
#if __ARM_ARCH >= 8 && !defined(__ARM_ARCH_8M_BASE__)
  __asm__ volatile("msr msplim, %0" ::"r"(__stack_limit));
#endif
#if __ARM_ARCH == 7 && defined(NNLIB_MPU_GUARDS)
  // Two regions without access over the default map: the vector table (its fetches pass) and the
  // lowest part of the stack.
  constexpr uint32_t kValid = 1u << 4;
  constexpr uint32_t kNoAccess = 1u << 28;
  volatile uint32_t& base = control_register(0xE000ED9C);
  volatile uint32_t& attributes = control_register(0xE000EDA0);
  base = kValid | 0u;
  attributes = kNoAccess | 7u << 1 | 1u;  // 256 bytes
  base = reinterpret_cast<uint32_t>(__stack_limit) | kValid | 1u;
  attributes = kNoAccess | 9u << 1 | 1u;  // kGuardBytes
  control_register(0xE000ED94) = 1u << 2 | 1u;
  barrier();
#endif
}

void set_up_memory() {
  const uint32_t* from = __data_load;
  for (uint32_t* to = __data_start; to < __data_end;) {
    *to++ = *from++;
  }
  for (uint32_t* to = __bss_start; to < __bss_end;) {
    *to++ = 0;
  }
  nnlib::board::paint_stack(kGuardBytes);
}

int call_main() {
  constexpr size_t kMaxWords = 8;
  static char line[128];
  static char* words[kMaxWords + 1];
  int count = 0;
  const intptr_t block[] = {reinterpret_cast<intptr_t>(line), sizeof(line)};
  if (nnlib::semihost::call(nnlib::semihost::kGetCommandLine, block) == 0) {
    for (char* word = std::strtok(line, " "); word != nullptr && count < int{kMaxWords};
         word = std::strtok(nullptr, " ")) {
      words[count++] = word;
    }
  }
  return program_main(count, words);
}

}  // namespace

void Reset_Handler() {
  enable_floating_point();
  enable_traps();
  set_up_memory();
  for (const Function* constructor = __init_array_start; constructor < __init_array_end;) {
    (*constructor++)();
  }
  std::exit(call_main());
}

void fault_report(uint32_t program_counter) {
  uint32_t exception;
  __asm__ volatile("mrs %0, ipsr" : "=r"(exception));
#if __ARM_ARCH >= 7
  const uint32_t detail = control_register(0xE000ED28);
#else
  const uint32_t detail = 0;
#endif
  nnlib::board::leave_after_fault(exception, program_counter, detail);
}

// Fetches the address of the fault from the exception frame (bit 2 of the return code tells on
// which stack it lies), and goes on with a stack that is empty: it may have been the trouble.
__attribute__((naked)) void Fault_Handler() {
  __asm__ volatile(
      ".syntax unified\n"
      "mov r0, lr\n"
      "lsls r0, r0, #29\n"
      "mrs r2, msp\n"
      "bpl 1f\n"
      "mrs r2, psp\n"
      "1: ldr r0, [r2, #24]\n"
      "ldr r3, =__stack\n"
      "mov sp, r3\n"
      "ldr r3, =fault_report\n"
      "bx r3\n"
      ".ltorg");
}

extern "C" const Function vector_table[16];
__attribute__((section(".vectors"), used))
const Function vector_table[16] = {reinterpret_cast<Function>(__stack),
                                   reinterpret_cast<Function>(Reset_Handler),
                                   Fault_Handler,
                                   Fault_Handler,
                                   Fault_Handler,
                                   Fault_Handler,
                                   Fault_Handler,
                                   Fault_Handler,
                                   nullptr,
                                   nullptr,
                                   nullptr,
                                   Fault_Handler,
                                   Fault_Handler,
                                   nullptr,
                                   Fault_Handler,
                                   SysTick_Handler};
