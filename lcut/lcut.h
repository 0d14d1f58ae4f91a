/* SPDX-License-Identifier: MIT */
/// LCUT -- Lightweight C Unit Testing framework.
///
/// A test holds suites, a suite holds cases, a case is a plain function that calls assertions on
/// its record. An assertion never aborts the case: the first failure is recorded, later assertions
/// of the same case do nothing. Single-threaded; all output goes to standard output.
#ifndef LCUT_LCUT_H_
#define LCUT_LCUT_H_

#include <stdbool.h>
#include <stdint.h>

#if defined(__GNUC__)
#define LCUT_PRINTF_LIKE(format_index, first_argument) \
  __attribute__((format(printf, format_index, first_argument)))
#else
#define LCUT_PRINTF_LIKE(format_index, first_argument)
#endif

#define LCUT_VERSION "0.3.2"

/// Size in bytes of every stored text; longer texts keep their first LCUT_TEXT_SIZE - 1 characters.
#define LCUT_TEXT_SIZE 128

/// Values of lcut_case::status.
#define LCUT_PASSED 0
#define LCUT_FAILED 1

/// Count that makes lcut_mock_obj_return set a value for every later lookup.
#define LCUT_MOCK_ALWAYS 0xFFFFFFFFu

#ifdef __cplusplus
extern "C" {
#endif

/// Node, or head, of a circular doubly-linked list. The head of an empty list points to itself.
typedef struct lcut_list {
  struct lcut_list* next;
  struct lcut_list* previous;
} lcut_list;

struct lcut_case;

/// Setup or teardown function; a null pointer stands for none.
typedef void (*lcut_hook)(void);

/// Body of a case: receives its record and the argument it was registered with.
typedef void (*lcut_case_function)(struct lcut_case* tc, void* argument);

/// A whole test: one per program run.
typedef struct lcut_test {
  char name[LCUT_TEXT_SIZE];
  lcut_list suites;    ///< lcut_suite records in the order added
  lcut_hook setup;     ///< called before the first suite
  lcut_hook teardown;  ///< called after the last suite
  uint32_t suite_count;
  uint32_t case_count;  ///< sum of the suites' case counts at the moment each was added
} lcut_test;

/// A named group of cases.
typedef struct lcut_suite {
  lcut_list links;  ///< position in lcut_test::suites; stays the first member
  char name[LCUT_TEXT_SIZE];
  lcut_list cases;     ///< lcut_case records in the order added
  lcut_hook setup;     ///< called before the first case
  lcut_hook teardown;  ///< called after the last case
  uint32_t case_count;
  uint32_t failed_count;  ///< failing cases met by lcut_test_run
} lcut_suite;

/// One case and the outcome of its run.
typedef struct lcut_case {
  lcut_list links;  ///< position in lcut_suite::cases; stays the first member
  char name[LCUT_TEXT_SIZE];
  lcut_case_function function;
  void* argument;
  lcut_hook setup;            ///< called immediately before the body
  lcut_hook teardown;         ///< called immediately after the body
  int32_t status;             ///< LCUT_PASSED until the first failure, then LCUT_FAILED for good
  char file[LCUT_TEXT_SIZE];  ///< source file of the first failure
  char function_name[LCUT_TEXT_SIZE];  ///< function of the first failure
  uint32_t line;                       ///< line of the first failure
  char message[LCUT_TEXT_SIZE];        ///< description of the first failure
} lcut_case;

/// One queued return value of a mocked symbol.
typedef struct lcut_mock_value {
  lcut_list links;  ///< position in lcut_mock::values; stays the first member
  uint64_t value;
} lcut_mock_value;

/// A mocked symbol, found by type and name.
typedef struct lcut_mock {
  lcut_list links;  ///< position in the list of mocks; stays the first member
  char name[LCUT_TEXT_SIZE];
  uint32_t type;          ///< kind chosen by the caller
  uint32_t always;        ///< nonzero: every lookup returns always_value
  uint64_t always_value;  ///< valid while always is set
  lcut_list values;       ///< lcut_mock_value records, oldest first
} lcut_mock;

/// Counters that lcut_test_report adds to.
typedef struct lcut_results {
  uint32_t suites;
  uint32_t cases;
  uint32_t failed_suites;
  uint32_t failed_cases;
} lcut_results;

/// Creates a test without suites and empties the list of mocks; mocks still in it are not freed.
/// Returns 0, or errno after a failed allocation, which leaves *test untouched.
int32_t lcut_test_init(lcut_test** test, const char* name, lcut_hook setup, lcut_hook teardown);

/// Creates a suite without cases. Returns 0, or errno after a failed allocation, which leaves
/// *suite untouched.
int32_t lcut_ts_init(lcut_suite** suite, const char* name, lcut_hook setup, lcut_hook teardown);

/// Creates a case and appends it to the suite. Returns 0, or errno after a failed allocation. A
/// null suite, left by a failed lcut_ts_init, takes no case: the result is ENOMEM.
int32_t lcut_tc_add(lcut_suite* suite, const char* name, lcut_case_function function,
                    void* argument, lcut_hook setup, lcut_hook teardown);

/// Appends the suite, already filled with its cases, to the test, which owns it from then on.
/// Returns 0, or ENOMEM when one of them is null, left by a failed lcut_test_init or lcut_ts_init:
/// a suite without a test stays the caller's.
int32_t lcut_ts_add(lcut_test* test, lcut_suite* suite);

/// Runs every case and prints its outcome. When failure_flag is not null, 1 is stored in it for
/// each failing case; it is never cleared. A null test, here and in lcut_test_report, has nothing
/// to run and prints nothing.
void lcut_test_run(lcut_test* test, int32_t* failure_flag);

/// Prints the summary and, when results is not null, adds the counters to it. Returns the number of
/// characters in the closing block.
int32_t lcut_test_report(lcut_test* test, lcut_results* results);

/// Frees all mocks, then the test, if it is not null, with its suites and cases, and stores null in
/// *test.
void lcut_test_destroy(lcut_test** test);

/// Formatted print to standard output. Returns the number of characters, or a negative value.
int32_t lcut_print(const char* format, ...) LCUT_PRINTF_LIKE(1, 2);

/// Assertions. Each ends with the calling site: line, function name and file name. On failure they
/// store the site and a message in the record and set its status to LCUT_FAILED; once that is set
/// they do nothing.

/// Fails when expected != actual.
void lcut_int_equal(lcut_case* tc, int32_t expected, int32_t actual, uint32_t line,
                    const char* function, const char* file);

/// Fails when expected == actual.
void lcut_int_nequal(lcut_case* tc, int32_t expected, int32_t actual, uint32_t line,
                     const char* function, const char* file);

/// Fails when abs(expected - actual) > delta. Difference and absolute value wrap to 32 bits, so a
/// difference of -2^31 stays negative and passes.
void lcut_int_near(lcut_case* tc, int32_t expected, int32_t actual, int32_t delta, uint32_t line,
                   const char* function, const char* file);

/// Fails when expected != actual, unless both are NaN. A NaN against a number fails.
void lcut_float_equal(lcut_case* tc, float expected, float actual, uint32_t line,
                      const char* function, const char* file);

/// Fails when expected == actual; a NaN never equals anything.
void lcut_float_nequal(lcut_case* tc, float expected, float actual, uint32_t line,
                       const char* function, const char* file);

/// Fails when abs(expected - actual) > delta in single precision; a NaN difference passes.
void lcut_float_near(lcut_case* tc, float expected, float actual, float delta, uint32_t line,
                     const char* function, const char* file);

/// Fails when the texts differ or exactly one of them is null.
void lcut_str_equal(lcut_case* tc, const char* expected, const char* actual, uint32_t line,
                    const char* function, const char* file);

/// Fails when the texts are equal or both are null.
void lcut_str_nequal(lcut_case* tc, const char* expected, const char* actual, uint32_t line,
                     const char* function, const char* file);

/// Fails with the given message, which is not a format, when condition is 0.
void lcut_assert(lcut_case* tc, const char* message, int32_t condition, uint32_t line,
                 const char* function, const char* file);

/// Fails with an empty message when condition is false.
void lcut_true(lcut_case* tc, bool condition, uint32_t line, const char* function,
               const char* file);

/// Fails with an empty message when condition is true.
void lcut_false(lcut_case* tc, bool condition, uint32_t line, const char* function,
                const char* file);

/// Sets what lcut_mock_obj returns for a symbol. LCUT_MOCK_ALWAYS as count fixes the value for
/// every later lookup. Any other count ends that and, from 1 to 2^31 - 1, queues the value count
/// times. The calling site is not used. A failed allocation ends the process with status 1.
void lcut_mock_obj_return(const char* name, uint64_t value, uint32_t line, const char* function,
                          const char* file, uint32_t type, uint32_t count);

/// Returns the fixed value of the symbol, or takes the oldest one off its queue. An unknown symbol
/// and an empty queue end the process with status 1.
uint64_t lcut_mock_obj(const char* name, uint32_t line, const char* file, uint32_t type);

#ifdef __cplusplus
}
#endif

