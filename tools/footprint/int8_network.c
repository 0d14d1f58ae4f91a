/* SPDX-License-Identifier: MIT */
/* A whole int8 network, float at both ends: convolution, depthwise, pooling, dense.
 * The exit status says whether it computes right. */
#include "nnlib.h"

enum { SIDE = 4, CHANNELS = 4, CLASSES = 2 };

static const float one[] = {1, 1, 1, 1};
static const int8_t zero[CHANNELS] = {0};
static const int8_t filters[CHANNELS][9] = {{1, 1, 1, 1, 1, 1, 1, 1, 1},
                                            {2, 2, 2, 2, 2, 2, 2, 2, 2},
                                            {3, 3, 3, 3, 3, 3, 3, 3, 3},
                                            {4, 4, 4, 4, 4, 4, 4, 4, 4}};
static const int8_t middles[9][CHANNELS] = {[4] = {1, 1, 1, 1}};
static const int8_t products[CLASSES][CHANNELS] = {{1, 1, 1, 1}, {1, -1, 1, -1}};
static const int32_t biases[CHANNELS] = {0, 5};

static int8_t front[SIDE * SIDE * CHANNELS], back[SIDE * SIDE * CHANNELS];
static uint32_t scratch_data[64];

AI_STATIC_INTQ(unit, 1, one, zero);
AI_STATIC_INTQ(units, CHANNELS, one, zero);

AI_STATIC_TENSOR(picture, AI_ARRAY_FORMAT_FLOAT, 1, 1, SIDE, SIDE, NULL);
AI_STATIC_TENSOR_Q(in, AI_ARRAY_FORMAT_S8, 1, 1, SIDE, SIDE, front, &unit);
AI_STATIC_TENSOR_Q(conv_w, AI_ARRAY_FORMAT_S8, 1, 3, 3, CHANNELS, filters, &units);
AI_STATIC_TENSOR_Q(map, AI_ARRAY_FORMAT_S8, 1, CHANNELS, SIDE, SIDE, back, &unit);
AI_STATIC_TENSOR_Q(depthwise_w, AI_ARRAY_FORMAT_S8, CHANNELS, 3, 3, 1, middles, &units);
AI_STATIC_TENSOR_Q(second, AI_ARRAY_FORMAT_S8, 1, CHANNELS, SIDE, SIDE, front, &unit);
AI_STATIC_TENSOR_Q(pixel, AI_ARRAY_FORMAT_S8, 1, CHANNELS, 1, 1, back, &unit);
AI_STATIC_TENSOR_Q(dense_w, AI_ARRAY_FORMAT_S8, CHANNELS, CLASSES, 1, 1, products, &units);
AI_STATIC_TENSOR(bias, AI_ARRAY_FORMAT_S32, 1, CHANNELS, 1, 1, biases);
AI_STATIC_TENSOR_Q(sums, AI_ARRAY_FORMAT_S8, 1, CLASSES, 1, 1, front, &unit);
AI_STATIC_TENSOR(scores, AI_ARRAY_FORMAT_FLOAT, 1, CLASSES, 1, 1, NULL);
AI_STATIC_TENSOR(scratch, AI_ARRAY_FORMAT_U8, 1, sizeof(scratch_data), 1, 1, scratch_data);

AI_STATIC_CHAIN(to_int8_chain, AI_LIST(&picture), AI_LIST(&in), AI_EMPTY_LIST, AI_EMPTY_LIST);
AI_STATIC_CHAIN(conv_chain, AI_LIST(&in), AI_LIST(&map), AI_LIST(&conv_w), AI_LIST(&scratch));
AI_STATIC_CHAIN(depthwise_chain, AI_LIST(&map), AI_LIST(&second), AI_LIST(&depthwise_w),
                AI_LIST(&scratch));
AI_STATIC_CHAIN(average_chain, AI_LIST(&second), AI_LIST(&pixel), AI_EMPTY_LIST, AI_EMPTY_LIST);
AI_STATIC_CHAIN(dense_chain, AI_LIST(&pixel), AI_LIST(&sums), AI_LIST(&dense_w, &bias),
                AI_LIST(&scratch));
AI_STATIC_CHAIN(to_float_chain, AI_LIST(&sums), AI_LIST(&scores), AI_EMPTY_LIST, AI_EMPTY_LIST);

#define PADS(pad)                                  \
  {                                                \
    AI_DIMS_WORD(AI_SHAPE_TYPE, 4), (uint32_t[]) { \
      pad, pad, pad, pad                           \
    }                                              \
  }
#define CONVOLUTION(chain, next, channel_groups)                                                 \
  {                                                                                              \
    .base = AI_LAYER(AI_LAYER_TYPE_CONV2D, forward_conv2d_integer, chain, next),                 \
    .groups = channel_groups, .filter_stride = {1, 1}, .dilation = {1, 1}, .filter_pad = PADS(1) \
  }
static ai_layer to_float = AI_LAYER(AI_LAYER_TYPE_NL, node_convert, &to_float_chain, NULL);
static ai_layer dense =
    AI_LAYER(AI_LAYER_TYPE_DENSE, forward_dense_integer, &dense_chain, &to_float);
static ai_layer_pool average = {
    .base = AI_LAYER(AI_LAYER_TYPE_POOL, forward_ap_integer, &average_chain, &dense),
    .pool_size = {SIDE, SIDE},
    .pool_stride = {SIDE, SIDE},
    .pool_pad = PADS(0),
};
static ai_layer_conv2d depthwise = CONVOLUTION(&depthwise_chain, &average.base, CHANNELS);
static ai_layer_conv2d conv = CONVOLUTION(&conv_chain, &depthwise.base, 1);
static ai_layer to_int8 = AI_LAYER(AI_LAYER_TYPE_NL, node_convert, &to_int8_chain, &conv.base);
AI_STATIC_NETWORK(network, AI_IO_LIST(&picture), AI_IO_LIST(&scores), &to_int8);

int main(void) {
  static float pixels[SIDE * SIDE], result[CLASSES];
  const ai_network_params params = {{0}, {0}};
  const ai_buffer from = {AI_BUFFER_FORMAT_FLOAT, 1, SIDE, SIDE, 1, pixels, NULL};
  const ai_buffer to = {AI_BUFFER_FORMAT_FLOAT, 1, 1, 1, CLASSES, result, NULL};
  ai_handle handle = NULL;
  for (int i = 0; i < SIDE * SIDE; ++i) {
    pixels[i] = 1.2f;
  }
  ai_platform_network_create(&handle, NULL, &network, AI_INTERFACE_API_VERSION);
  ai_platform_network_init(handle, &params);
  ai_platform_network_process(handle, &from, &to);
  return ai_platform_network_get_error(handle) != 0 || result[0] != 63 || result[1] != -8;
}
