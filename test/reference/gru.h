// SPDX-License-Identifier: MIT
// Written by tools/reference/generate.py; do not edit.
#ifndef TEST_REFERENCE_GRU_H
#define TEST_REFERENCE_GRU_H

#include <cstdint>

inline constexpr float gru_in_data[] = {
    1.625f, 0.125f, 0.25f, -2.0f, 0.25f, -0.375f, 1.75f, 0.375f,
    0.125f,
};
inline constexpr float gru_kernel_data[] = {
    0.125f, -0.125f, 1.125f, -1.25f, 0.625f, -1.125f, -0.375f, -1.0f,
    0.0f, -1.25f, -1.125f, -0.25f, -0.25f, 0.25f, -0.875f, -0.125f,
    -0.125f, 0.375f,
};
inline constexpr float gru_recurrent_data[] = {
    -0.875f, 0.125f, 0.125f, 0.5f, 0.375f, 1.125f, -0.5f, 0.75f,
    -0.75f, -0.125f, 0.375f, 1.0f,
};
inline constexpr float gru_bias_data[] = {
    -0.5f, 0.75f, 0.625f, -1.0f, -0.375f, -0.625f,
};
inline constexpr float gru_ts_1_out_reference[] = {
    -0.378753215f, -0.506134331f,
};
inline constexpr float gru_ts_3_out_reference[] = {
    -0.311839134f, -0.636936784f,
};
inline constexpr float gru_ts_3_back_out_reference[] = {
    -0.317569286f, -0.595114887f,
};
inline constexpr float gru_ts_3_rs_out_reference[] = {
    -0.378753215f, -0.506134331f, 0.308224112f, -0.506134331f, -0.311839134f, -0.636936784f,
};
inline constexpr float gru_ts_3_rs_back_out_reference[] = {
    -0.36521402f, -0.528738737f, 0.313104242f, -0.528738737f, -0.317569286f, -0.595114887f,
};
inline constexpr float gru_ts_3_rs_back_reverse_out_reference[] = {
    -0.317569286f, -0.595114887f, 0.313104242f, -0.528738737f, -0.36521402f, -0.528738737f,
};
inline constexpr float gru_linear_activation_out_reference[] = {
    -0.490429699f, -0.59765625f,
};
inline constexpr float gru_linear_recurrent_out_reference[] = {
    -0.771534324f, -1.57794821f,
};
inline constexpr float gru_reset_after_out_reference[] = {
    -0.306215107f, -0.653594017f,
};

#endif
