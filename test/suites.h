/* SPDX-License-Identifier: MIT */
/* The suites of the conformance program, in the order in which they run. */
#ifndef TEST_SUITES_H
#define TEST_SUITES_H

#include <stddef.h>

#include "lcut/lcut.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Creates one suite, adds its cases and attaches it to the test. */
typedef void (*suite_registration)(lcut_test* test);

extern const suite_registration suite_registrations[];
extern const size_t suite_registration_count;

#ifdef __cplusplus
}
#endif

#endif
