// SPDX-License-Identifier: MIT
// The runner's whole output and exit status on suites that fail.
#include <gtest/gtest.h>

#include "test/unit/lcut_output.hpp"
#include "test/unit/run_program.hpp"

namespace {

void expect_run(int failing, int status, const std::string& milliseconds) {
  std::string expected =
      heading("NN library test unit") + suite("first") + passed("pass") + suite("second");
  for (int i = 0; i < failing; ++i) {
    expected += failed("fail", "fail", 101, file_beside(__FILE__, "runner_failing_suites.cpp"),
                       "expected <2> : actual <3> : diff <-1>");
  }
  expected += passed("last") + summary("2", failing != 0 ? "1" : "0", std::to_string(2 + failing),
                                       std::to_string(failing));
  expected +=
      "[Timer NN library test unit - main timer] Total time: " + milliseconds + " (ms)\r\n\r\n";
  const Outcome outcome = run_program("FAILING_CASES=" + std::to_string(failing) +
                                      " " RUNNER_FAILING_PROGRAM " ignored arguments");
  EXPECT_EQ(outcome.output, expected);
  EXPECT_EQ(outcome.status, status);
}

TEST(Runner, CountsFailingCasesInItsStatusAndTimesTheRunAlone) {
  expect_run(0, 0, "1.234");
  expect_run(1, 1, "1.851");
  expect_run(300, 255, "186.334");  // a status has 8 bits
}

// A program without a test: the timer's line and no failed case.
TEST(Runner, EndsWithoutMemoryForItsTest) {
  const std::string no_memory = "\t[LCUT]: malloc error!, errcode[11]\r\n";
  const Outcome outcome = run_program("FAILING_CASES=memory " RUNNER_FAILING_PROGRAM);
  EXPECT_EQ(outcome.output, no_memory + no_memory + no_memory +
                                "[Timer NN library test unit - main timer] Total time: 0.000 "
                                "(ms)\r\n\r\n");
  EXPECT_EQ(outcome.status, 0);
}

}  // namespace
