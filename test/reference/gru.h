// SPDX-License-Identifier: MIT
// Written by tools/reference/generate.py; do not edit.
#ifndef TEST_REFERENCE_GRU_H
#define TEST_REFERENCE_GRU_H

#include <cstdint>

inline constexpr float gru_in_data[] = {
    1.125f, 1.75f, 0.75f, -0.5f, -1.25f, -0.25f, -2.0f, 1.125f,
    -1.25f, 1.875f, 1.5f, 0.875f, 0.125f, 0.125f, 0.25f,
};
inline constexpr float gru_kernel_data[] = {
    -0.5f, -0.375f, -0.875f, -1.25f, 1.25f, -1.125f, -0.75f, -0.75f,
    -1.125f, -0.5f, -1.0f, -1.25f, 0.5f, 0.875f, -0.875f, -0.625f,
    -0.75f, 1.25f, 1.125f, -0.25f, 0.75f, 1.125f, 0.875f, 0.125f,
    0.0f, -0.375f, -0.75f, 0.75f, 0.25f, 0.375f,
};
inline constexpr float gru_recurrent_data[] = {
    -0.375f, 0.25f, 0.375f, 1.25f, -1.25f, -1.0f, 0.25f, -0.5f,
    -1.25f, -1.125f, -0.875f, -0.5f,
};
inline constexpr float gru_bias_data[] = {
    0.5f, -0.75f, 0.375f, 0.125f, -0.125f, -0.75f,
};
inline constexpr float gru_ts_1_out_reference[] = {
    0.959785044f, -0.987023473f,
};
inline constexpr float gru_ts_3_out_reference[] = {
    0.966396451f, -0.942579567f,
};
inline constexpr float gru_ts_3_back_out_reference[] = {
    0.996943176f, -0.947306037f,
};
inline constexpr float gru_ts_3_rs_out_reference[] = {
    0.959785044f, -0.987023473f, 0.959785044f, 0.0727343336f, 0.966396451f, -0.942579567f,
};
inline constexpr float gru_ts_3_rs_back_out_reference[] = {
    0.588664412f, -0.941375554f, 0.588664412f, 0.129726559f, 0.996943176f, -0.947306037f,
};
inline constexpr float gru_ts_3_rs_back_reverse_out_reference[] = {
    0.996943176f, -0.947306037f, 0.588664412f, 0.129726559f, 0.588664412f, -0.941375554f,
};
inline constexpr float gru_linear_activation_out_reference[] = {
    3.15820312f, -2.515625f,
};
inline constexpr float gru_linear_recurrent_out_reference[] = {
    3.30315638f, -3.65507126f,
};
inline constexpr float gru_reset_after_out_reference[] = {
    0.967351854f, -0.964505553f,
};

#endif
