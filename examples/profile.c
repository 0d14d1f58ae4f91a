/* SPDX-License-Identifier: MIT */
/* Where a network spends its time: runs a small one layer by layer and prints a table.
 *
 * The clock is the application's. Here it is the cycle counter of a Cortex-M3 and above where that
 * counts, else SysTick (an emulator has only that), the cycle counter of a RISC-V core without an
 * operating system, and on a host the monotonic clock (on Windows the time of day).
 */
#define _POSIX_C_SOURCE 199309L /* for clock_gettime */
#include <stdio.h>

#include "nnlib.h"
#include "profile/ai_profile.h"

#if defined(__ARM_ARCH_PROFILE) && __ARM_ARCH_PROFILE == 'M'

#define UNIT "cycles"
#define REGISTER(address) (*(volatile uint32_t*)(address))
#define DEBUG_CONTROL REGISTER(0xE000EDFCu) /* bit 24: trace and its counters on */
#define DWT_CONTROL REGISTER(0xE0001000u)   /* bit 0: cycle counter on */
#define DWT_CYCLES REGISTER(0xE0001004u)
#define SYSTICK_CONTROL REGISTER(0xE000E010u) /* 5: counts processor cycles, no interrupt */
#define SYSTICK_RELOAD REGISTER(0xE000E014u)
#define SYSTICK_VALUE REGISTER(0xE000E018u) /* 24 bits, downwards */

static uint32_t now(void) {
  static uint32_t sum, last;
#if __ARM_ARCH >= 7
  if (DWT_CYCLES != 0) {
    return DWT_CYCLES;
  }
#endif
  const uint32_t value = SYSTICK_VALUE;
  sum += (last - value) & 0xFFFFFFu;
  last = value;
  return sum;
}

static void start_clock(void) {
#if __ARM_ARCH >= 7
  DEBUG_CONTROL |= 1u << 24;
  DWT_CONTROL |= 1u;
#endif
  SYSTICK_RELOAD = 0xFFFFFFu;
  SYSTICK_VALUE = 0;
  SYSTICK_CONTROL = 5;
}

#elif defined(__riscv) && !defined(__linux__)

#define UNIT "cycles"

static uint32_t now(void) {
  uint32_t cycles;
  __asm__ volatile("rdcycle %0" : "=r"(cycles));
  return cycles;
}

static void start_clock(void) {}

#else

#include <time.h>

#define UNIT "ns"

static uint32_t now(void) {
  struct timespec time;
#if defined(_WIN32)
  timespec_get(&time, TIME_UTC);
#else
  clock_gettime(CLOCK_MONOTONIC, &time);
#endif
  return (uint32_t)time.tv_sec * 1000000000u + (uint32_t)time.tv_nsec;
}

static void start_clock(void) {}

#endif

enum { FEATURES = 64, UNITS = 32, CLASSES = 10, RUNS = 5 };

static const float hidden_weights[UNITS * FEATURES] = {0};
static const float scores_weights[CLASSES * UNITS] = {0};
static float hidden_data[UNITS], scores_data[CLASSES];

AI_STATIC_TENSOR(x, AI_ARRAY_FORMAT_FLOAT, 1, FEATURES, 1, 1, NULL);
AI_STATIC_TENSOR(hidden_w, AI_ARRAY_FORMAT_FLOAT, FEATURES, UNITS, 1, 1, hidden_weights);
AI_STATIC_TENSOR(hidden, AI_ARRAY_FORMAT_FLOAT, 1, UNITS, 1, 1, hidden_data);
AI_STATIC_TENSOR(scores_w, AI_ARRAY_FORMAT_FLOAT, UNITS, CLASSES, 1, 1, scores_weights);
AI_STATIC_TENSOR(scores, AI_ARRAY_FORMAT_FLOAT, 1, CLASSES, 1, 1, scores_data);
AI_STATIC_TENSOR(y, AI_ARRAY_FORMAT_FLOAT, 1, CLASSES, 1, 1, NULL);

AI_STATIC_CHAIN(softmax_chain, AI_LIST(&scores), AI_LIST(&y), AI_EMPTY_LIST, AI_EMPTY_LIST);
AI_STATIC_CHAIN(scores_chain, AI_LIST(&hidden), AI_LIST(&scores), AI_LIST(&scores_w),
                AI_EMPTY_LIST);
AI_STATIC_CHAIN(tanh_chain, AI_LIST(&hidden), AI_LIST(&hidden), AI_EMPTY_LIST, AI_EMPTY_LIST);
AI_STATIC_CHAIN(hidden_chain, AI_LIST(&x), AI_LIST(&hidden), AI_LIST(&hidden_w), AI_EMPTY_LIST);

static ai_layer softmax_layer = AI_LAYER(AI_LAYER_TYPE_SM, forward_sm, &softmax_chain, NULL);
static ai_layer scores_layer =
    AI_LAYER(AI_LAYER_TYPE_DENSE, forward_dense, &scores_chain, &softmax_layer);
static ai_layer_nl tanh_layer = {
    AI_LAYER(AI_LAYER_TYPE_NL, forward_tanh, &tanh_chain, &scores_layer), NULL};
static ai_layer hidden_layer =
    AI_LAYER(AI_LAYER_TYPE_DENSE, forward_dense, &hidden_chain, &tanh_layer.base);
AI_STATIC_NETWORK(network, AI_IO_LIST(&x), AI_IO_LIST(&y), &hidden_layer);

static void put(const char* text, void* file) {
  fputs(text, (FILE*)file);
}

int main(void) {
  static float in_data[FEATURES];
  float out_data[CLASSES];
  const ai_buffer in = {AI_BUFFER_FORMAT_FLOAT, 1, 1, 1, FEATURES, in_data, NULL};
  const ai_buffer out = {AI_BUFFER_FORMAT_FLOAT, 1, 1, 1, CLASSES, out_data, NULL};
  const ai_network_params params = {{0}, {0}};
  ai_profile_entry entries[8];
  ai_handle handle = NULL;

  if (ai_platform_network_create(&handle, NULL, &network, AI_INTERFACE_API_VERSION) != 0 ||
      ai_platform_network_init(handle, &params) == NULL ||
      ai_platform_network_process(handle, &in, &out) != 1) {
    return 1;
  }
  start_clock();
  const uint32_t count = ai_profile_run(&network, now, RUNS, entries, 8);
  ai_profile_print(entries, count, UNIT, put, stdout);
  return ai_platform_network_destroy(handle) != NULL;
}
