/* SPDX-License-Identifier: MIT */
/* A stranger's program: a network that needs the math library, and functions of the application in
 * the place of the library's. */
#include <check/ai_network_check.h>
#include <lcut/lcut.h>
#include <nnlib.h>
#include <setjmp.h>

static float data[2] = {1.0f, -1.0f};

AI_STATIC_TENSOR(x, AI_ARRAY_FORMAT_FLOAT | AI_FORMAT_FLAG_COPY, 1, 2, 1, 1, data);
AI_STATIC_CHAIN(chain, AI_LIST(&x), AI_LIST(&x), AI_EMPTY_LIST, AI_EMPTY_LIST);
static ai_layer tanh_layer = AI_LAYER(AI_LAYER_TYPE_NL, forward_tanh, &chain, NULL);
AI_STATIC_NETWORK(network, AI_IO_LIST(&x), AI_IO_LIST(&x), &tanh_layer);

static void tc_forward(lcut_case* tc, void* unused) {
  (void)unused;
  ai_layers_forward_all(&network);
  LCUT_FLOAT_NEAR(tc, 0.761594f, data[0], 1e-6f);
  LCUT_FLOAT_NEAR(tc, -0.761594f, data[1], 1e-6f);
}

static jmp_buf stopped;

void core_fault(void) {
  longjmp(stopped, 'f');
}
void core_hang(void) {
  longjmp(stopped, 'h');
}

static void tc_stops(lcut_case* tc, void* unused) {
  static const ai_tensor_chain none = {0, NULL};
  static ai_layer without_tensors = AI_LAYER(AI_LAYER_TYPE_NL, forward_tanh, &none, NULL);
  volatile int way = 0;
  (void)unused;
  way = setjmp(stopped);
  if (way == 0) {
    forward_tanh(&without_tensors);
  }
  LCUT_INT_EQUAL(tc, 'f', way);
  way = setjmp(stopped);
  if (way == 0) {
    core_hang();
  }
  LCUT_INT_EQUAL(tc, 'h', way);
}

/* The application's own use of the timer that the library takes for its clock. */
void SysTick_Handler(void);
void SysTick_Handler(void) {}

static void tc_timer(lcut_case* tc, void* unused) {
  core_timer timer;
  (void)unused;
  LCUT_INT_EQUAL(tc, 1, core_timer_init(&timer, "own"));
  core_timer_start(&timer);
  core_timer_stop(&timer);
  LCUT_TRUE(tc, timer.elapsed < 1000000u);
}

static void tc_check(lcut_case* tc, void* unused) {
  (void)unused;
  LCUT_TRUE(tc, ai_network_check(&network, NULL, NULL) == 0);
}

int main(void) {
  lcut_results results = {0};
  lcut_test* test = NULL;
  lcut_suite* suite = NULL;
  lcut_test_init(&test, "consumer", NULL, NULL);
  lcut_ts_init(&suite, "installed package", NULL, NULL);
  lcut_tc_add(suite, "forward", tc_forward, NULL, NULL, NULL);
  lcut_tc_add(suite, "stops", tc_stops, NULL, NULL, NULL);
  lcut_tc_add(suite, "timer", tc_timer, NULL, NULL, NULL);
  lcut_tc_add(suite, "check", tc_check, NULL, NULL, NULL);
  lcut_ts_add(test, suite);
  lcut_test_run(test, NULL);
  lcut_test_report(test, &results);
  lcut_test_destroy(&test);
  return (int)results.failed_cases + (ai_platform_runtime_get_version() != 0x104u);
}
