/* SPDX-License-Identifier: MIT */
/* Prints, for each layer function that takes heap, the bytes that one call asks malloc for. Link
 * with --wrap=malloc. */
#include <stdio.h>
#include <stdlib.h>

#include "nnlib.h"

enum { FEATURES = 8, UNITS = 16, STEPS = 4 };

static size_t bytes;

void* __real_malloc(size_t size);
void* __wrap_malloc(size_t size);

void* __wrap_malloc(size_t size) {
  bytes += size;
  return __real_malloc(size);
}

/* Of the largest weight tensor's size; the values do not matter. */
static const float zeros[4 * UNITS * UNITS];
static float states[STEPS * UNITS];

AI_STATIC_TENSOR(in, AI_ARRAY_FORMAT_FLOAT, 1, FEATURES, 1, STEPS, zeros);
AI_STATIC_TENSOR(out, AI_ARRAY_FORMAT_FLOAT, 1, UNITS, 1, STEPS, states);
AI_STATIC_TENSOR(weights, AI_ARRAY_FORMAT_FLOAT, UNITS, UNITS, 1, 4, zeros);
AI_STATIC_CHAIN(chain, AI_LIST(&in), AI_LIST(&out), AI_LIST(&weights, &weights, &weights, &weights),
                AI_EMPTY_LIST);

static ai_layer_lstm lstm = {.base = AI_LAYER(AI_LAYER_TYPE_LSTM, forward_lstm, &chain, NULL),
                             .n_units = UNITS,
                             .out_activation = ai_math_hard_sigmoid};
static ai_layer_gru gru = {.base = AI_LAYER(AI_LAYER_TYPE_GRU, forward_gru, &chain, NULL),
                           .n_units = UNITS};

static void print_heap(const char* name, ai_layer_forward forward, ai_layer* layer) {
  bytes = 0;
  forward(layer);
  printf("%s %u\n", name, (unsigned)bytes);
}

int main(void) {
  print_heap("forward_lstm", forward_lstm, &lstm.base);
  print_heap("forward_gru", forward_gru, &gru.base);
  print_heap("_forward_gru_after", _forward_gru_after, &gru.base);
  return 0;
}
