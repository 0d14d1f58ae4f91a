// SPDX-License-Identifier: MIT
// Written by tools/reference/generate.py; do not edit.
#ifndef TEST_REFERENCE_LSTM_H
#define TEST_REFERENCE_LSTM_H

#include <cstdint>

inline constexpr float lstm_in_data[] = {
    1.375f, -0.625f, 1.875f, -1.0f, 0.75f, -1.75f, 1.5f, -1.875f,
    -0.625f, -0.125f, 0.125f, 1.0f, 1.75f, 1.5f, 0.25f,
};
inline constexpr float lstm_kernel_data[] = {
    0.25f, 0.75f, 0.625f, 0.0f, 0.625f, -1.0f, 0.25f, -0.5f,
    0.375f, 0.5f, -1.0f, 0.0f, -0.25f, -0.875f, 1.0f, -0.75f,
    0.625f, 1.125f, -1.0f, 0.25f, 1.0f, 0.125f, 0.375f, 0.25f,
    0.125f, -0.75f, 0.75f, -0.125f, 1.25f, -1.125f, 0.625f, 1.25f,
    1.25f, 0.5f, 1.25f, -1.125f, -0.375f, -0.375f, -0.625f, 1.125f,
};
inline constexpr float lstm_recurrent_data[] = {
    -0.625f, -1.25f, -0.375f, 1.125f, -0.375f, -0.875f, -0.5f, 0.0f,
    0.5f, -1.125f, -0.625f, -1.125f, 0.75f, 1.125f, -1.125f, -1.25f,
};
inline constexpr float lstm_peephole_data[] = {
    -0.375f, 0.0f, -0.625f, 0.25f, -0.75f, 0.375f,
};
inline constexpr float lstm_bias_data[] = {
    -0.25f, 0.0f, -0.375f, -0.75f, -0.25f, -0.125f, 0.125f, 0.875f,
};
inline constexpr float lstm_ts_1_out_reference[] = {
    0.60017395f, -0.0035305561f,
};
inline constexpr float lstm_ts_3_out_reference[] = {
    0.0120834289f, 0.141595572f,
};
inline constexpr float lstm_ts_3_rs_out_reference[] = {
    0.60017395f, -0.0035305561f, 0.055027198f, 0.720253825f, 0.0120834289f, 0.141595572f,
};
inline constexpr float lstm_ts_3_back_out_reference[] = {
    0.273756564f, 0.238710895f,
};
inline constexpr float lstm_ts_3_back_rs_out_reference[] = {
    0.587305188f, 0.144824773f, 0.0659003034f, 0.812606633f, 0.273756564f, 0.238710895f,
};
inline constexpr float lstm_dense_weight_data[] = {
    0.25f, -1.0f, 0.75f, -0.125f, 1.0f, 0.5f, -0.125f, 0.25f,
};
inline constexpr float lstm_dense_bias_data[] = {
    0.0f, 0.875f, -0.25f, 0.375f,
};
inline constexpr float lstm_dense_out_reference[] = {
    0.00772278663f, 1.24506855f, 0.323865294f, 0.340973377f,
};

#endif
