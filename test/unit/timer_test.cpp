// SPDX-License-Identifier: MIT
// The timer on a clock of this program's own, which takes the place of the port's.
#include <gtest/gtest.h>

#include "core/core_benchmark.h"
#include "ports/port.h"

namespace {
int64_t g_ticks = 0;
int64_t g_step = 0;  // between readings
int g_pins = 0;
}  // namespace

int64_t port_ticks() {
  return g_ticks += g_step;
}
int64_t port_ticks_per_second() {
  return 2999999;  // 2 ticks in a microsecond
}
void port_pin_to_first_processor() {
  ++g_pins;
}

namespace {

void run(core_timer& timer, int64_t from, int64_t to) {
  g_ticks = from;
  EXPECT_EQ(core_timer_start(&timer), 1);
  EXPECT_EQ(timer.start, static_cast<uint32_t>(from / 2));
  g_ticks = to;
  core_timer_stop(&timer);
}

TEST(Timer, AddsSpansUpAndWraps) {
  core_timer timer = {nullptr, 5, 6};
  EXPECT_EQ(core_timer_init(&timer, "name"), 1);
  EXPECT_EQ(timer.elapsed, 0u);
  run(timer, 1001, 1006);  // cut to 500 and 503
  run(timer, 2000, 2100);
  EXPECT_EQ(timer.elapsed, 53u);
  constexpr int64_t kWrap = int64_t{1} << 33;  // 2^32 microseconds
  run(timer, 7 * kWrap - 20, 7 * kWrap + 30);
  EXPECT_EQ(timer.elapsed, 78u);
  run(timer, 100, kWrap - 100);
  EXPECT_EQ(timer.elapsed, 78u - 100);
  EXPECT_STREQ(timer.name, "name");
  EXPECT_EQ(core_timer_reset(&timer), 1);
  EXPECT_EQ(timer.elapsed + timer.start, 0u);
  EXPECT_STREQ(timer.name, "name");
  EXPECT_EQ(core_timer_init(&timer, nullptr), 1);
  EXPECT_STREQ(timer.name, "");
  EXPECT_EQ(g_pins, 1);  // once in a process
  EXPECT_EQ(core_timer_init(nullptr, "name") + core_timer_reset(nullptr), 0);
  EXPECT_EQ(core_timer_start(nullptr), 0);
  core_timer_stop(nullptr);
}

TEST(Timer, DemonstrationPrintsTimeBetweenTwoReadings) {
  g_step = 2 * 2502;
  testing::internal::CaptureStdout();
  EXPECT_EQ(core_timer_main_test_unit(), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Timer Example Timer: Elapsed 2.502000 ms\r\n");
  g_step = 0;
}

}  // namespace
