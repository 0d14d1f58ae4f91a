// SPDX-License-Identifier: MIT
// Written by tools/reference/generate.py; do not edit.
#ifndef TEST_REFERENCE_LSTM_H
#define TEST_REFERENCE_LSTM_H

#include <cstdint>

inline constexpr float lstm_in_data[] = {
    0.75f, 0.875f, -1.875f, 1.75f, -0.75f, 1.0f, -1.75f, -1.625f,
    -1.875f,
};
inline constexpr float lstm_kernel_data[] = {
    0.25f, 0.375f, -1.25f, 0.875f, 0.5f, -0.375f, -0.375f, -0.25f,
    0.75f, 1.25f, 0.875f, -0.625f, -0.875f, -0.75f, 0.75f, 0.5f,
    -0.625f, -0.75f, -1.125f, -0.75f, 0.0f, 0.25f, -1.25f, 0.0f,
};
inline constexpr float lstm_recurrent_data[] = {
    0.375f, 1.125f, -0.125f, -0.625f, 0.25f, -0.5f, -0.125f, 0.375f,
    0.0f, -0.25f, 0.875f, 1.25f, -0.75f, -0.25f, -0.5f, 0.125f,
};
inline constexpr float lstm_peephole_data[] = {
    0.125f, 0.125f, 0.5f, 0.375f, 0.875f, -1.0f,
};
inline constexpr float lstm_bias_data[] = {
    -0.375f, -0.125f, -0.5f, -0.25f, 0.25f, 0.625f, 0.875f, 0.625f,
};
inline constexpr float lstm_ts_1_out_reference[] = {
    -0.208717689f, 0.33279556f,
};
inline constexpr float lstm_ts_3_out_reference[] = {
    0.50789839f, 0.0860027224f,
};
inline constexpr float lstm_ts_3_rs_out_reference[] = {
    -0.208717689f, 0.33279556f, -0.142822534f, 0.628313601f, 0.50789839f, 0.0860027224f,
};
inline constexpr float lstm_ts_3_back_out_reference[] = {
    -0.169204786f, 0.474961728f,
};
inline constexpr float lstm_ts_3_back_rs_out_reference[] = {
    0.558134377f, 0.135669991f, 0.167467237f, 0.514383376f, -0.169204786f, 0.474961728f,
};
inline constexpr float lstm_dense_weight_data[] = {
    0.75f, -0.5f, 0.25f, 0.0f, -0.5f, -1.0f,
};
inline constexpr float lstm_dense_bias_data[] = {
    0.25f, 0.75f, 0.0f,
};
inline constexpr float lstm_dense_out_reference[] = {
    0.587922454f, 0.876974583f, -0.339951932f,
};

#endif
