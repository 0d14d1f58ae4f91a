/* SPDX-License-Identifier: MIT */
/* A two-layer network in plain C, run over three batches: once with arrays of its own, that data is
 * copied to and from, and once working in the caller's buffers.
 *
 * The layers are the application's own; any layer function of the library is used the same way.
 */
#include <stdio.h>

#include "nnlib.h"

enum { FEATURES = 3, UNITS = 2, BATCHES = 3 };

/* --- two layer functions --------------------------------------------------------------------- */

/* y[u] = sum over f of weights[u][f] * x[f] */
static void forward_weighted_sum(ai_layer* layer) {
  const ai_tensor* x = ai_tensor_chain_input(layer->tensor_chain, 0);
  const ai_tensor* y = ai_tensor_chain_output(layer->tensor_chain, 0);
  const float* weights = ai_tensor_data(ai_tensor_chain_weights(layer->tensor_chain, 0));
  const float* in = ai_tensor_data(x);
  float* out = ai_tensor_data(y);
  for (uint32_t u = 0; u < ai_tensor_dim(y, AI_SHAPE_C); ++u) {
    float sum = 0.0f;
    for (uint32_t f = 0; f < ai_tensor_dim(x, AI_SHAPE_C); ++f) {
      sum += *weights++ * in[f];
    }
    out[u] = sum;
  }
}

/* A layer kind with a parameter of its own: y = max(x, floor). */
typedef struct floor_layer {
  ai_layer base;
  float floor;
} floor_layer;

static void forward_at_least(ai_layer* layer) {
  const float floor = ((const floor_layer*)layer)->floor;
  const ai_tensor* y = ai_tensor_chain_output(layer->tensor_chain, 0);
  const float* in = ai_tensor_data(ai_tensor_chain_input(layer->tensor_chain, 0));
  float* out = ai_tensor_data(y);
  for (uint32_t i = 0; i < ai_shape_elements(&y->shape); ++i) {
    out[i] = in[i] > floor ? in[i] : floor;
  }
}

/* --- the network, as static data ------------------------------------------------------------- */

static const float weights_data[UNITS][FEATURES] = {{0.5f, -1.0f, 2.0f}, {-0.25f, 3.0f, 1.0f}};
static float hidden_data[UNITS];

AI_STATIC_TENSOR(weights, AI_ARRAY_FORMAT_FLOAT, FEATURES, UNITS, 1, 1, weights_data);
AI_STATIC_TENSOR(hidden, AI_ARRAY_FORMAT_FLOAT, 1, UNITS, 1, 1, hidden_data);

/* io_flags tells how the network's inputs and outputs are bound, x_data and y_data are their
 * memory, or NULL when it is the caller's. */
#define DECLARE_NETWORK(name, io_flags, x_data, y_data)                                           \
  AI_STATIC_TENSOR(name##_x, AI_ARRAY_FORMAT_FLOAT | (io_flags), 1, FEATURES, 1, 1, x_data);      \
  AI_STATIC_TENSOR(name##_y, AI_ARRAY_FORMAT_FLOAT | (io_flags), 1, UNITS, 1, 1, y_data);         \
  AI_STATIC_CHAIN(name##_sum_chain, AI_LIST(&name##_x), AI_LIST(&hidden), AI_LIST(&weights),      \
                  AI_EMPTY_LIST);                                                                 \
  AI_STATIC_CHAIN(name##_floor_chain, AI_LIST(&hidden), AI_LIST(&name##_y), AI_EMPTY_LIST,        \
                  AI_EMPTY_LIST);                                                                 \
  static floor_layer name##_floor = {                                                             \
      AI_LAYER(AI_LAYER_TYPE_NL, forward_at_least, &name##_floor_chain, NULL), -1.5f};            \
  static ai_layer name##_sum =                                                                    \
      AI_LAYER(AI_LAYER_TYPE_DENSE, forward_weighted_sum, &name##_sum_chain, &name##_floor.base); \
  AI_STATIC_NETWORK(name, AI_IO_LIST(&name##_x), AI_IO_LIST(&name##_y), &name##_sum)

static float x_data[FEATURES];
static float y_data[UNITS];
DECLARE_NETWORK(copying, AI_FORMAT_FLAG_COPY, x_data, y_data);
DECLARE_NETWORK(in_place, 0, NULL, NULL);

/* --- the application ------------------------------------------------------------------------- */

static void print_buffer(const char* role, const ai_buffer* buffer) {
  printf("  %s: %s, %u x %u x %u\n", role, ai_buffer_fmt_name(buffer->format),
         (unsigned)buffer->height, (unsigned)buffer->width, (unsigned)buffer->channels);
}

static int report(ai_handle handle) {
  ai_network_report network = {0};
  if (!ai_platform_api_get_network_report(handle, &network)) {
    return 1;
  }
  printf("  runtime %u.%u.%u, %u layers\n", network.runtime_version.major,
         network.runtime_version.minor, network.runtime_version.micro, (unsigned)network.n_nodes);
  print_buffer("input", &network.inputs[0]);
  print_buffer("output", &network.outputs[0]);
  return 0;
}

static int run(const char* title, ai_network* network) {
  static float inputs[BATCHES][FEATURES] = {
      {1.0f, 2.0f, 3.0f}, {-4.0f, 0.5f, 0.25f}, {2.0f, -1.0f, -2.0f}};
  float outputs[BATCHES][UNITS] = {{0}};
  const ai_buffer in = {AI_BUFFER_FORMAT_FLOAT, BATCHES, 1, 1, FEATURES, inputs, NULL};
  const ai_buffer out = {AI_BUFFER_FORMAT_FLOAT, BATCHES, 1, 1, UNITS, outputs, NULL};
  const ai_network_params params = {{0}, {0}}; /* weights and activations are static here */
  ai_handle handle = NULL;

  printf("%s\n", title);
  const ai_error refused =
      ai_platform_network_create(&handle, NULL, network, AI_INTERFACE_API_VERSION);
  if (refused != 0 || ai_platform_network_init(handle, &params) == NULL || report(handle) != 0 ||
      ai_platform_network_process(handle, &in, &out) != BATCHES) {
    printf("  error 0x%x\n",
           (unsigned)(refused != 0 ? refused : ai_platform_network_get_error(handle)));
    return 1;
  }
  for (int batch = 0; batch < BATCHES; ++batch) {
    printf("  batch %d: %g %g\n", batch, (double)outputs[batch][0], (double)outputs[batch][1]);
  }
  return ai_platform_network_destroy(handle) != NULL;
}

int main(void) {
  const int copying_failed = run("copying", &copying);
  return run("in place", &in_place) | copying_failed;
}
