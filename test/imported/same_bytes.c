/* SPDX-License-Identifier: MIT */
/* An imported network gives the bytes here that it gave where it was imported, or with TOLERANCE
 * numbers that are no further away. */
#include <stdint.h>
#include <stdio.h>
#include <string.h>

#include "network.h"

#include "expected.h"

static Element input[NETWORK_INPUT_ELEMENTS], output[NETWORK_OUTPUT_ELEMENTS];

_Static_assert(sizeof(input) == sizeof(expected_input), "the input is that of the model");
_Static_assert(sizeof(output) == sizeof(expected_output), "the output is that of the model");

static int same(const Element* here, const void* there) {
#if defined(TOLERANCE)
  Element value;
  memcpy(&value, there, sizeof(value));
  return *here - value <= TOLERANCE && value - *here <= TOLERANCE;
#else
  return memcmp(here, there, sizeof(*here)) == 0;
#endif
}

int main(void) {
  memcpy(input, expected_input, sizeof(input));
  if (network_init() != 0 || network_run(input, output) != 0) {
    printf("the network does not run\n");
    return 1;
  }
  for (unsigned i = 0; i < NETWORK_OUTPUT_ELEMENTS; ++i) {
    if (!same(&output[i], &expected_output[i])) {
      printf("element %u of %u differs\n", i, (unsigned)NETWORK_OUTPUT_ELEMENTS);
      return 1;
    }
  }
  return 0;
}
