// SPDX-License-Identifier: MIT
// Written by tools/reference/generate.py; do not edit.
#ifndef TEST_REFERENCE_SM_FIXED_H
#define TEST_REFERENCE_SM_FIXED_H

#include <cstdint>

inline constexpr int8_t soft_max_q7_in_data[] = {
    3, 3, 2, -9, 1, -128, -121, 127,
    126, 120,
};
inline constexpr float soft_max_q7_out_reference[] = {
    0.359375f, 0.359375f, 0.1796875f, 0.0f, 0.0859375f, 0.0f, 0.0f, 0.65625f,
    0.328125f, 0.0f,
};
inline constexpr int16_t soft_max_q15_in_data[] = {
    300, 300, 299, 284, 285, -32768, -32767, -32766,
    -32755, -32753,
};
inline constexpr float soft_max_q15_out_reference[] = {
    0.399993896f, 0.399993896f, 0.199981689f, 0.0f, 0.0f, 0.0f, 3.05175781e-05f, 9.15527344e-05f,
    0.199951172f, 0.799835205f,
};

#endif
