// SPDX-License-Identifier: MIT
// Written by tools/reference/generate.py; do not edit.
#ifndef TEST_REFERENCE_CORE_CONVERT_H
#define TEST_REFERENCE_CORE_CONVERT_H

#include <cstdint>

inline constexpr int8_t int8_to_float_in_data[] = {
    -128, 127, -11, 38,
};
inline constexpr float int8_to_float_scale[] = {
    0.0370999984f,
};
inline constexpr int8_t int8_zeropoint[] = {
    -11,
};
inline constexpr float int8_to_float_out_reference[] = {
    -4.34069967f, 5.11979961f, 0.0f, 1.81789994f,
};
inline constexpr float float_to_int8_in_data[] = {
    5.75f, 4.75f, -31.0f, 69.5f, -63.0f,
};
inline constexpr float float_to_int8_scale[] = {
    0.5f,
};
inline constexpr int8_t float_to_int8_out_reference[] = {
    1, -2, -73, 127, -128,
};
inline constexpr uint8_t uint8_to_float_in_data[] = {
    0u, 255u, 151u, 38u,
};
inline constexpr float uint8_to_float_scale[] = {
    0.0173000004f,
};
inline constexpr uint8_t uint8_zeropoint[] = {
    151u,
};
inline constexpr float uint8_to_float_out_reference[] = {
    -2.61230016f, 1.79920006f, 0.0f, -1.95490003f,
};
inline constexpr float float_to_uint8_in_data[] = {
    0.125f, -0.125f, -38.375f, 26.25f, 3.0625f,
};
inline constexpr float float_to_uint8_scale[] = {
    0.25f,
};
inline constexpr uint8_t float_to_uint8_out_reference[] = {
    152u, 151u, 0u, 255u, 163u,
};
inline constexpr float float_to_q2_5_in_data[] = {
    1.23399997f, -0.046875f, 0.046875f, 4.0f,
};
inline constexpr int8_t float_to_q2_5_out_reference[] = {
    39, -2, 2, 127,
};
inline constexpr float float_to_q2_5_in_after[] = {
    0.308499992f, -0.01171875f, 0.01171875f, 1.0f,
};
inline constexpr float float_to_q4_11_in_data[] = {
    -7.76999998f, 16.0f, 0.00122070312f, -0.00122070312f,
};
inline constexpr int16_t float_to_q4_11_out_reference[] = {
    -15913, 32767, 3, -3,
};
inline constexpr float float_to_q4_11_in_after[] = {
    -0.485624999f, 1.0f, 7.62939453e-05f, -7.62939453e-05f,
};
inline constexpr int16_t q4_11_to_q2_5_in_data[] = {
    -300, 8191, 8192, -32768,
};
inline constexpr int8_t q4_11_to_q2_5_out_reference[] = {
    -5, 127, 127, -128,
};
inline constexpr int16_t q4_11_to_q2_5_in_after[] = {
    -1200, 32764, 32767, -32768,
};
inline constexpr int8_t q2_5_to_q4_11_in_data[] = {
    -128, 127, -1, 77,
};
inline constexpr int16_t q2_5_to_q4_11_out_reference[] = {
    -8192, 8128, -64, 4928,
};
inline constexpr int8_t q2_5_to_q4_11_in_after[] = {
    -128, 127, -1, 77,
};
inline constexpr int16_t q4_11_to_q6_1_in_data[] = {
    -32768, 32767, -1025, 5000,
};
inline constexpr int8_t q4_11_to_q6_1_out_reference[] = {
    -32, 31, -2, 4,
};
inline constexpr int16_t q4_11_to_q6_1_in_after[] = {
    -32768, 32767, -1025, 5000,
};
inline constexpr int8_t q6_1_to_q3_4_in_data[] = {
    -16, 15, 16, -77,
};
inline constexpr int8_t q6_1_to_q3_4_out_reference[] = {
    -128, 120, 127, -128,
};
inline constexpr int8_t q6_1_to_q3_4_in_after[] = {
    -16, 15, 16, -77,
};
inline constexpr int8_t q2_5_to_float_in_data[] = {
    -128, 127, 1, -77,
};
inline constexpr float q2_5_to_float_out_reference[] = {
    -4.0f, 3.96875f, 0.03125f, -2.40625f,
};
inline constexpr int16_t q4_11_to_float_in_data[] = {
    -32768, 32767, 1, -12345,
};
inline constexpr float q4_11_to_float_out_reference[] = {
    -16.0f, 15.9995117f, 0.00048828125f, -6.02783203f,
};
inline constexpr uint8_t uint8_to_int8_in_data[] = {
    0u, 1u, 127u, 128u, 129u, 255u, 77u, 200u,
    13u, 254u,
};
inline constexpr int8_t uint8_to_int8_out_reference[] = {
    -128, -127, -1, 0, 1, 127, -51, 72,
    -115, 126,
};
inline constexpr int8_t int8_to_uint8_in_data[] = {
    -128, -127, -1, 0, 1, 127, -51, 72,
    -115, 126,
};
inline constexpr uint8_t int8_to_uint8_out_reference[] = {
    0u, 1u, 127u, 128u, 129u, 255u, 77u, 200u,
    13u, 254u,
};

#endif
