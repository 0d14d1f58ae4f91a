/* SPDX-License-Identifier: MIT */
/* All that the emulated board needs to start the C library. */
#include <stdint.h>

void _start(void);

typedef struct vector_table {
  uintptr_t stack;
  void (*reset)(void);
} vector_table;

__attribute__((section(".vectors"), used)) static const vector_table vectors = {0x20400000, _start};
