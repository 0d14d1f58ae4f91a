// SPDX-License-Identifier: MIT
#include "test/test_lcut_main.h"

#include <cstdio>

#include "core/core_benchmark.h"
#include "test/suites.h"

uint32_t test_lcut_main(int /*argc*/, char** /*argv*/) {
  lcut_results results = {};
  lcut_test* test = nullptr;
  core_timer timer;
  core_timer_init(&timer, "NN library test unit - main timer");
  lcut_test_init(&test, "NN library test unit", nullptr, nullptr);
  for (size_t i = 0; i < suite_registration_count; ++i) {
    suite_registrations[i](test);
  }
  core_timer_start(&timer);
  lcut_test_run(test, nullptr);
  core_timer_stop(&timer);
  lcut_test_report(test, &results);
  lcut_test_destroy(&test);
  const float milliseconds = static_cast<float>(timer.elapsed) * 0.001f;
  std::printf("[Timer %s] Total time: %3.3f (ms)\r\n\r\n", timer.name,
              static_cast<double>(milliseconds));
  return results.failed_cases;
}
