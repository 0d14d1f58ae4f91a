// SPDX-License-Identifier: MIT
#include "core/core_benchmark.h"

#include <cstdio>

#include "ports/port.h"

namespace {

bool first_time = true;
int64_t g_benchmark_target_frequency = 0;  // ticks per microsecond once set up

void set_up_clock() {
  if (!first_time) {
    return;
  }
  first_time = false;
  port_pin_to_first_processor();
  g_benchmark_target_frequency = port_ticks_per_second() / 1000000;
}

uint32_t microseconds() {
  return static_cast<uint32_t>(port_ticks() / g_benchmark_target_frequency);
}

}  // namespace

int32_t core_timer_init(core_timer* timer, const char* name) {
  if (timer == nullptr) {
    return 0;
  }
  set_up_clock();
  timer->name = name != nullptr ? name : "";
  return core_timer_reset(timer);
}

int32_t core_timer_reset(core_timer* timer) {
  if (timer == nullptr) {
    return 0;
  }
  timer->start = 0;
  timer->elapsed = 0;
  return 1;
}

int32_t core_timer_start(core_timer* timer) {
  if (timer == nullptr) {
    return 0;
  }
  timer->start = microseconds();
  return 1;
}

void core_timer_stop(core_timer* timer) {
  if (timer != nullptr) {
    timer->elapsed += microseconds() - timer->start;
  }
}

int32_t core_timer_main_test_unit(void) {
  set_up_clock();
  const uint32_t first = microseconds();
  const uint32_t second = microseconds();
  const float milliseconds = static_cast<float>(second - first) * 0.001f;
  std::printf("Timer %s: Elapsed %f ms\r\n", "Example Timer", static_cast<double>(milliseconds));
  return 0;
}
