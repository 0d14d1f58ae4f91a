// SPDX-License-Identifier: MIT
// The console output that a run of suites must have, piece by piece.
#ifndef TEST_UNIT_LCUT_OUTPUT_HPP
#define TEST_UNIT_LCUT_OUTPUT_HPP

#include <string>

// The name that the compiler has for a file beside the source of the given name: it depends on how
// it was called, and a compiler cache may change it.
inline std::string file_beside(const std::string& source, const std::string& name) {
  return source.substr(0, source.rfind('/') + 1) + name;
}

inline std::string heading(const std::string& test) {
  const std::string rule(57, '*');
  return "\r\n" + rule + "\r\n\t\x1b[32mLCUT -- Lightweight C Unit Testing framework\x1b[0m\r\n" +
         std::string(22, ' ') + "By Ovinar\r\n\tVersion : 0.3.2\r\n" + rule +
         "\r\n\r\n\x1b[33mUnit Test for '" + test + "'\x1b[0m\r\n\r\n";
}

inline std::string suite(const std::string& name) {
  return "\r\n\t\x1b[33mSuite\x1b[0m <" + name + "> : \r\n";
}

inline std::string passed(const std::string& name) {
  return "\t\tCase '" + name + "': \x1b[32mPassed!\x1b[0m\r\n";
}

inline std::string failed(const std::string& name, const std::string& function, int line,
                          const std::string& file, const std::string& message) {
  return "\t\tCase '" + name + "': \x1b[31mFailure occurs in " + function + ", " +
         std::to_string(line) + " line in file " + file + ", " + message + "\x1b[0m\r\n";
}

inline std::string summary(const std::string& suites, const std::string& failed_suites,
                           const std::string& cases, const std::string& failed_cases) {
  const std::string rule(57, '=');
  const char* verdict = failed_suites == "0"
                            ? "                 \x1b[32mALL TESTS PASSED!\x1b[0m"
                            : "                   \x1b[31mSOME TEST FAILED!\x1b[0m";
  return "\r\n\x1b[33mSummary:\x1b[0m\r\n\tTotal Suites: " + suites +
         " \r\n\tFailed Suites: " + failed_suites + " \r\n\tTotal Cases: " + cases +
         " \r\n\tFailed Cases: " + failed_cases + " \r\n\r\n" + rule + "\r\n" + verdict + "\r\n" +
         rule + "\r\n";
}

#endif
