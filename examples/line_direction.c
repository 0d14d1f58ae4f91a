/* SPDX-License-Identifier: MIT */
/* A complete small classifier in fixed point: which way do the lines of an 8 x 8 picture run?
 *
 * Convolution with four line filters and relu, max pooling, a dense layer and softmax, all Q7. The
 * program fits a part with 16 KiB of RAM many times over: only the layers that it names are linked.
 */
#include <stdio.h>

#include "nnlib.h"

enum { SIDE = 8, CLASSES = 4, POOLED = 2, INK = 64 };

/* Q7 formats by their fractional bits. */
#define Q(fraction_bits) AI_ARRAY_FORMAT_MAKE_Q(8, fraction_bits)

/* --- constants ------------------------------------------------------------------------------- */

/* [filter][y][x], 4 fractional bits */
static const int8_t filters[CLASSES * 3 * 3] = {
    -8, -8, -8, 16, 17, 15, -8, -9, -7, /* horizontal */
    -8, 16, -8, -9, 15, -8, -8, 17, -7, /* vertical */
    16, -8, -9, -7, 17, -8, -8, -8, 16, /* falling */
    -9, -8, 16, -8, 16, -7, 15, -8, -8, /* rising */
};
static const int8_t filter_bias[CLASSES] = {-3, -2, -4, -3}; /* 2 fractional bits */

/* [class][pooled y][pooled x][filter], 6 fractional bits */
static const int8_t weights[CLASSES * POOLED * POOLED * CLASSES] = {
    50,  -20, -15, -14, 48,  -17, -16, -18, 52,  -15, -18, -16, 47,  -19, -14, -17,
    -18, 49,  -16, -14, -20, 51,  -15, -17, -16, 48,  -18, -15, -19, 50,  -14, -16,
    -15, -17, 52,  -20, -14, -18, 49,  -22, -17, -16, 47,  -21, -13, -15, 50,  -19,
    -16, -14, -21, 48,  -18, -15, -19, 51,  -13, -17, -22, 50,  -15, -18, -20, 49,
};
static const int8_t bias[CLASSES] = {2, -1, 3, 1}; /* 4 fractional bits */

static const char* const names[CLASSES] = {"horizontal", "vertical", "falling", "rising"};

static const char* const pictures[] = {
    /* a horizontal line */
    "        "
    "        "
    "  ##### "
    "        "
    "        "
    "        "
    "        "
    "        ",
    /* a vertical one, not quite straight */
    "   #    "
    "   #    "
    "   #    "
    "   #    "
    "    #   "
    "    #   "
    "    #   "
    "        ",
    /* two falling ones, one of them broken */
    "#    #  "
    " #    # "
    "  #    #"
    "        "
    "    #   "
    "     #  "
    "      # "
    "       #",
    /* a figure 4 */
    "    #   "
    "   #    "
    "  #     "
    " #   #  "
    "####### "
    "     #  "
    "     #  "
    "     #  ",
};
enum { PICTURES = sizeof(pictures) / sizeof(pictures[0]) };

/* --- the network ----------------------------------------------------------------------------- */

/* Two buffers take turns. */
static int8_t front[SIDE * SIDE * CLASSES];
static int8_t back[POOLED * POOLED * CLASSES];
static int16_t kernel_scratch[64];

AI_STATIC_TENSOR(picture, Q(6), 1, 1, SIDE, SIDE, NULL);
AI_STATIC_TENSOR(filters_q, Q(4), 1, 3, 3, CLASSES, filters);
AI_STATIC_TENSOR(filter_bias_q, Q(2), 1, CLASSES, 1, 1, filter_bias);
AI_STATIC_TENSOR(lines, Q(4), 1, CLASSES, SIDE, SIDE, front);
AI_STATIC_TENSOR(pooled, Q(4), 1, CLASSES, POOLED, POOLED, back);
AI_STATIC_TENSOR(flat, Q(4), 1, CLASSES* POOLED* POOLED, 1, 1, back);
AI_STATIC_TENSOR(weights_q, Q(6), CLASSES* POOLED* POOLED, CLASSES, 1, 1, weights);
AI_STATIC_TENSOR(bias_q, Q(4), 1, CLASSES, 1, 1, bias);
AI_STATIC_TENSOR_FLAGS(scores, Q(0), 1, CLASSES, 1, 1, front, NULL, AI_TENSOR_FLAGS_FIXED);
AI_STATIC_TENSOR(shares, Q(7), 1, CLASSES, 1, 1, NULL);
AI_STATIC_TENSOR(scratch, AI_ARRAY_FORMAT_S16, 1, 64, 1, 1, kernel_scratch);

