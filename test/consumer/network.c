/* SPDX-License-Identifier: MIT */
/* A stranger's program on an imported network: usage: network INPUT EXPECTED, files of floats in
 * this machine's order. */
#include <math.h>
#include <stdio.h>

#include "digits.h"

static int load(const char* path, float* values, size_t count) {
  FILE* file = fopen(path, "rb");
  const int whole = file != NULL && fread(values, sizeof(float), count, file) == count;
  return file != NULL && fclose(file) == 0 && whole;
}

int main(int argc, char** argv) {
  static float input[DIGITS_INPUT_ELEMENTS];
  float output[DIGITS_OUTPUT_ELEMENTS];
  float expected[DIGITS_OUTPUT_ELEMENTS];
  if (argc != 3 || !load(argv[1], input, DIGITS_INPUT_ELEMENTS) ||
      !load(argv[2], expected, DIGITS_OUTPUT_ELEMENTS)) {
    return 2;
  }
  if (digits_init() != 0 || digits_run(input, output) != 0) {
    return 1;
  }
  for (size_t i = 0; i < DIGITS_OUTPUT_ELEMENTS; ++i) {
    if (!(fabsf(output[i] - expected[i]) < 1e-5f)) {
      printf("output %zu is %g instead of %g\n", i, (double)output[i], (double)expected[i]);
      return 1;
    }
  }
  return 0;
}
