// SPDX-License-Identifier: MIT
// Runs the sweeps linked with it; the exit status is the number of failed checks, at most 100.
#include <algorithm>

#include "gtest/gtest.h"

int main() {
  for (auto* test = testing::Registered::first; test != nullptr; test = test->next) {
    const int before = testing::Registered::failures;
    test->run();
    std::printf("%s %s\n", testing::Registered::failures == before ? "passed" : "FAILED",
                test->name);
  }
  return std::min(testing::Registered::failures, 100);
}
