/* SPDX-License-Identifier: MIT */
/* Runs every suite once and prints the report. */
#ifndef TEST_TEST_LCUT_MAIN_H
#define TEST_TEST_LCUT_MAIN_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Returns the number of failed cases. The arguments are ignored. */
uint32_t test_lcut_main(int argc, char** argv);

#ifdef __cplusplus
}
#endif

#endif
