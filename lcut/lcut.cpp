// SPDX-License-Identifier: MIT
#include "lcut/lcut.h"

#include <cerrno>
#include <cmath>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

// The mocked symbols, shared by every test of the process.
lcut_list _symbol_list = {&_symbol_list, &_symbol_list};

constexpr char kBanner[] =
    "\r\n*********************************************************\r\n"
    "\t\033[32mLCUT -- Lightweight C Unit Testing framework\033[0m\r\n"
    "                      By Ovinar\r\n"
    "\tVersion : " LCUT_VERSION
    "\r\n"
    "*********************************************************\r\n";
constexpr char kAllPassed[] =
    "\r\n=========================================================\r\n"
    "                 \033[32mALL TESTS PASSED!\033[0m\r\n"
    "=========================================================\r\n";
constexpr char kSomeFailed[] =
    "\r\n=========================================================\r\n"
    "                   \033[31mSOME TEST FAILED!\033[0m\r\n"
    "=========================================================\r\n";

// int32_t is long on some targets, which %d does not accept.
template <typename Number>
int as_int(Number value) {
  return static_cast<int>(value);
}

void list_init(lcut_list& head) {
  head.next = head.previous = &head;
}

void list_append(lcut_list& head, lcut_list& node) {
  node.next = &head;
  node.previous = head.previous;
  head.previous->next = &node;
  head.previous = &node;
}

void list_remove(lcut_list& node) {
  node.previous->next = node.next;
  node.next->previous = node.previous;
}

// Visits the records in order; the visitor may free the record it is given.
template <typename Record, typename Visitor>
void for_each(lcut_list& head, Visitor visit) {
  static_assert(offsetof(Record, links) == 0, "a node is the start of its record");
  for (lcut_list* node = head.next; node != &head;) {
    Record* record = reinterpret_cast<Record*>(node);
    node = node->next;
    visit(record);
  }
}

// Stores a zeroed record and returns 0, or prints and returns the error and stores nothing.
template <typename Record>
int32_t allocate(Record*& record) {
  void* block = std::calloc(1, sizeof(Record));
  if (block == nullptr) {
    // The language lets calloc fail without setting errno.
    const int reason = errno;
    const int code = reason != 0 ? reason : ENOMEM;
    lcut_print("\t[LCUT]: malloc error!, errcode[%d]\r\n", code);
    return code;
  }
  record = static_cast<Record*>(block);
  return 0;
}

// The records start zeroed, so the last byte stays the terminator.
void copy_name(char (&target)[LCUT_TEXT_SIZE], const char* name) {
  std::strncpy(target, name, LCUT_TEXT_SIZE - 1);
}

// A test, suite or case of that name; 0 or the error.
template <typename Record>
int32_t create(Record*& record, const char* name, lcut_hook setup, lcut_hook teardown) {
  const int32_t code = allocate(record);
  if (code != 0) return code;
  copy_name(record->name, name);
  record->setup = setup;
  record->teardown = teardown;
  return 0;
}

void call(lcut_hook hook) {
  if (hook != nullptr) hook();
}

void run_case(lcut_suite* suite, lcut_case* tc, int32_t* failure_flag) {
  call(tc->setup);
  tc->function(tc, tc->argument);
  call(tc->teardown);
  if (tc->status == LCUT_PASSED) {
    lcut_print("\t\tCase '%s': \033[32mPassed!\033[0m\r\n", tc->name);
  } else if (tc->status == LCUT_FAILED) {
    ++suite->failed_count;
    lcut_print("\t\tCase '%s': \033[31mFailure occurs in %s, %d line in file %s, %s\033[0m\r\n",
               tc->name, tc->function_name, as_int(tc->line), tc->file, tc->message);
    if (failure_flag != nullptr) *failure_flag = 1;
  }
}

bool undecided(const lcut_case* tc) {
  return tc->status != LCUT_FAILED;
}

LCUT_PRINTF_LIKE(5, 6)
void record_failure(lcut_case* tc, uint32_t line, const char* function, const char* file,
                    const char* format, ...) {
  std::snprintf(tc->file, sizeof tc->file, "%s", file);
  std::snprintf(tc->function_name, sizeof tc->function_name, "%s", function);
  tc->line = line;
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(tc->message, sizeof tc->message, format, arguments);
  va_end(arguments);
  tc->status = LCUT_FAILED;
}

int32_t wrapped_difference(int32_t left, int32_t right) {
  return static_cast<int32_t>(static_cast<uint32_t>(left) - static_cast<uint32_t>(right));
}

bool same_text(const char* left, const char* right) {
  if (left == nullptr || right == nullptr) return left == right;
  return left == right || std::strcmp(left, right) == 0;
}

const char* printable(const char* text) {
  return text != nullptr ? text : "NULL";
}

