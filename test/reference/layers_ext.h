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
    -0.375f, 0.875f, -0.5f, 0.5625f,
};
inline constexpr float concat_channels_out_reference[] = {
    0.25f, -1.0625f, -0.875f, 0.0625f, -0.125f, 1.5f, -1.25f, 1.6875f,
    0.9375f, 0.75f, 0.9375f, 1.375f, 0.3125f, -0.75f, -0.625f, -1.5f,
    1.0625f, -1.375f,
};
inline constexpr float concat_height_out_reference[] = {
    0.25f, -1.0625f, 0.0625f, -0.125f, -1.25f, 1.6875f, 0.75f, 0.9375f,
    0.3125f, -0.75f, -1.5f, 1.0625f, -0.375f, 0.875f, -0.5f, 0.5625f,
};
inline constexpr float time_delay_in_data[] = {
    1.4375f, 1.0625f, 1.8125f, -1.5f, 0.5f, -1.8125f, 0.5f, 0.3125f,
    1.125f, 0.875f, 1.5f, -1.0f, 0.75f, -1.6875f, -0.625f, 0.4375f,
    1.0625f, -0.125f, 0.5625f, 0.875f, 0.8125f, -1.6875f, -0.9375f, 0.125f,
    1.0625f, -0.6875f, 1.0f, -0.0625f, -1.4375f, -1.8125f, -0.0625f, 0.5f,
    -1.125f, -0.6875f, -0.4375f, 1.5625f, -0.125f, 1.8125f, 1.0f,
};
inline constexpr float time_delay_weight_data[] = {
    -2.0f, -0.8125f, -0.6875f, 1.3125f, -1.625f, -0.8125f, -0.9375f, 1.3125f,
    -1.875f, 1.8125f, -1.625f, 0.5625f, -1.3125f, 1.3125f, 1.75f, 0.4375f,
    -1.75f, -1.8125f, 0.75f, 0.125f, 0.3125f, -1.0625f, -0.125f, 0.375f,
};
inline constexpr float time_delay_bias_data[] = {
    0.8125f, -1.375f,
};
inline constexpr uint8_t time_delay_delay_data[] = {
    1u, 0u, 4u, 3u,
};
inline constexpr float time_delay_out_reference[] = {
    0.1796875f, -7.7734375f, 2.4453125f, 1.703125f, -4.140625f, -4.53125f, 0.80859375f, -7.84375f,
    -1.84375f, 6.62109375f, 2.54296875f, -2.4453125f, 7.546875f, -3.69921875f, -6.65234375f, -1.74609375f,
    6.015625f, -4.6796875f,
};
inline constexpr float time_distributed_in_data[] = {
    -0.75f, 1.8125f, -1.5625f, 1.75f, -0.9375f, 0.25f, 0.0625f, 1.4375f,
    1.8125f, -0.75f, -1.25f, -0.3125f,
};
inline constexpr float time_distributed_weight_data[] = {
    1.6875f, -0.3125f, 1.75f, 0.6875f, 0.0625f, 1.375f,
};
inline constexpr float time_distributed_bias_data[] = {
    2.0f, -1.6875f,
};
inline constexpr float time_distributed_scale_data[] = {
    0.875f, 0.9375f,
};
inline constexpr float time_distributed_out_reference[] = {
    -2.24560547f, -3.97338867f, 4.97314453f, -0.186767578f, 4.22460938f, 0.87890625f, 0.505859375f, -2.54150391f,
};

#endif
