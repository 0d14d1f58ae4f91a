/* SPDX-License-Identifier: MIT */
/* A microsecond timer. */
#ifndef NNLIB_CORE_CORE_BENCHMARK_H
#define NNLIB_CORE_CORE_BENCHMARK_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct core_timer {
  const char* name; /* printed with the time; never null after core_timer_init */
  uint32_t start;   /* microseconds, the low 32 bits of the clock */
  uint32_t elapsed; /* microseconds of all start/stop pairs; wraps after about 71.6 minutes */
} core_timer;

/* Zeroes the timer and names it ("" for null). The first call in the process pins the calling
 * thread to processor 0 and sets the clock up; start and stop need that. The clock must count at
 * 1 MHz or more; a rate that is no whole number of MHz is cut down to one, which makes readings
 * slightly long. All return 1, or 0 for a null timer. */
int32_t core_timer_init(core_timer* timer, const char* name);
int32_t core_timer_reset(core_timer* timer); /* keeps the name */
int32_t core_timer_start(core_timer* timer);

/* Adds the time since the start to elapsed; a null timer is ignored. */
void core_timer_stop(core_timer* timer);

/* Prints the time between two readings taken back to back; returns 0. */
int32_t core_timer_main_test_unit(void);

#ifdef __cplusplus
}
#endif

#endif
