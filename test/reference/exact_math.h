// SPDX-License-Identifier: MIT
// Written by tools/reference/generate.py; do not edit.
#ifndef TEST_REFERENCE_EXACT_MATH_H
#define TEST_REFERENCE_EXACT_MATH_H

#include <cstdint>

inline constexpr uint32_t exp_checksum[] = {
    1306917839u,
};
inline constexpr uint32_t sigmoid_checksum[] = {
    2917800807u,
};
inline constexpr uint32_t tanh_checksum[] = {
    1773121331u,
};
inline constexpr uint32_t cosh_checksum[] = {
    2588592248u,
};
inline constexpr uint32_t sinh_checksum[] = {
    3518427084u,
};

#endif
