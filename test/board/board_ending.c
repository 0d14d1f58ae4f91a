/* SPDX-License-Identifier: MIT */
/* Ends in the way that ENDING names; the runner must report the status that belongs to it. */
#include <stdint.h>
#include <stdlib.h>

#include "core/core_common.h"

static volatile uintptr_t null = 0; /* volatile: unknown to the compiler */
static uint32_t words[2];

static int overflow(volatile char* above) {
  volatile char frame[256];
  frame[0] = above[0];
  return overflow(frame) + frame[0];
}

int main(void) {
  static const int way = ENDING;
  volatile char top = 0;
  switch (way) {
    case 'a':
      abort();
    case 'f':
      core_fault();
    case 'm':
      return (int)*(volatile uint32_t*)((null + (uintptr_t)words) | 1u);
    case 'n':
      *(volatile uint32_t*)null = 5;
      return 0;
    case 'o':
      return overflow(&top);
    default:
      return way;
  }
}
