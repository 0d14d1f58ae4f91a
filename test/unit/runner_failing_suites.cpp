// SPDX-License-Identifier: MIT
// Suites for the runner, of which FAILING_CASES cases (an environment variable) fail; when it is
// "memory", there is none for a record.
// Linked with --wrap=port_ticks and --wrap=lcut_test_report: the clock stands still but for the
// steps taken here, the long ones outside the span that the runner measures; and with
// --wrap=calloc.
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "ports/port.h"
#include "test/fixture.hpp"
#include "test/suites.h"

extern "C" int64_t __wrap_port_ticks();
extern "C" void* __real_calloc(size_t count, size_t size);
extern "C" void* __wrap_calloc(size_t count, size_t size);
extern "C" int32_t __real_lcut_test_report(lcut_test* test, lcut_results* results);
extern "C" int32_t __wrap_lcut_test_report(lcut_test* test, lcut_results* results);

namespace {

constexpr int64_t kSecond = 1000000;
int64_t g_microseconds = 0;

void let_pass(int64_t microseconds) {
  g_microseconds += microseconds;
}

CASE(pass) {
  let_pass(617);
}

CASE(fail) {
  let_pass(617);
#line 101
  LCUT_INT_EQUAL(tc, 2, 3);
}

void add_passing(lcut_test* test) {
  let_pass(kSecond);
  register_suite(test, "first", {ENTRY(pass)});
}

void add_failing(lcut_test* test) {
  let_pass(kSecond);
  const char* failing = std::getenv("FAILING_CASES");
  lcut_suite* suite = nullptr;
  lcut_ts_init(&suite, "second", nullptr, nullptr);
  for (int i = failing != nullptr ? std::atoi(failing) : 0; i > 0; --i) {
    lcut_tc_add(suite, "fail", fail, nullptr, nullptr, nullptr);
  }
  lcut_tc_add(suite, "last", pass, nullptr, nullptr, nullptr);
  lcut_ts_add(test, suite);
}

}  // namespace

int64_t __wrap_port_ticks() {
  return g_microseconds * (port_ticks_per_second() / kSecond);
}

void* __wrap_calloc(size_t count, size_t size) {
  const char* failing = std::getenv("FAILING_CASES");
  if (failing == nullptr || std::strcmp(failing, "memory") != 0) {
    return __real_calloc(count, size);
  }
  errno = EAGAIN;
  return nullptr;
}

int32_t __wrap_lcut_test_report(lcut_test* test, lcut_results* results) {
  let_pass(kSecond);
  return __real_lcut_test_report(test, results);
}

const suite_registration suite_registrations[] = {add_passing, add_failing};
const size_t suite_registration_count = 2;
