/* SPDX-License-Identifier: MIT */
#include <lcut/lcut.h>
#include <nnlib.h>

static float data[2] = {1.0f, -1.0f};

static void forward_negate(ai_layer* layer) {
  float* values = ai_tensor_data(ai_tensor_chain_output(layer->tensor_chain, 0));
  values[0] = -values[0];
}

AI_STATIC_TENSOR(x, AI_ARRAY_FORMAT_FLOAT, 1, 2, 1, 1, data);
AI_STATIC_CHAIN(chain, AI_LIST(&x), AI_LIST(&x), AI_EMPTY_LIST, AI_EMPTY_LIST);
static ai_layer negate = AI_LAYER(AI_LAYER_TYPE_NL, forward_negate, &chain, NULL);
AI_STATIC_NETWORK(network, AI_IO_LIST(&x), AI_IO_LIST(&x), &negate);

static void tc_forward(lcut_case* tc, void* unused) {
  (void)unused;
  ai_layers_forward_all(&network);
  LCUT_TRUE(tc, data[0] < 0.0f);
}

int main(void) {
  lcut_results results = {0};
  lcut_test* test = NULL;
  lcut_suite* suite = NULL;
  lcut_test_init(&test, "consumer", NULL, NULL);
  lcut_ts_init(&suite, "installed package", NULL, NULL);
  lcut_tc_add(suite, "forward", tc_forward, NULL, NULL, NULL);
  lcut_ts_add(test, suite);
  lcut_test_run(test, NULL);
  lcut_test_report(test, &results);
  lcut_test_destroy(&test);
  return (int)results.failed_cases + (ai_platform_runtime_get_version() != 0x104u);
}