lcut_mock* find_mock(const char* name, uint32_t type) {
  lcut_mock* found = nullptr;
  for_each<lcut_mock>(_symbol_list, [&](lcut_mock* mock) {
    if (mock->type == type && std::strncmp(mock->name, name, LCUT_TEXT_SIZE - 1) == 0) {
      found = mock;
    }
  });
  return found;
}

lcut_mock* add_mock(const char* name, uint32_t type) {
  lcut_mock* mock = nullptr;
  if (allocate(mock) != 0) std::exit(1);
  copy_name(mock->name, name);
  mock->type = type;
  list_init(mock->values);
  list_append(_symbol_list, mock->links);
  return mock;
}

}  // namespace

int32_t lcut_test_init(lcut_test** test, const char* name, lcut_hook setup, lcut_hook teardown) {
  lcut_test* created = nullptr;
  const int32_t code = create(created, name, setup, teardown);
  if (code != 0) return code;
  list_init(created->suites);
  list_init(_symbol_list);
  *test = created;
  return 0;
}

int32_t lcut_ts_init(lcut_suite** suite, const char* name, lcut_hook setup, lcut_hook teardown) {
  lcut_suite* created = nullptr;
  const int32_t code = create(created, name, setup, teardown);
  if (code != 0) return code;
  list_init(created->cases);
  *suite = created;
  return 0;
}

int32_t lcut_tc_add(lcut_suite* suite, const char* name, lcut_case_function function,
                    void* argument, lcut_hook setup, lcut_hook teardown) {
  if (suite == nullptr) return ENOMEM;
  lcut_case* created = nullptr;
  const int32_t code = create(created, name, setup, teardown);
  if (code != 0) return code;
  created->function = function;
  created->argument = argument;
  list_append(suite->cases, created->links);
  ++suite->case_count;
  return 0;
}

int32_t lcut_ts_add(lcut_test* test, lcut_suite* suite) {
  if (test == nullptr || suite == nullptr) return ENOMEM;
  list_append(test->suites, suite->links);
  ++test->suite_count;
  test->case_count += suite->case_count;
  return 0;
}

void lcut_test_run(lcut_test* test, int32_t* failure_flag) {
  if (test == nullptr) return;
  lcut_print("%s\r\n", kBanner);
  lcut_print("\033[33mUnit Test for '%s'\033[0m\r\n\r\n", test->name);
  call(test->setup);
  for_each<lcut_suite>(test->suites, [&](lcut_suite* suite) {
    lcut_print("\r\n\t\033[33mSuite\033[0m <%s> : \r\n", suite->name);
    call(suite->setup);
    for_each<lcut_case>(suite->cases, [&](lcut_case* tc) { run_case(suite, tc, failure_flag); });
    call(suite->teardown);
  });
  call(test->teardown);
}

int32_t lcut_test_report(lcut_test* test, lcut_results* results) {
  if (test == nullptr) return 0;
  lcut_results counted = {0, 0, 0, 0};
  for_each<lcut_suite>(test->suites, [&](const lcut_suite* suite) {
    ++counted.suites;
    counted.cases += suite->case_count;
    counted.failed_suites += suite->failed_count > 0 ? 1 : 0;
    counted.failed_cases += suite->failed_count;
  });
  lcut_print("\r\n\033[33mSummary:\033[0m\r\n");
  lcut_print("\tTotal Suites: %d \r\n", as_int(test->suite_count));
  lcut_print("\tFailed Suites: %d \r\n", as_int(counted.failed_suites));
  lcut_print("\tTotal Cases: %d \r\n", as_int(test->case_count));
  lcut_print("\tFailed Cases: %d \r\n", as_int(counted.failed_cases));
  const int32_t printed = lcut_print("%s", counted.failed_suites == 0 ? kAllPassed : kSomeFailed);
  if (results != nullptr) {
    results->suites += counted.suites;
    results->cases += counted.cases;
    results->failed_suites += counted.failed_suites;
    results->failed_cases += counted.failed_cases;
  }
  return printed;
}

void lcut_test_destroy(lcut_test** test) {
  for_each<lcut_mock>(_symbol_list, [](lcut_mock* mock) {
    for_each<lcut_mock_value>(mock->values, [](lcut_mock_value* value) { std::free(value); });
    std::free(mock);
  });
  list_init(_symbol_list);
  if (*test == nullptr) return;
  for_each<lcut_suite>((*test)->suites, [](lcut_suite* suite) {
    for_each<lcut_case>(suite->cases, [](lcut_case* tc) { std::free(tc); });
    std::free(suite);
  });
  std::free(*test);
  *test = nullptr;
}

int32_t lcut_print(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int printed = std::vprintf(format, arguments);
  va_end(arguments);
  return printed;
}

void lcut_int_equal(lcut_case* tc, int32_t expected, int32_t actual, uint32_t line,
                    const char* function, const char* file) {
  if (undecided(tc) && expected != actual) {
    record_failure(tc, line, function, file, "expected <%d> : actual <%d> : diff <%d>",
                   as_int(expected), as_int(actual), as_int(wrapped_difference(expected, actual)));
  }
}

