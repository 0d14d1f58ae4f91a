/* SPDX-License-Identifier: MIT */
/* Handwritten digits: how many images of the test half an imported network names right, and a hash
 * of all scores, which is the same on every machine.
 *
 * digits.h is what nnlib-import makes of one of the models here when the example is built; the
 * images are of people whose writing the network was not trained on (train.py).
 */
#include "digits.h"

#include <stdio.h>
#include <string.h>

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

/* FNV-1a of the numbers' bits. */
static uint32_t hashed(uint32_t hash, const float* scores) {
  for (int i = 0; i < CLASSES; ++i) {
    uint32_t bits;
    memcpy(&bits, &scores[i], sizeof(bits));
    for (int k = 0; k < 4; ++k) {
      hash = (hash ^ (bits >> 8 * k & 255)) * 16777619u;
    }
  }
  return hash;
}

int main(void) {
  unsigned right = 0;
  uint32_t hash = 2166136261u;
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
    hash = hashed(hash, scores);
  }
  printf("%u of %u right, scores %08lx\n", right, count, (unsigned long)hash);
  return 0;
}
