// SPDX-License-Identifier: MIT
// Written by tools/reference/generate.py; do not edit.
#ifndef TEST_REFERENCE_NETWORK_H
#define TEST_REFERENCE_NETWORK_H

#include <cstdint>

inline constexpr const char* layer_type_names[] = {
    "", "ADD", "BN", "", "CONV2D", "DENSE", "GRU", "LRN",
    "LSTM", "NL", "NORM", "OPTIMIZED_CONV2D", "TRANSPOSE", "POOL", "SM", "SPLIT",
    "TIME_DELAY", "TIME_DISTRIBUTED", "", "CONCAT", "GEMM", "UPSAMPLE", "ELTWISE", "GENERIC",
    "INSTANCENORMALIZATION", "PAD", "SLICE", "TILE", "REDUCE", "",
};
inline constexpr float net_in_data[] = {
    -1.3125f, 1.125f, 2.0f,
};
inline constexpr float net_hidden_weight_data[] = {
    -1.0625f, -1.6875f, -1.9375f, -0.625f, 1.0f, 0.8125f, -1.1875f, 0.5625f,
    1.625f, 0.6875f, -1.75f, 1.5625f,
};
inline constexpr float net_hidden_bias_data[] = {
    -1.375f, 0.875f, -0.625f, 1.625f,
};
inline constexpr float net_last_weight_data[] = {
    0.1875f, -0.6875f, 1.3125f, 2.0f, -1.6875f, 0.4375f, -0.125f, 1.625f,
};
inline constexpr float net_last_bias_data[] = {
    -1.9375f, -1.6875f,
};
inline constexpr float net_out_reference[] = {
    5.08569336f, 2.70849609f,
};
inline constexpr float multi_in_0_data[] = {
    -1.3125f, -1.1875f, -0.6875f, 0.4375f, 0.0f, -0.125f, -0.3125f, 0.625f,
    -0.875f,
};
inline constexpr float multi_in_1_data[] = {
    -1.625f, 0.9375f, -0.5f, -0.5f, -1.1875f, -1.125f,
};
inline constexpr float multi_weight_data[] = {
    -1.5f, 1.1875f, -0.625f, -1.875f, 0.6875f, 1.25f, 0.9375f, 0.625f,
    -2.0f, -0.8125f,
};
inline constexpr float multi_bias_data[] = {
    -0.4375f, -0.3125f,
};
inline constexpr float multi_out_reference[] = {
    4.2421875f, -1.0078125f,
};
inline constexpr float multi_3_2_out_reference[] = {
    4.2421875f, -1.0078125f, -0.421875f, 1.5625f, 5.01171875f, 1.82421875f,
};
inline constexpr float multi_2_3_out_reference[] = {
    4.2421875f, -1.0078125f, -0.421875f, 1.5625f, 2.00390625f, -0.20703125f,
};
inline constexpr float fully_connected_in_data[] = {
    1.875f, -1.4375f, -1.125f, 2.0f, -0.1875f, -1.4375f, -0.5f, 1.9375f,
    0.75f, -1.5f, 0.8125f, 0.4375f,
};
inline constexpr float fully_connected_weight_data[] = {
    1.25f, 0.5f, 1.3125f, -0.625f, 0.625f, 1.375f, -1.9375f, -1.8125f,
    -0.0625f, -1.0f, 1.5625f, 0.4375f,
};
inline constexpr float fully_connected_bias_data[] = {
    -0.9375f, 0.8125f, -0.8125f, -1.1875f,
};
inline constexpr float fully_connected_out_reference[] = {
    -0.7890625f, -2.8046875f, -1.76953125f, -5.80078125f, -0.41796875f, -2.53125f, -4.2578125f, -4.109375f,
    0.390625f, 3.3671875f, -3.40234375f, 2.66796875f, -1.83203125f, 2.859375f, 0.59375f, 1.7734375f,
};
inline constexpr float net_bn_in_data[] = {
    1.5f, 0.1875f, -0.5625f, 1.875f, -1.6875f, 0.5625f, 1.625f, -0.5f,
    0.1875f, -1.5f, 1.8125f, 1.75f,
};
inline constexpr float net_bn_weight_data[] = {
    -1.375f, 0.4375f,
};
inline constexpr float net_bn_bias_data[] = {
    0.625f, 0.0625f,
};
inline constexpr float net_bn_out_reference[] = {
    -1.4375f, 0.14453125f, 1.3984375f, 0.8828125f, 2.9453125f, 0.30859375f, -1.609375f, -0.15625f,
    0.3671875f, -0.59375f, -1.8671875f, 0.828125f,
};
inline constexpr float net_relu_in_data[] = {
    1.0f, 2.0f, 3.0f,
};
inline constexpr float net_relu_weight_data[] = {
    3.0f, 2.0f, 2.0f, -1.0f, 3.0f, 5.0f, 2.0f, -4.0f,
    -1.0f,
};
inline constexpr float net_relu_bias_data[] = {
    3.0f, 3.0f, -0.5f,
};
inline constexpr float net_sm_in_data[] = {
    -0.1875f, -0.125f, 0.8125f, 0.8125f, -0.0625f, -1.0625f,
};
inline constexpr float net_sm_weight_data[] = {
    -0.8125f, 0.75f, 0.3125f, -1.9375f, 1.4375f, 1.4375f, -0.4375f, 1.125f,
    -0.5625f, -0.8125f, -1.9375f, 1.375f,
};
inline constexpr float net_sm_bias_data[] = {
    -0.8125f, 0.625f, 0.875f, 1.5f,
};
inline constexpr float net_sm_out_reference[] = {
    0.0205053426f, 0.244019464f, 0.0484271422f, 0.687048078f, 0.0425559133f, 0.0208212715f, 0.772209823f, 0.16441296f,
};

#endif
