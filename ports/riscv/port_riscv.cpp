// SPDX-License-Identifier: MIT
// The time counter of the base architecture; the machine tells its rate in NNLIB_CLOCK_HZ.
#include "ports/port.h"

NNLIB_WEAK void port_init(void) {}

NNLIB_WEAK int64_t port_ticks(void) {
  uint32_t high;
  uint32_t low;
  uint32_t again;
  do {
    __asm__ volatile("rdtimeh %0\n rdtime %1\n rdtimeh %2" : "=r"(high), "=r"(low), "=r"(again));
  } while (high != again);
  return static_cast<int64_t>(uint64_t{high} << 32 | low);
}

NNLIB_WEAK int64_t port_ticks_per_second(void) {
  return NNLIB_CLOCK_HZ;
}

NNLIB_WEAK void port_pin_to_first_processor(void) {}

// A debug probe carries the whole word.
NNLIB_WEAK int port_exit_status(uint32_t count) {
  return static_cast<int>(count);
}