/// The calls above with the calling site filled in.
#define LCUT_SITE __LINE__, __func__, __FILE__
#define LCUT_INT_EQUAL(tc, expected, actual) lcut_int_equal(tc, expected, actual, LCUT_SITE)
#define LCUT_INT_NEQUAL(tc, expected, actual) lcut_int_nequal(tc, expected, actual, LCUT_SITE)
#define LCUT_INT_NEAR(tc, expected, actual, delta) \
  lcut_int_near(tc, expected, actual, delta, LCUT_SITE)
#define LCUT_FLOAT_EQUAL(tc, expected, actual) lcut_float_equal(tc, expected, actual, LCUT_SITE)
#define LCUT_FLOAT_NEQUAL(tc, expected, actual) lcut_float_nequal(tc, expected, actual, LCUT_SITE)
#define LCUT_FLOAT_NEAR(tc, expected, actual, delta) \
  lcut_float_near(tc, expected, actual, delta, LCUT_SITE)
#define LCUT_STR_EQUAL(tc, expected, actual) lcut_str_equal(tc, expected, actual, LCUT_SITE)
#define LCUT_STR_NEQUAL(tc, expected, actual) lcut_str_nequal(tc, expected, actual, LCUT_SITE)
#define LCUT_ASSERT(tc, message, condition) lcut_assert(tc, message, (condition) ? 1 : 0, LCUT_SITE)
#define LCUT_TRUE(tc, condition) lcut_true(tc, condition, LCUT_SITE)
#define LCUT_FALSE(tc, condition) lcut_false(tc, condition, LCUT_SITE)
#define LCUT_MOCK_OBJ_RETURN(name, value, type, count) \
  lcut_mock_obj_return(name, value, LCUT_SITE, type, count)
#define LCUT_MOCK_OBJ(name, type) lcut_mock_obj(name, __LINE__, __FILE__, type)

#endif  // LCUT_LCUT_H_
