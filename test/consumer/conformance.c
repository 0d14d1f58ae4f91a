/* SPDX-License-Identifier: MIT */
/* The conformance suites in a program of one's own; a board would first set its clocks and its
 * console up. */
#include "nnlib.h"
#include "test/test_lcut_main.h"

int main(void) {
  core_init();
  return (int)test_lcut_main(0, NULL);
}