AI_STATIC_CHAIN(softmax_chain, AI_LIST(&scores), AI_LIST(&shares), AI_EMPTY_LIST, AI_EMPTY_LIST);
AI_STATIC_CHAIN(dense_chain, AI_LIST(&flat), AI_LIST(&scores), AI_LIST(&weights_q, &bias_q),
                AI_LIST(&scratch));
AI_STATIC_CHAIN(pool_chain, AI_LIST(&lines), AI_LIST(&pooled), AI_EMPTY_LIST, AI_EMPTY_LIST);
AI_STATIC_CHAIN(conv_chain, AI_LIST(&picture), AI_LIST(&lines), AI_LIST(&filters_q, &filter_bias_q),
                AI_LIST(&scratch));

static ai_layer softmax = AI_LAYER(AI_LAYER_TYPE_SM, forward_sm_fixed, &softmax_chain, NULL);
static ai_layer dense = AI_LAYER(AI_LAYER_TYPE_DENSE, forward_dense_fixed, &dense_chain, &softmax);
static ai_layer_pool pool = {
    .base = AI_LAYER(AI_LAYER_TYPE_POOL, forward_mp_fixed, &pool_chain, &dense),
    .pool_size = {SIDE / POOLED, SIDE / POOLED},
    .pool_stride = {SIDE / POOLED, SIDE / POOLED},
    .pool_pad = {AI_DIMS_WORD(AI_SHAPE_TYPE, 4), (uint32_t[]){0, 0, 0, 0}},
};
static ai_layer_conv2d conv = {
    .base = AI_LAYER(AI_LAYER_TYPE_CONV2D, forward_conv2d_fixed, &conv_chain, &pool.base),
    .groups = 1,
    .nl_func = nl_func_relu_array_fixed,
    .filter_stride = {1, 1},
    .dilation = {1, 1},
    .filter_pad = {AI_DIMS_WORD(AI_SHAPE_TYPE, 4), (uint32_t[]){1, 1, 1, 1}},
};
AI_STATIC_NETWORK(network, AI_IO_LIST(&picture), AI_IO_LIST(&shares), &conv.base);

/* --- the application ------------------------------------------------------------------------- */

static int classify(ai_handle handle, const char* text) {
  static int8_t pixels[SIDE * SIDE];
  static int8_t result[CLASSES];
  const ai_buffer in = {Q(6), 1, SIDE, SIDE, 1, pixels, NULL};
  const ai_buffer out = {Q(7), 1, 1, 1, CLASSES, result, NULL};
  for (int i = 0; i < SIDE * SIDE; ++i) {
    pixels[i] = text[i] == '#' ? INK : 0;
  }
  if (ai_platform_network_process(handle, &in, &out) != 1) {
    return 1;
  }
  for (int i = 0; i < CLASSES; ++i) {
    printf("%s %d/128%s", names[i], result[i], i + 1 < CLASSES ? ", " : "\n");
  }
  return 0;
}

int main(void) {
  const ai_network_params params = {{0}, {0}}; /* weights and activations are static here */
  ai_handle handle = NULL;
  if (ai_conv2d_fixed_scratch_size(&conv) > sizeof(kernel_scratch) ||
      ai_dense_fixed_scratch_size(&dense) > sizeof(kernel_scratch) ||
      ai_platform_network_create(&handle, NULL, &network, AI_INTERFACE_API_VERSION) != 0 ||
      ai_platform_network_init(handle, &params) == NULL) {
    printf("error 0x%x\n", (unsigned)ai_platform_network_get_error(handle));
    return 1;
  }
  for (int i = 0; i < PICTURES; ++i) {
    if (classify(handle, pictures[i]) != 0) {
      return 1;
    }
  }
  return ai_platform_network_destroy(handle) != NULL;
}
