/* SPDX-License-Identifier: MIT */
/* Handwritten digits: how many images of the test half an imported network names right.
 *
 * digits.h is what nnlib-import makes of one of the models here when the example is built; the
 * images are of people whose writing the network was not trained on (train.py).
 */
#include "digits.h"

#include <stdio.h>

#include "test_half.h"

enum { PIXELS = DIGITS_INPUT_ELEMENTS, CLASSES = DIGITS_OUTPUT_ELEMENTS };

static int largest(const float* scores) {
  int best = 0;
  for (int i = 1; i < CLASSES; ++i) {
    if (scores[i] > scores[best]) {
      best = i;
    }
  }
  return best;
}

int main(void) {
  unsigned right = 0;
  const unsigned count = sizeof(test_labels);

  if (digits_init() != 0) {
    return 1;
  }
  for (unsigned n = 0; n < count; ++n) {
    float image[PIXELS], scores[CLASSES];
    for (unsigned i = 0; i < PIXELS; ++i) {
      image[i] = (float)test_images[n * PIXELS + i] / 16.0f;
    }
    if (digits_run(image, scores) != 0) {
      return 1;
    }
    right += largest(scores) == test_labels[n];
  }
  printf("%u of %u right\n", right, count);
  return 0;
}
