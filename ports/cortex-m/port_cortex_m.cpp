// SPDX-License-Identifier: MIT
// SysTick counts processor clocks; its interrupt extends the 24 bits. The handler's name is the one
// that vector tables of this architecture expect. Where the application has a handler of that name,
// or runs SysTick already, SysTick is the application's and this clock stands still.
#include "ports/port.h"

namespace {

struct SysTick {
  volatile uint32_t control;
  volatile uint32_t reload;
  volatile uint32_t value;
};

constexpr uint32_t kSysTickAddress = 0xE000E010;
constexpr uint32_t kOnWithInterrupt = 7;  // counting, interrupt on wrap, processor clock
constexpr uint32_t kPeriod = 1u << 24;

volatile uint32_t wraps = 0;

}  // namespace

extern "C" {
void SysTick_Handler() __attribute__((weak, alias("nnlib_count_wrap")));
void nnlib_count_wrap();
void nnlib_count_wrap() {
  wraps = wraps + 1;
}
}

namespace {

// Whether the counter is this clock's.
bool start(SysTick& counter) {
  static bool started = false;
  if (!started && SysTick_Handler == nnlib_count_wrap && (counter.control & 1u) == 0) {
    started = true;
    counter.reload = kPeriod - 1;
    counter.value = 0;
    counter.control = kOnWithInterrupt;
  }
  return started;
}

}  // namespace

NNLIB_WEAK void port_init(void) {}

NNLIB_WEAK int64_t port_ticks(void) {
  SysTick& counter = *reinterpret_cast<SysTick*>(kSysTickAddress);
  if (!start(counter)) {
    return 0;
  }
  uint32_t periods;
  uint32_t left;
  do {
    periods = wraps;
    left = counter.value;
  } while (periods != wraps);
  // It counts down, and reads 0 just after the start and at the moment of a wrap.
  return int64_t{periods} * kPeriod + (left != 0 ? kPeriod - left : 0);
}

NNLIB_WEAK int64_t port_ticks_per_second(void) {
  return NNLIB_CLOCK_HZ;
}

NNLIB_WEAK void port_pin_to_first_processor(void) {}

// A debug probe carries the whole word.
NNLIB_WEAK int port_exit_status(uint32_t count) {
  return static_cast<int>(count);
}
