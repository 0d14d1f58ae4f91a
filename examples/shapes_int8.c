/* SPDX-License-Identifier: MIT */
/* The network of shapes_float.c in 8-bit integers: the picture is converted to int8 at one end, the
 * scores back to float at the other.
 *
 * An int8 tensor has a quantization record: the element q stands for (q - zero point) * scale.
 * Weights have a scale for each output channel and the zero point 0; a bias is int32 in units of
 * input scale * weight scale. docs/quantization.md explains the words.
 */
#include "examples/weights/shapes_int8.h"

#include "examples/shapes.h"

/* --- the network ----------------------------------------------------------------------------- */

AI_STATIC_INTQ(picture_intq, 1, picture_scale, picture_zero);
AI_STATIC_INTQ(conv_intq, 1, conv_scale, conv_zero);
AI_STATIC_INTQ(depthwise_intq, 1, depthwise_scale, depthwise_zero);
AI_STATIC_INTQ(dense_intq, 1, dense_scale, dense_zero);
AI_STATIC_INTQ(conv_w_intq, FILTERS, conv_scales, conv_scales_zeros);
AI_STATIC_INTQ(depthwise_w_intq, FILTERS, depthwise_scales, depthwise_scales_zeros);
AI_STATIC_INTQ(dense_w_intq, CLASSES, dense_scales, dense_scales_zeros);

/* Two buffers take turns: a layer reads one and writes the other. */
static int8_t front[WIDTH * HEIGHT];
static int8_t back[POOLED_WIDTH * POOLED_HEIGHT * FILTERS];
static int8_t conv_rows[POOL * WIDTH * FILTERS]; /* the rows of one pooling window */
static int8_t map_data[FEATURES];                /* the depthwise layer's, before relu */
static float scores_data[CLASSES];
static uint32_t kernel_scratch[64]; /* the layers' size functions tell how much */

/* Relu on integers is max(q, zero point). */
static ai_array conv_relu = {AI_ARRAY_FORMAT_S8, 1, (void*)conv_zero, (void*)conv_zero};
static ai_array depthwise_relu = {AI_ARRAY_FORMAT_S8, 1, (void*)depthwise_zero,
                                  (void*)depthwise_zero};

/* Dimensions: 1, channels, width, height; of weights C_in, width, height, C_out. */
AI_STATIC_TENSOR(picture, AI_ARRAY_FORMAT_FLOAT, 1, 1, WIDTH, HEIGHT, NULL);
AI_STATIC_TENSOR_Q(picture_q, AI_ARRAY_FORMAT_S8, 1, 1, WIDTH, HEIGHT, front, &picture_intq);
AI_STATIC_TENSOR_Q(conv_w, AI_ARRAY_FORMAT_S8, 1, KERNEL, KERNEL, FILTERS, conv_weights,
                   &conv_w_intq);
AI_STATIC_TENSOR(conv_b, AI_ARRAY_FORMAT_S32, 1, FILTERS, 1, 1, conv_bias);
AI_STATIC_TENSOR_Q(rows, AI_ARRAY_FORMAT_S8, 1, FILTERS, WIDTH, POOL, conv_rows, &conv_intq);
AI_STATIC_TENSOR_Q(pooled, AI_ARRAY_FORMAT_S8, 1, FILTERS, POOLED_WIDTH, POOLED_HEIGHT, back,
                   &conv_intq);
AI_STATIC_TENSOR_Q(depthwise_w, AI_ARRAY_FORMAT_S8, FILTERS, KERNEL, KERNEL, 1, depthwise_weights,
                   &depthwise_w_intq);
AI_STATIC_TENSOR(depthwise_b, AI_ARRAY_FORMAT_S32, 1, FILTERS, 1, 1, depthwise_bias);
AI_STATIC_TENSOR_Q(map, AI_ARRAY_FORMAT_S8, 1, FILTERS, SMALL_WIDTH, SMALL_HEIGHT, map_data,
                   &depthwise_intq);
AI_STATIC_TENSOR_Q(small, AI_ARRAY_FORMAT_S8, 1, FILTERS, SMALL_WIDTH, SMALL_HEIGHT, front,
                   &depthwise_intq);
/* The same memory as one row of features: a dense layer works on channels. */
AI_STATIC_TENSOR_Q(features, AI_ARRAY_FORMAT_S8, 1, FEATURES, 1, 1, front, &depthwise_intq);
AI_STATIC_TENSOR_Q(dense_w, AI_ARRAY_FORMAT_S8, FEATURES, CLASSES, 1, 1, dense_weights,
                   &dense_w_intq);
