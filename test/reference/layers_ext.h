// SPDX-License-Identifier: MIT
// Written by tools/reference/generate.py; do not edit.
#ifndef TEST_REFERENCE_LAYERS_EXT_H
#define TEST_REFERENCE_LAYERS_EXT_H

#include <cstdint>

inline constexpr float transpose_in_data[] = {
    0.3125f, -1.8125f, 0.625f, -1.625f, 0.5f, -0.9375f, 1.1875f, 0.9375f,
    1.3125f, 1.3125f, 0.5f, -0.125f, -1.0625f, 0.8125f, -0.5f, -0.375f,
    -1.125f, -0.4375f, -0.8125f, 0.8125f, 0.5625f, -1.5625f, -1.5625f, 1.5625f,
};
inline constexpr float transpose_inv_out_reference[] = {
    0.3125f, 1.1875f, -1.0625f, -0.8125f, 0.625f, 1.3125f, -0.5f, 0.5625f,
    0.5f, 0.5f, -1.125f, -1.5625f, -1.8125f, 0.9375f, 0.8125f, 0.8125f,
    -1.625f, 1.3125f, -0.375f, -1.5625f, -0.9375f, -0.125f, -0.4375f, 1.5625f,
};
inline constexpr float transpose_swap_out_reference[] = {
    0.3125f, -1.8125f, 1.1875f, 0.9375f, -1.0625f, 0.8125f, -0.8125f, 0.8125f,
    0.625f, -1.625f, 1.3125f, 1.3125f, -0.5f, -0.375f, 0.5625f, -1.5625f,
    0.5f, -0.9375f, 0.5f, -0.125f, -1.125f, -0.4375f, -1.5625f, 1.5625f,
};
inline constexpr float transpose_swap2_out_reference[] = {
    0.3125f, 0.625f, 0.5f, 1.1875f, 1.3125f, 0.5f, -1.0625f, -0.5f,
    -1.125f, -0.8125f, 0.5625f, -1.5625f, -1.8125f, -1.625f, -0.9375f, 0.9375f,
    1.3125f, -0.125f, 0.8125f, -0.375f, -0.4375f, 0.8125f, -1.5625f, 1.5625f,
};
inline constexpr float concat_in0_data[] = {
    0.25f, -1.0625f, 0.0625f, -0.125f, -1.25f, 1.6875f, 0.75f, 0.9375f,
    0.3125f, -0.75f, -1.5f, 1.0625f,
};
inline constexpr float concat_in1_data[] = {
    -0.875f, 1.5f, 0.9375f, 1.375f, -0.625f, -1.375f,
};
inline constexpr float concat_in2_data[] = {
    -0.375f, 0.875f, -0.5f, 0.5625f, 1.4375f, 1.0625f, 1.8125f, -1.5f,
    0.5f, -1.8125f, 0.5f, 0.3125f, 1.125f, 0.875f, 1.5f, -1.0f,
    0.75f, -1.6875f,
};
inline constexpr float concat_in3_data[] = {
    -0.625f, 0.4375f, 1.0625f, -0.125f,
};
inline constexpr float concat_channels_out_reference[] = {
    0.25f, -1.0625f, -0.875f, -0.375f, 0.875f, -0.5f, 0.0625f, -0.125f,
    1.5f, 0.5625f, 1.4375f, 1.0625f, -1.25f, 1.6875f, 0.9375f, 1.8125f,
    -1.5f, 0.5f, 0.75f, 0.9375f, 1.375f, -1.8125f, 0.5f, 0.3125f,
    0.3125f, -0.75f, -0.625f, 1.125f, 0.875f, 1.5f, -1.5f, 1.0625f,
    -1.375f, -1.0f, 0.75f, -1.6875f,
};
inline constexpr float concat_height_out_reference[] = {
    -0.625f, 0.4375f, 1.0625f, -0.125f, 0.25f, -1.0625f, 0.0625f, -0.125f,
    -1.25f, 1.6875f, 0.75f, 0.9375f, 0.3125f, -0.75f, -1.5f, 1.0625f,
    0.25f, -1.0625f, 0.0625f, -0.125f, -1.25f, 1.6875f, 0.75f, 0.9375f,
    0.3125f, -0.75f, -1.5f, 1.0625f,
};
inline constexpr float time_delay_in_data[] = {
    0.5625f, 0.875f, 0.8125f, -1.6875f, -0.9375f, 0.125f, 1.0625f, -0.6875f,
    1.0f, -0.0625f, -1.4375f, -1.8125f, -0.0625f, 0.5f, -1.125f, -0.6875f,
    -0.4375f, 1.5625f, -0.125f, 1.8125f, 1.0f, -2.0f, -0.8125f, -0.6875f,
    1.3125f, -1.625f, -0.8125f, -0.9375f, 1.3125f, -1.875f, 1.8125f, -1.625f,
    0.5625f, -1.3125f, 1.3125f, 1.75f, 0.4375f, -1.75f, -1.8125f,
};
inline constexpr float time_delay_weight_data[] = {
    0.75f, 0.125f, 0.3125f, -1.0625f, -0.125f, 0.375f, 0.8125f, -1.375f,
    -0.75f, 1.8125f, -1.5625f, 1.75f, -0.9375f, 0.25f, 0.0625f, 1.4375f,
    1.8125f, -0.75f, -1.25f, -0.3125f, 1.6875f, -0.3125f, 1.75f, 0.6875f,
};
inline constexpr float time_delay_bias_data[] = {
    0.0625f, 1.375f,
};
inline constexpr uint8_t time_delay_delay_data[] = {
    1u, 0u, 4u, 3u,
};
inline constexpr float time_delay_out_reference[] = {
    -2.6171875f, -1.203125f, -0.94921875f, -0.1953125f, -2.5703125f, 2.29296875f, -2.0078125f, 5.64453125f,
    -0.0859375f, -0.10546875f, 4.21484375f, -7.16015625f, -5.21875f, 5.8515625f, 5.18359375f, -2.984375f,
    0.1953125f, 2.8671875f,
};
inline constexpr float time_distributed_in_data[] = {
    2.0f, -1.6875f, 0.875f, 0.9375f, -1.1875f, -0.3125f, 0.75f, -2.0f,
    0.125f, -1.3125f, -1.75f, 0.75f,
};
inline constexpr float time_distributed_weight_data[] = {
    -1.1875f, -1.625f, 0.3125f, 1.25f, 1.8125f, -1.3125f,
};
inline constexpr float time_distributed_bias_data[] = {
    1.3125f, 0.8125f,
};
inline constexpr float time_distributed_scale_data[] = {
    1.9375f, 0.3125f,
};
inline constexpr float time_distributed_out_reference[] = {
    3.78417969f, -0.279541016f, 3.93554688f, 0.0756835938f, 7.18994141f, -0.637207031f, 11.5266113f, -1.55761719f,
};

#endif
