/* SPDX-License-Identifier: MIT */
/* A small convolutional network in float: is there a disc, a ring or a cross in a 16 x 12 picture?
 *
 *   convolution 3x3 with relu and max pooling 2x2   16 x 12 x 1 -> 8 x 6 x 6
 *   depthwise convolution 3x3, stride 2, with relu           -> 4 x 3 x 6
 *   dense                                                    -> 3
 *   softmax
 *
 * All layers are the library's. tools/reference/shapes.py made the weights; shapes_int8.c is the
 * same network in 8-bit integers.
 */
#include "examples/weights/shapes_float.h"

#include "examples/shapes.h"

/* --- the network ----------------------------------------------------------------------------- */

/* Two buffers take turns: a layer reads one and writes the other. */
static float pooled_data[POOLED_WIDTH * POOLED_HEIGHT * FILTERS];
static float small_data[SMALL_WIDTH * SMALL_HEIGHT * FILTERS];
static float conv_rows[POOL * WIDTH * FILTERS]; /* the rows of one pooling window */

/* Dimensions: 1, channels, width, height; of weights C_in, width, height, C_out. */
AI_STATIC_TENSOR(picture, AI_ARRAY_FORMAT_FLOAT, 1, 1, WIDTH, HEIGHT, NULL);
AI_STATIC_TENSOR(conv_w, AI_ARRAY_FORMAT_FLOAT, 1, KERNEL, KERNEL, FILTERS, conv_weights);
AI_STATIC_TENSOR(conv_b, AI_ARRAY_FORMAT_FLOAT, 1, FILTERS, 1, 1, conv_bias);
AI_STATIC_TENSOR(rows, AI_ARRAY_FORMAT_FLOAT, 1, FILTERS, WIDTH, POOL, conv_rows);
AI_STATIC_TENSOR(pooled, AI_ARRAY_FORMAT_FLOAT, 1, FILTERS, POOLED_WIDTH, POOLED_HEIGHT,
                 pooled_data);
AI_STATIC_TENSOR(depthwise_w, AI_ARRAY_FORMAT_FLOAT, FILTERS, KERNEL, KERNEL, 1, depthwise_weights);
AI_STATIC_TENSOR(depthwise_b, AI_ARRAY_FORMAT_FLOAT, 1, FILTERS, 1, 1, depthwise_bias);
AI_STATIC_TENSOR(small, AI_ARRAY_FORMAT_FLOAT, 1, FILTERS, SMALL_WIDTH, SMALL_HEIGHT, small_data);
/* The same memory as one row of features: a dense layer works on channels. */
AI_STATIC_TENSOR(features, AI_ARRAY_FORMAT_FLOAT, 1, FEATURES, 1, 1, small_data);
AI_STATIC_TENSOR(dense_w, AI_ARRAY_FORMAT_FLOAT, FEATURES, CLASSES, 1, 1, dense_weights);
AI_STATIC_TENSOR(dense_b, AI_ARRAY_FORMAT_FLOAT, 1, CLASSES, 1, 1, dense_bias);
AI_STATIC_TENSOR(scores, AI_ARRAY_FORMAT_FLOAT, 1, CLASSES, 1, 1, pooled_data);
AI_STATIC_TENSOR(shares, AI_ARRAY_FORMAT_FLOAT, 1, CLASSES, 1, 1, NULL);

AI_STATIC_CHAIN(softmax_chain, AI_LIST(&scores), AI_LIST(&shares), AI_EMPTY_LIST, AI_EMPTY_LIST);
AI_STATIC_CHAIN(dense_chain, AI_LIST(&features), AI_LIST(&scores), AI_LIST(&dense_w, &dense_b),
                AI_EMPTY_LIST);
AI_STATIC_CHAIN(depthwise_chain, AI_LIST(&pooled), AI_LIST(&small),
                AI_LIST(&depthwise_w, &depthwise_b), AI_EMPTY_LIST);
AI_STATIC_CHAIN(conv_chain, AI_LIST(&picture), AI_LIST(&pooled), AI_LIST(&conv_w, &conv_b),
                AI_LIST(&rows));

static ai_layer softmax = AI_LAYER(AI_LAYER_TYPE_SM, forward_sm, &softmax_chain, NULL);
static ai_layer dense = AI_LAYER(AI_LAYER_TYPE_DENSE, forward_dense, &dense_chain, &softmax);
static ai_layer_conv2d depthwise = {
    .base = AI_LAYER(AI_LAYER_TYPE_CONV2D, forward_conv2d, &depthwise_chain, &dense),
    .groups = FILTERS,
    .nl_func = nl_func_relu_array_f32,
    .filter_stride = {2, 2},
    .dilation = {1, 1},
    .filter_pad = {AI_DIMS_WORD(AI_SHAPE_TYPE, 4), (uint32_t[]){1, 1, 1, 1}},
};
static ai_layer_conv2d_nl_pool conv = {
    .base =
        {
            .base = AI_LAYER(AI_LAYER_TYPE_OPTIMIZED_CONV2D, forward_conv2d_nl_pool, &conv_chain,
                             &depthwise.base),
            .groups = 1,
            .nl_func = nl_func_relu_array_f32,
            .filter_stride = {1, 1},
            .dilation = {1, 1},
            .filter_pad = {AI_DIMS_WORD(AI_SHAPE_TYPE, 4), (uint32_t[]){1, 1, 1, 1}},
        },
    .pool_size = {POOL, POOL},
    .pool_stride = {POOL, POOL},
    .pool_pad = {AI_DIMS_WORD(AI_SHAPE_TYPE, 4), (uint32_t[]){0, 0, 0, 0}},
    .pool_func = pool_func_mp_array_f32,
};
AI_STATIC_NETWORK(network, AI_IO_LIST(&picture), AI_IO_LIST(&shares), &conv.base.base);

int main(void) {
  if (ai_conv2d_nl_pool_scratch_size(&conv) > sizeof(conv_rows) / sizeof(*conv_rows)) {
    printf("scratch is too small\n");
    return 1;
  }
  return classify_pictures(&network);
}
