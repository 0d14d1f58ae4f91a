// SPDX-License-Identifier: MIT
#include "test/suites.h"

// NNLIB_SUITES_FILE has some of these lines.
#ifndef NNLIB_SUITES_FILE
#define NNLIB_SUITES_FILE "test/suites.def"
#endif

extern "C" {
#define SUITE(suite) void suite(lcut_test* test);
#include NNLIB_SUITES_FILE
#undef SUITE
}

#define SUITE(suite) suite,
const suite_registration suite_registrations[] = {
#include NNLIB_SUITES_FILE
};
#undef SUITE
const size_t suite_registration_count = sizeof(suite_registrations) / sizeof(*suite_registrations);
