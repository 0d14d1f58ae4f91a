// SPDX-License-Identifier: MIT
// A console program whose output lcut_report_test compares. The first argument selects the run.
// Linked with --wrap=calloc, so that allocations can be made to fail.
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "lcut/lcut.h"

extern "C" void* __real_calloc(size_t count, size_t size);
extern "C" void* __wrap_calloc(size_t count, size_t size);

namespace {

int g_allocations_left = 1000;
void* g_last_block = nullptr;

#define LONG_TEXT FIFTY "-50-" FIFTY "-104-" FIFTY FIFTY
#define FIFTY "abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwx"

struct Entry {
  const char* name;
  lcut_case_function body;
};
#define CASE(name, ...)                             \
  {                                                 \
    name, [](lcut_case* tc, void*) { __VA_ARGS__; } \
  }

const char kText[] = "text";
const char kSameText[] = "text";
const float kNan = std::nanf("");

// The report shows these lines; the number keeps them apart from changes above.
// clang-format off
#line 101
const Entry kFailing[] = {
    CASE("int_equal", LCUT_INT_EQUAL(tc, INT32_MIN, 1)),
    CASE("int_nequal", LCUT_INT_NEQUAL(tc, -4, -4)),
    CASE("int_near", LCUT_INT_NEAR(tc, 5, 8, 2)),
    CASE("int_near above", LCUT_INT_NEAR(tc, 8, 5, 2)),
    CASE("int_near wrap", LCUT_INT_NEAR(tc, INT32_MAX, -2, 2147483646)),
    CASE("float_equal", LCUT_FLOAT_EQUAL(tc, 9.0f, -4.9e-7f)),
    CASE("float_equal nan", LCUT_FLOAT_EQUAL(tc, kNan, 1.5f)),
    CASE("float_nequal", LCUT_FLOAT_NEQUAL(tc, 2.5f, 2.5f)),
    CASE("float_near", LCUT_FLOAT_NEAR(tc, 1.0f, 1.5f, 0.25f)),
    CASE("str_equal", LCUT_STR_EQUAL(tc, "left", "right")),
    CASE("str_equal null", LCUT_STR_EQUAL(tc, nullptr, "x")),
    CASE("str_nequal", LCUT_STR_NEQUAL(tc, kText, kSameText)),
    CASE("str_nequal null", LCUT_STR_NEQUAL(tc, nullptr, nullptr)),
    CASE("assert", LCUT_ASSERT(tc, "100 %d\t%s", 1 > 2)),
    CASE("true", LCUT_TRUE(tc, false)),
    CASE("false", LCUT_FALSE(tc, true)),
    CASE("truncated", LCUT_ASSERT(tc, LONG_TEXT, false)),
    CASE("first of two", LCUT_INT_EQUAL(tc, 1, 2); lcut_str_equal(tc, "a", "b", 9, "f", "late")),
    CASE("neither", LCUT_TRUE(tc, true); tc->status = 2),
};

const Entry kPassing[] = {
    CASE("int", LCUT_INT_EQUAL(tc, 7, 7); LCUT_INT_NEQUAL(tc, 3, 4); LCUT_INT_NEAR(tc, 5, 8, 3)),
    CASE("int wrap", LCUT_INT_NEAR(tc, -1, INT32_MAX, 0)),
    CASE("nan", LCUT_FLOAT_EQUAL(tc, kNan, kNan); LCUT_FLOAT_NEQUAL(tc, kNan, kNan)),
    CASE("nan near", LCUT_FLOAT_NEAR(tc, 1.0f, kNan, 0.0f)),
    CASE("float near", LCUT_FLOAT_NEAR(tc, 1.0f, 1.25f, 0.25f)),
    CASE("text", LCUT_STR_EQUAL(tc, kText, kSameText); LCUT_STR_EQUAL(tc, nullptr, nullptr)),
    CASE("other text", LCUT_STR_NEQUAL(tc, "left", "right"); LCUT_STR_NEQUAL(tc, "x", nullptr)),
    CASE("conditions", LCUT_ASSERT(tc, "m", kText); LCUT_TRUE(tc, 256); LCUT_FALSE(tc, false)),
};
// clang-format on

template <size_t count>
lcut_suite* make_suite(const char* name, const Entry (&entries)[count]) {
  lcut_suite* suite = nullptr;
  lcut_ts_init(&suite, name, nullptr, nullptr);
  for (const Entry& entry : entries) {
    lcut_tc_add(suite, entry.name, entry.body, nullptr, nullptr, nullptr);
  }
  return suite;
}

#define HOOK(text) [] { lcut_print("[" text "]\r\n"); }

void print_argument(lcut_case*, void* argument) {
  lcut_print("[body %s]\r\n", static_cast<const char*>(argument));
}

// The site of a failure in other code, with texts and a line at the end of their range.
void fail_far_away(lcut_case* tc, void*) {
  lcut_true(tc, false, 2147483647, LONG_TEXT, LONG_TEXT);
}

int finish(lcut_test* test, lcut_results results, int32_t flag) {
  lcut_test_run(test, &flag);
  const int32_t printed = lcut_test_report(test, &results);
  lcut_test_destroy(&test);
  lcut_print("results %d %d %d %d, flag %d, block %d, %s\r\n", int(results.suites),
             int(results.cases), int(results.failed_suites), int(results.failed_cases), int(flag),
             int(printed), test == nullptr ? "destroyed" : "kept");
  return static_cast<int>(results.failed_cases);
}

int run_failing() {
  lcut_test* test = nullptr;
  lcut_test_init(&test, LONG_TEXT, HOOK("test setup"), HOOK("test teardown"));
  lcut_ts_add(test, make_suite("failing", kFailing));
  lcut_suite* suite = nullptr;
  lcut_ts_init(&suite, "hooks", HOOK("suite setup"), HOOK("suite teardown"));
  char argument[] = "argument";
  lcut_tc_add(suite, "hooked", print_argument, argument, HOOK("case setup"), HOOK("case teardown"));
  lcut_ts_add(test, suite);
  const Entry far[] = {{LONG_TEXT, fail_far_away}};
  suite = make_suite(LONG_TEXT, far);
  lcut_ts_add(test, suite);
  // The test counts the cases that its suite had when it was added, the results all of them.
  lcut_tc_add(suite, "late", print_argument, argument, nullptr, nullptr);
  return finish(test, {0, 0, 0, 0}, 0);
}

void use_mocks(lcut_case* tc, void*) {
  LCUT_MOCK_OBJ_RETURN("sensor", 0xFEDCBA9876543210u, 1, 2);
  LCUT_MOCK_OBJ_RETURN("sensor", 5, 1, 1);
  LCUT_MOCK_OBJ_RETURN("sensor", 6, 2, 3);
  LCUT_TRUE(tc, LCUT_MOCK_OBJ("sensor", 1) == 0xFEDCBA9876543210u);
  LCUT_MOCK_OBJ_RETURN("sensor", 7, 1, LCUT_MOCK_ALWAYS);
  for (int i = 0; i < 4; ++i) LCUT_TRUE(tc, LCUT_MOCK_OBJ("sensor", 1) == 7);
  LCUT_MOCK_OBJ_RETURN("sensor", 8, 1, 0x80000000u);
  LCUT_TRUE(tc, LCUT_MOCK_OBJ("sensor", 1) == 0xFEDCBA9876543210u);
  LCUT_TRUE(tc, LCUT_MOCK_OBJ("sensor", 1) == 5);
  LCUT_TRUE(tc, LCUT_MOCK_OBJ("sensor", 2) == 6);
  LCUT_MOCK_OBJ_RETURN(LONG_TEXT, 9, 1, 1);
  LCUT_TRUE(tc, LCUT_MOCK_OBJ(LONG_TEXT, 1) == 9);
}

int run_passing() {
  lcut_test* test = nullptr;
  lcut_test_init(&test, "passing", nullptr, nullptr);
  lcut_ts_add(test, make_suite("assertions", kPassing));
  const Entry mocks[] = {{"values", use_mocks}};
  lcut_ts_add(test, make_suite("mocks", mocks));
  return finish(test, {100, 200, 300, 0}, 7);
}

int run_without_memory() {
  lcut_test* test = nullptr;
  lcut_suite* suite = nullptr;
  g_allocations_left = 0;
  int code = lcut_test_init(&test, "none", nullptr, nullptr);
  lcut_print("test %d %d\r\n", code, test == nullptr);
  g_allocations_left = 1;
  lcut_test_init(&test, "little", nullptr, nullptr);
  code = lcut_ts_init(&suite, "none", nullptr, nullptr);
  lcut_print("suite %d %d\r\n", code, suite == nullptr);
  code = lcut_tc_add(suite, "none", print_argument, nullptr, nullptr, nullptr);
  lcut_print("left out %d %d\r\n", code == ENOMEM, lcut_ts_add(test, suite) == ENOMEM);
  g_allocations_left = 2;
  lcut_ts_init(&suite, "little", nullptr, nullptr);
  lcut_print("no test %d\r\n", lcut_ts_add(nullptr, suite) == ENOMEM);
  lcut_tc_add(suite, "far", fail_far_away, nullptr, nullptr, nullptr);
  code = lcut_tc_add(suite, "none", print_argument, nullptr, nullptr, nullptr);
  lcut_print("case %d, %d in suite\r\n", code, int(suite->case_count));
  lcut_ts_add(test, suite);
  lcut_test_run(test, nullptr);
  lcut_test_report(test, nullptr);
  LCUT_MOCK_OBJ_RETURN("sensor", 1, 0, 1);
  return 0;
}

#line 201
int run_drained() {
  LCUT_MOCK_OBJ_RETURN("sensor", 3, 5, 1);
  lcut_print("value %d\r\n", int(LCUT_MOCK_OBJ("sensor", 5)));
  return int(LCUT_MOCK_OBJ("sensor", 5));
}

int run_other_type() {
  LCUT_MOCK_OBJ_RETURN("sensor", 3, 5, 1);
  return int(LCUT_MOCK_OBJ("sensor", 6));
}

int run_forgotten(bool destroyed) {
  lcut_test* test = nullptr;
  if (destroyed) lcut_test_init(&test, "test", nullptr, nullptr);
  LCUT_MOCK_OBJ_RETURN("sensor", 3, 5, LCUT_MOCK_ALWAYS);
  // A new test abandons the mock; a pointer to it keeps leak checkers quiet.
  static void* abandoned;
  abandoned = g_last_block;
  if (destroyed) {
    lcut_test_destroy(&test);
  } else {
    lcut_test_init(&test, "test", nullptr, nullptr);
  }
  return int(LCUT_MOCK_OBJ("sensor", 5)) + (abandoned == nullptr ? 1 : 0);
}

}  // namespace

extern "C" void* __wrap_calloc(size_t count, size_t size) {
  if (g_allocations_left == 0) {
    errno = EAGAIN;
    return nullptr;
  }
  --g_allocations_left;
  return g_last_block = __real_calloc(count, size);
}

int main(int argc, char** argv) {
  const char* run = argc > 1 ? argv[1] : "";
  if (std::strcmp(run, "passing") == 0) return run_passing();
  if (std::strcmp(run, "without_memory") == 0) return run_without_memory();
  if (std::strcmp(run, "drained") == 0) return run_drained();
  if (std::strcmp(run, "other_type") == 0) return run_other_type();
  if (std::strcmp(run, "destroyed") == 0) return run_forgotten(true);
  if (std::strcmp(run, "abandoned") == 0) return run_forgotten(false);
  return run_failing();
}
