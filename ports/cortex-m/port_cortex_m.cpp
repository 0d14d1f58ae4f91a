// SPDX-License-Identifier: MIT
// SysTick counts processor clocks; its interrupt extends the 24 bits. The handler's name is the one
// that vector tables of this architecture expect.
#include "ports/port.h"

#ifndef NNLIB_CLOCK_HZ
#error "NNLIB_CLOCK_HZ must give the processor's clock rate"
#endif

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

extern "C" void SysTick_Handler();
void SysTick_Handler() {
  wraps = wraps + 1;
}

void port_init(void) {}

int64_t port_ticks(void) {
  SysTick& counter = *reinterpret_cast<SysTick*>(kSysTickAddress);
  if ((counter.control & 1u) == 0) {
    counter.reload = kPeriod - 1;
    counter.value = 0;
    counter.control = kOnWithInterrupt;
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

int64_t port_ticks_per_second(void) {
  return NNLIB_CLOCK_HZ;
}

void port_pin_to_first_processor(void) {}

// A debug probe carries the whole word.
int port_exit_status(uint32_t count) {
  return static_cast<int>(count);
}
