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
    0.3125f, 0.625f, 0.5f, -1.8125f, -1.625f, -0.9375f, 1.1875f, 1.3125f,
    0.5f, 0.9375f, 1.3125f, -0.125f, -1.0625f, -0.5f, -1.125f, 0.8125f,
    -0.375f, -0.4375f, -0.8125f, 0.5625f, -1.5625f, 0.8125f, -1.5625f, 1.5625f,
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
    -1.75f, -1.8125f,
};
inline constexpr float time_delay_bias_data[] = {
    0.75f, 0.125f,
};
inline constexpr uint8_t time_delay_delays[] = {
    1u, 0u, 4u,
};
inline constexpr float time_delay_out_reference[] = {
    1.53125f, 2.66796875f, -1.3671875f, -0.83203125f, -3.19921875f, -2.32421875f, 0.69140625f, 3.62109375f,
    -0.44140625f, -5.31640625f, -1.125f, 6.5546875f, 6.28125f, 1.62890625f, -5.15625f, 2.56640625f,
    5.609375f, -4.2578125f,
};
inline constexpr float time_distributed_in_data[] = {
    0.3125f, -1.0625f, -0.125f, 0.375f, 0.8125f, -1.375f, -0.75f, 1.8125f,
    -1.5625f, 1.75f, -0.9375f, 0.25f,
};
inline constexpr float time_distributed_weight_data[] = {
    0.0625f, 1.4375f, 1.8125f, -0.75f, -1.25f, -0.3125f,
};
inline constexpr float time_distributed_bias_data[] = {
    1.6875f, -0.3125f,
};
inline constexpr float time_distributed_scale_data[] = {
    1.75f, 0.6875f,
};
inline constexpr float time_distributed_out_reference[] = {
    -0.08203125f, 0.563964844f, 0.676757812f, -0.811035156f, 2.47460938f, -1.05004883f, 1.57910156f, -0.365234375f,
};

#endif
