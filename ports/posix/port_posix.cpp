// SPDX-License-Identifier: MIT
#include <sched.h>
#include <time.h>

#include "ports/port.h"

namespace {
constexpr int64_t kNanosecondsPerSecond = 1000000000;
constexpr uint32_t kMaxExitStatus = 255;
}  // namespace

void port_init(void) {}

int64_t port_ticks(void) {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<int64_t>(now.tv_sec) * kNanosecondsPerSecond + now.tv_nsec;
}

int64_t port_ticks_per_second(void) {
  return kNanosecondsPerSecond;
}

void port_pin_to_first_processor(void) {
#if defined(__linux__)
  cpu_set_t first;
  CPU_ZERO(&first);
  CPU_SET(0, &first);
  sched_setaffinity(0, sizeof(first), &first);
#endif
}

int port_exit_status(uint32_t count) {
  return static_cast<int>(count < kMaxExitStatus ? count : kMaxExitStatus);
}
