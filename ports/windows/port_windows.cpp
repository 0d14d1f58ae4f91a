// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <io.h>
#include <stdio.h>
#include <windows.h>

#include "ports/port.h"

void port_init(void) {
  _setmode(_fileno(stdout), _O_BINARY);
}

int64_t port_ticks(void) {
  LARGE_INTEGER ticks;
  QueryPerformanceCounter(&ticks);
  return ticks.QuadPart;
}

int64_t port_ticks_per_second(void) {
  LARGE_INTEGER frequency;
  QueryPerformanceFrequency(&frequency);
  return frequency.QuadPart;
}

void port_pin_to_first_processor(void) {
  SetThreadAffinityMask(GetCurrentThread(), 1);
}

// An exit status has 32 bits here.
int port_exit_status(uint32_t count) {
  return static_cast<int>(count);
}
