// SPDX-License-Identifier: MIT
// The port for a target of which nothing is known; it takes the place of this machine's.
#include <gtest/gtest.h>

#include "core/core_benchmark.h"
#include "ports/port.h"

TEST(PortNone, ClockStandsAndStatusIsWhole) {
  core_timer timer;
  EXPECT_EQ(core_timer_init(&timer, "none"), 1);
  core_timer_start(&timer);
  core_timer_stop(&timer);
  EXPECT_EQ(timer.elapsed, 0u);
  EXPECT_EQ(port_exit_status(300), 300);
}
