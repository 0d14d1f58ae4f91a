// SPDX-License-Identifier: MIT
// A target of which nothing is known: the clock stands still, a status is only returned.
#include "ports/port.h"

NNLIB_WEAK void port_init(void) {}

NNLIB_WEAK int64_t port_ticks(void) {
  return 0;
}

NNLIB_WEAK int64_t port_ticks_per_second(void) {
  return 1000000;
}

NNLIB_WEAK void port_pin_to_first_processor(void) {}

NNLIB_WEAK int port_exit_status(uint32_t count) {
  return static_cast<int>(count);
}
