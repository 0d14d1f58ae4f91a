// SPDX-License-Identifier: MIT
// Written by tools/reference/generate.py; do not edit.
#ifndef TEST_REFERENCE_NL_FIXED_H
#define TEST_REFERENCE_NL_FIXED_H

#include <cstdint>

inline constexpr int8_t relu_q7_in_data[] = {
    -128, 127, 0, -1, 1, 55, -90, 17,
    -33, 2, 101, -7,
};
inline constexpr float relu_q7_out_reference[] = {
    0.0f, 3.96875f, 0.0f, 0.0f, 0.03125f, 1.71875f, 0.0f, 0.53125f,
    0.0f, 0.0625f, 3.15625f, 0.0f,
};
inline constexpr int16_t relu6_q15_in_data[] = {
    -32768, 32767, 12287, 12289, 0, -1, 5000, 12288,
    -300, 31, 20000, 7,
};
inline constexpr int16_t relu6_q15_params[] = {
    12288,
};
inline constexpr float relu6_q15_out_reference[] = {
    0.0f, 6.0f, 5.99951172f, 6.0f, 0.0f, 0.0f, 2.44140625f, 6.0f,
    0.0f, 0.0151367188f, 6.0f, 0.00341796875f,
};
inline constexpr int16_t sigmoid_q15_in_data[] = {
    -32768, 32767, 0, 700, -700, 3333, -7777, 14000,
    250, -5000, 9000, -21000,
};
inline constexpr float sigmoid_q15_out_reference[] = {
    1.12535162e-07f, 0.999999881f, 0.5f, 0.584626913f, 0.415373057f, 0.835818827f, 0.0219377745f, 0.998926699f,
    0.530479729f, 0.0800692663f, 0.987805843f, 3.52184143e-05f,
};
inline constexpr int8_t tanh_q7_in_data[] = {
    -128, 127, 0, -1, 1, 9, -21, 33,
    -6, 14, -60, 4,
};
inline constexpr float tanh_q7_out_reference[] = {
    -0.999999762f, 0.999999762f, 0.0f, -0.0624187477f, 0.0624187477f, 0.509829998f, -0.864906609f, 0.968187213f,
    -0.3583574f, 0.703905582f, -0.998894453f, 0.244918659f,
};

#endif
