/* SPDX-License-Identifier: MIT */
/* Records that declare_test declares once more in C++. */
#include "core/ai_declare.h"

static const float scale[2] = {0.5f, 0.25f};
static const int8_t zeropoint[2] = {-3, 4};
static int8_t data[2 * 3 * 5 * 7];

static void forward(ai_layer* layer) {
  (void)layer;
}

AI_STATIC_INTQ(quantization, 2, scale, zeropoint);
AI_STATIC_TENSOR(numbers, AI_ARRAY_FORMAT_FLOAT | AI_FORMAT_FLAG_COPY, 1, 3, 5, 7, NULL);
AI_STATIC_TENSOR(fraction, AI_ARRAY_FORMAT_Q15, 2, 3, 1, 4, NULL);
AI_STATIC_TENSOR(nibbles, AI_ARRAY_FORMAT_U4, 3, 3, 5, 7, NULL);
AI_STATIC_TENSOR_Q(integer, AI_ARRAY_FORMAT_S8, 2, 3, 5, 7, data, &quantization);
AI_STATIC_TENSOR_FLAGS(fixed, AI_ARRAY_FORMAT_MAKE_Q(8, 0), 2, 3, 5, 7, data, NULL,
                       AI_TENSOR_FLAGS_FIXED);
AI_STATIC_CHAIN(chain, AI_LIST(&numbers, &fraction), AI_LIST(&nibbles), AI_LIST(&integer, NULL),
                AI_EMPTY_LIST);
static ai_layer last = AI_LAYER(AI_LAYER_TYPE_NL, forward, &chain, NULL);
static ai_layer first = AI_LAYER(AI_LAYER_TYPE_DENSE, forward, &chain, &last);
AI_STATIC_NETWORK(network, AI_IO_LIST(&numbers, &fixed), AI_IO_LIST(&fraction), &first);

const ai_tensor* const tensors_in_c[5] = {&numbers, &fraction, &nibbles, &integer, &fixed};
const ai_network* const network_in_c = &network;
