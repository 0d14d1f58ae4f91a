// SPDX-License-Identifier: MIT
// Written by tools/reference/generate.py; do not edit.
#ifndef TEST_REFERENCE_DENSE_FIXED_H
#define TEST_REFERENCE_DENSE_FIXED_H

#include <cstdint>

inline constexpr int8_t dense_q7_in_data[] = {
    27, 70, -15, -90, -59,
};
inline constexpr int8_t dense_q7_weight_data[] = {
    60, -16, 41, -20, 15, 49, -60, 48,
    -16, -36,
};
inline constexpr int8_t dense_q7_bias_data[] = {
    94, 66,
};
inline constexpr float dense_q7_out_reference[] = {
    15.0f, 8.0f,
};
inline constexpr int16_t dense_q15_in_data[] = {
    5799, -7988, -3824, -12833, 8947,
};
inline constexpr int16_t dense_q15_weight_data[] = {
    -13325, -4601, -9636, 1298, 13283, -850, -13894, 4761,
    420, 2819,
};
inline constexpr int16_t dense_q15_bias_data[] = {
    6668, -9905,
};
inline constexpr float dense_q15_out_reference[] = {
    15.0f, 8.0f,
};
inline constexpr int16_t dense_Wq7Aq15_in_data[] = {
    -20978, 21552, 8763, 21316, 21314,
};
inline constexpr int8_t dense_Wq7Aq15_weight_data[] = {
    6, 3, -32, 39, 12, -36, -27, 1,
    -47, 40,
};
inline constexpr int8_t dense_Wq7Aq15_bias_data[] = {
    -31, 28,
};
inline constexpr float dense_Wq7Aq15_out_reference[] = {
    15.0f, 8.0f,
};
inline constexpr int8_t dense_q7_neg_in_data[] = {
    -1, -2, -2, 0, -3,
};
inline constexpr int8_t dense_q7_neg_weight_data[] = {
    -27, 12, -25, -5, 2, 37, -42, 31,
    51, -39,
};
inline constexpr int8_t dense_q7_neg_bias_data[] = {
    -18, -46,
};
inline constexpr int8_t dense_q7_neg_out_reference[] = {
    22, 20,
};

#endif