void lcut_int_nequal(lcut_case* tc, int32_t expected, int32_t actual, uint32_t line,
                     const char* function, const char* file) {
  if (undecided(tc) && expected == actual) {
    record_failure(tc, line, function, file, "not expected <%d> : actual <%d> : diff <%d>",
                   as_int(expected), as_int(actual), 0);
  }
}

void lcut_int_near(lcut_case* tc, int32_t expected, int32_t actual, int32_t delta, uint32_t line,
                   const char* function, const char* file) {
  const int32_t diff = wrapped_difference(expected, actual);
  const int32_t magnitude = diff < 0 ? wrapped_difference(0, diff) : diff;
  if (undecided(tc) && magnitude > delta) {
    record_failure(tc, line, function, file, "expected<%d> : actual<%d> : diff <%d>",
                   as_int(expected), as_int(actual), as_int(diff));
  }
}

void lcut_float_equal(lcut_case* tc, float expected, float actual, uint32_t line,
                      const char* function, const char* file) {
  const bool both_nan = std::isnan(expected) && std::isnan(actual);
  const float diff = expected - actual;
  if (undecided(tc) && !both_nan && !(expected == actual)) {
    record_failure(tc, line, function, file, "expected <%f> : actual <%f> : diff <%e>", expected,
                   actual, diff);
  }
}

void lcut_float_nequal(lcut_case* tc, float expected, float actual, uint32_t line,
                       const char* function, const char* file) {
  const float diff = expected - actual;
  if (undecided(tc) && expected == actual) {
    record_failure(tc, line, function, file, "not expected <%f> : actual <%f> : diff <%e>",
                   expected, actual, diff);
  }
}

void lcut_float_near(lcut_case* tc, float expected, float actual, float delta, uint32_t line,
                     const char* function, const char* file) {
  const float diff = expected - actual;
  if (undecided(tc) && std::fabs(diff) > delta) {
    record_failure(tc, line, function, file, "expected<%f> : actual<%f> : diff <%e>", expected,
                   actual, diff);
  }
}

void lcut_str_equal(lcut_case* tc, const char* expected, const char* actual, uint32_t line,
                    const char* function, const char* file) {
  if (undecided(tc) && !same_text(expected, actual)) {
    record_failure(tc, line, function, file, "expected <%s> : actual <%s>", printable(expected),
                   printable(actual));
  }
}

void lcut_str_nequal(lcut_case* tc, const char* expected, const char* actual, uint32_t line,
                     const char* function, const char* file) {
  if (undecided(tc) && same_text(expected, actual)) {
    record_failure(tc, line, function, file, "not expected <%s> : actual <%s>", printable(expected),
                   printable(actual));
  }
}

void lcut_assert(lcut_case* tc, const char* message, int32_t condition, uint32_t line,
                 const char* function, const char* file) {
  if (undecided(tc) && condition == 0) record_failure(tc, line, function, file, "%s", message);
}

void lcut_true(lcut_case* tc, bool condition, uint32_t line, const char* function,
               const char* file) {
  lcut_assert(tc, "", condition, line, function, file);
}

void lcut_false(lcut_case* tc, bool condition, uint32_t line, const char* function,
                const char* file) {
  lcut_assert(tc, "", !condition, line, function, file);
}

void lcut_mock_obj_return(const char* name, uint64_t value, uint32_t, const char*, const char*,
                          uint32_t type, uint32_t count) {
  lcut_mock* mock = find_mock(name, type);
  if (mock == nullptr) mock = add_mock(name, type);
  mock->always = count == LCUT_MOCK_ALWAYS ? 1 : 0;
  if (mock->always != 0) mock->always_value = value;
  for (int32_t left = static_cast<int32_t>(count); left > 0; --left) {
    lcut_mock_value* queued = nullptr;
    if (allocate(queued) != 0) std::exit(1);
    queued->value = value;
    list_append(mock->values, queued->links);
  }
}

uint64_t lcut_mock_obj(const char* name, uint32_t line, const char* file, uint32_t type) {
  lcut_mock* mock = find_mock(name, type);
  if (mock == nullptr) {
    lcut_print(
        "\t[LCUT]: can't find the symbol: <%s> which is being mocked!, %d line in file %s\r\n",
        name, as_int(line), file);
    std::exit(1);
  }
  if (mock->always != 0) return mock->always_value;
  // A drained queue's head links to itself and must not be read as a value.
  if (mock->values.next == &mock->values) {
    lcut_print("\t[LCUT]: you have not set the value of mock obj <%s>!, %d line in file %s\r\n",
               name, as_int(line), file);
    std::exit(1);
  }
  lcut_mock_value* queued = reinterpret_cast<lcut_mock_value*>(mock->values.next);
  const uint64_t value = queued->value;
  list_remove(queued->links);
  std::free(queued);
  return value;
}