AI_STATIC_TENSOR(dense_b, AI_ARRAY_FORMAT_S32, 1, CLASSES, 1, 1, dense_bias);
AI_STATIC_TENSOR_Q(scores_q, AI_ARRAY_FORMAT_S8, 1, CLASSES, 1, 1, back, &dense_intq);
AI_STATIC_TENSOR(scores, AI_ARRAY_FORMAT_FLOAT, 1, CLASSES, 1, 1, scores_data);
AI_STATIC_TENSOR(shares, AI_ARRAY_FORMAT_FLOAT, 1, CLASSES, 1, 1, NULL);
AI_STATIC_TENSOR(scratch, AI_ARRAY_FORMAT_U8, 1, sizeof(kernel_scratch), 1, 1, kernel_scratch);

AI_STATIC_CHAIN(softmax_chain, AI_LIST(&scores), AI_LIST(&shares), AI_EMPTY_LIST, AI_EMPTY_LIST);
AI_STATIC_CHAIN(to_float_chain, AI_LIST(&scores_q), AI_LIST(&scores), AI_EMPTY_LIST, AI_EMPTY_LIST);
AI_STATIC_CHAIN(dense_chain, AI_LIST(&features), AI_LIST(&scores_q), AI_LIST(&dense_w, &dense_b),
                AI_LIST(&scratch));
AI_STATIC_CHAIN(depthwise_chain, AI_LIST(&pooled), AI_LIST(&small),
                AI_LIST(&depthwise_w, &depthwise_b), AI_LIST(&scratch, &map));
AI_STATIC_CHAIN(conv_chain, AI_LIST(&picture_q), AI_LIST(&pooled), AI_LIST(&conv_w, &conv_b),
                AI_LIST(&rows, &scratch));
AI_STATIC_CHAIN(to_int8_chain, AI_LIST(&picture), AI_LIST(&picture_q), AI_EMPTY_LIST,
                AI_EMPTY_LIST);

static ai_layer softmax = AI_LAYER(AI_LAYER_TYPE_SM, forward_sm, &softmax_chain, NULL);
static ai_layer to_float = AI_LAYER(AI_LAYER_TYPE_NL, node_convert, &to_float_chain, &softmax);
static ai_layer dense =
    AI_LAYER(AI_LAYER_TYPE_DENSE, forward_dense_integer, &dense_chain, &to_float);
static ai_layer_conv2d depthwise = {
    .base = AI_LAYER(AI_LAYER_TYPE_CONV2D, forward_conv2d_integer, &depthwise_chain, &dense),
    .groups = FILTERS,
    .nl_params = &depthwise_relu,
    .nl_func = nl_func_relu_array_integer,
    .filter_stride = {2, 2},
    .dilation = {1, 1},
    .filter_pad = {AI_DIMS_WORD(AI_SHAPE_TYPE, 4), (uint32_t[]){1, 1, 1, 1}},
};
static ai_layer_conv2d_nl_pool conv = {
    .base =
        {
            .base = AI_LAYER(AI_LAYER_TYPE_OPTIMIZED_CONV2D, forward_conv2d_nl_pool_integer,
                             &conv_chain, &depthwise.base),
            .groups = 1,
            .nl_params = &conv_relu,
            .nl_func = nl_func_relu_array_integer,
            .filter_stride = {1, 1},
            .dilation = {1, 1},
            .filter_pad = {AI_DIMS_WORD(AI_SHAPE_TYPE, 4), (uint32_t[]){1, 1, 1, 1}},
        },
    .pool_size = {POOL, POOL},
    .pool_stride = {POOL, POOL},
    .pool_pad = {AI_DIMS_WORD(AI_SHAPE_TYPE, 4), (uint32_t[]){0, 0, 0, 0}},
    .pool_func = pool_func_mp_array_integer,
};
static ai_layer to_int8 = AI_LAYER(AI_LAYER_TYPE_NL, node_convert, &to_int8_chain, &conv.base.base);
AI_STATIC_NETWORK(network, AI_IO_LIST(&picture), AI_IO_LIST(&shares), &to_int8);

int main(void) {
  if (ai_conv2d_nl_pool_integer_scratch_size(&conv) > sizeof(kernel_scratch) ||
      ai_conv2d_integer_scratch_size(&depthwise) > sizeof(kernel_scratch) ||
      ai_dense_integer_scratch_size(&dense) > sizeof(kernel_scratch)) {
    printf("scratch is too small\n");
    return 1;
  }
  return classify_pictures(&network);
}
