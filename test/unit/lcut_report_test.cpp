// SPDX-License-Identifier: MIT
// Compares the console output and the exit status of lcut_failing_program with the expected text.
#include <gtest/gtest.h>

#include "test/unit/lcut_output.hpp"
#include "test/unit/run_program.hpp"

namespace {

const std::string kFile = file_beside(__FILE__, "lcut_failing_program.cpp");
const std::string kLong =
    "abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwx-50-"
    "abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwx-104-abcdefghijklmnopqr";

Outcome run(const std::string& argument) {
  return run_program(LCUT_FAILING_PROGRAM " " + argument);
}

std::string missing_symbol(const std::string& line) {
  return "\t[LCUT]: can't find the symbol: <sensor> which is being mocked!, " + line +
         " line in file " + kFile + "\r\n";
}

TEST(LcutReport, ReportsFirstFailureOfEachCase) {
  const struct {
    const char* name;
    std::string message;
  } cases[] = {
      {"int_equal", "expected <-2147483648> : actual <1> : diff <2147483647>"},
      {"int_nequal", "not expected <-4> : actual <-4> : diff <0>"},
      {"int_near", "expected<5> : actual<8> : diff <-3>"},
      {"int_near above", "expected<8> : actual<5> : diff <3>"},
      {"int_near wrap", "expected<2147483647> : actual<-2> : diff <-2147483647>"},
      // The double difference would end in 0.
      {"float_equal", "expected <9.000000> : actual <-0.000000> : diff <9.000001e+00>"},
      {"float_equal nan", "expected <nan> : actual <1.500000> : diff <nan>"},
      {"float_nequal", "not expected <2.500000> : actual <2.500000> : diff <0.000000e+00>"},
      {"float_near", "expected<1.000000> : actual<1.500000> : diff <-5.000000e-01>"},
      {"str_equal", "expected <left> : actual <right>"},
      {"str_equal null", "expected <NULL> : actual <x>"},
      {"str_nequal", "not expected <text> : actual <text>"},
      {"str_nequal null", "not expected <NULL> : actual <NULL>"},
      {"assert", "100 %d\t%s"},
      {"true", ""},
      {"false", ""},
      {"truncated", kLong},
      {"first of two", "expected <1> : actual <2> : diff <-1>"},
  };
  std::string expected = heading(kLong) + "[test setup]\r\n" + suite("failing");
  int line = 102;
  for (const auto& c : cases) expected += failed(c.name, "operator()", line++, kFile, c.message);
  expected += suite("hooks") + "[suite setup]\r\n[case setup]\r\n[body argument]\r\n" +
              "[case teardown]\r\n" + passed("hooked") + "[suite teardown]\r\n";
  expected += suite(kLong) + failed(kLong, kLong, 2147483647, kLong, "") + "[body argument]\r\n" +
              passed("late") + "[test teardown]\r\n";
  expected += summary("3", "2", "21", "19") + "results 3 22 2 19, flag 1, block 167, destroyed\r\n";
  const Outcome outcome = run("");
  EXPECT_EQ(outcome.output, expected);
  EXPECT_EQ(outcome.status, 19);
}

TEST(LcutReport, ReportsPassingRunAndAddsToResults) {
  std::string expected = heading("passing") + suite("assertions");
  for (const char* name :
       {"int", "int wrap", "nan", "nan near", "float near", "text", "other text", "conditions"}) {
    expected += passed(name);
  }
  expected += suite("mocks") + passed("values") + summary("2", "0", "9", "0") +
              "results 102 209 300 0, flag 7, block 165, destroyed\r\n";
  const Outcome outcome = run("passing");
  EXPECT_EQ(outcome.output, expected);
  EXPECT_EQ(outcome.status, 0);
}

TEST(LcutReport, EndsProcessOnFatalErrors) {
  const std::string no_memory = "\t[LCUT]: malloc error!, errcode[11]\r\n";
  const struct {
    const char* run;
    std::string output;
  } runs[] = {
      {"drained", "value 3\r\n\t[LCUT]: you have not set the value of mock obj <sensor>!, " +
                      std::string("204 line in file ") + kFile + "\r\n"},
      {"other_type", missing_symbol("209")},
      {"destroyed", missing_symbol("224")},
      {"abandoned", missing_symbol("224")},
      {"without_memory",
       no_memory + "test 11 1\r\n" + no_memory + "suite 11 1\r\nleft out 1 1\r\nno test 1\r\n" +
           no_memory + "case 11, 1 in suite\r\n" + heading("little") + suite("little") +
           failed("far", kLong, 2147483647, kLong, "") + summary("1", "1", "1", "1") + no_memory},
  };
  for (const auto& r : runs) {
    const Outcome outcome = run(r.run);
    EXPECT_EQ(outcome.output, r.output) << r.run;
    EXPECT_EQ(outcome.status, 1) << r.run;
  }
}

}  // namespace
