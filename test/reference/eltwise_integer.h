// SPDX-License-Identifier: MIT
// Written by tools/reference/generate.py; do not edit.
#ifndef TEST_REFERENCE_ELTWISE_INTEGER_H
#define TEST_REFERENCE_ELTWISE_INTEGER_H

#include <cstdint>

inline constexpr uint8_t sum_tensor_scalar_in_data_uint8[] = {
    173u, 183u, 12u, 238u, 84u, 187u, 16u, 28u,
    9u, 152u, 161u, 2u, 218u, 173u, 91u, 96u,
    107u, 197u, 253u, 213u, 69u, 48u, 60u, 197u,
    174u, 65u, 60u, 13u, 50u, 125u,
};
inline constexpr uint8_t sum_tensor_scalar_in2_data_uint8[] = {
    155u,
};
inline constexpr uint8_t sum_tensor_scalar_out_reference_uint8[] = {
    219u, 223u, 147u, 248u, 179u, 225u, 149u, 155u,
    146u, 210u, 214u, 143u, 239u, 219u, 183u, 185u,
    190u, 230u, 255u, 237u, 173u, 163u, 169u, 230u,
    219u, 171u, 169u, 148u, 164u, 198u,
};
inline constexpr float sum_tensor_scalar_pscale_in_uint8[] = {
    0.0399999991f,
};
inline constexpr uint8_t sum_tensor_scalar_pzeropoint_in_uint8[] = {
    120u,
};
inline constexpr float sum_tensor_scalar_pscale_in2_uint8[] = {
    0.0700000003f,
};
inline constexpr uint8_t sum_tensor_scalar_pzeropoint_in2_uint8[] = {
    31u,
};
inline constexpr float sum_tensor_scalar_pscale_out_uint8[] = {
    0.0900000036f,
};
inline constexpr uint8_t sum_tensor_scalar_pzeropoint_out_uint8[] = {
    99u,
};
inline constexpr uint8_t sum_opt_in_data_uint8[] = {
    5u, 32u, 23u, 234u, 189u, 172u, 138u, 210u,
    100u, 88u, 190u, 46u, 150u, 229u, 175u, 237u,
    84u, 94u, 102u, 160u, 116u, 107u, 234u, 51u,
};
inline constexpr uint8_t sum_opt_in2_data_uint8[] = {
    150u, 151u, 166u, 172u, 22u, 198u, 153u, 154u,
    46u, 1u, 200u, 248u, 88u, 64u, 212u, 162u,
    202u, 25u, 47u, 12u, 15u, 66u, 207u, 93u,
};
inline constexpr uint8_t sum_opt_out_reference_uint8[] = {
    54u, 82u, 88u, 255u, 110u, 255u, 190u, 255u,
    45u, 0u, 255u, 193u, 137u, 192u, 255u, 255u,
    185u, 18u, 48u, 71u, 30u, 72u, 255u, 43u,
};
inline constexpr float sum_opt_pscale_in_uint8[] = {
    0.0500000007f,
};
inline constexpr uint8_t sum_opt_pzeropoint_in_uint8[] = {
    101u,
};
inline constexpr float sum_opt_pscale_in2_uint8[] = {
    0.0500000007f,
};
inline constexpr uint8_t sum_opt_pzeropoint_in2_uint8[] = {
    101u,
};
inline constexpr float sum_opt_pscale_out_uint8[] = {
    0.0500000007f,
};
inline constexpr uint8_t sum_opt_pzeropoint_out_uint8[] = {
    101u,
};
inline constexpr int8_t sum_tensor_scalar_in_data_int8[] = {
    -34, 8, -94, 101, -89, 28, -125, 7,
    64, -103, 90, -39, -46, -99, -124, -6,
    -67, 118, 79, -21, 35, 38, 24, 34,
};
inline constexpr int8_t sum_tensor_scalar_in2_data_int8[] = {
    -3,
};
inline constexpr int8_t sum_tensor_scalar_out_reference_int8[] = {
    -70, -45, -106, 11, -103, -33, -125, -46,
    -11, -112, 4, -73, -77, -109, -124, -53,
    -90, 21, -2, -62, -29, -27, -35, -29,
};
inline constexpr float sum_tensor_scalar_pscale_in_int8[] = {
    0.0299999993f,
};
inline constexpr int8_t sum_tensor_scalar_pzeropoint_in_int8[] = {
    -7,
};
inline constexpr float sum_tensor_scalar_pscale_in2_int8[] = {
    0.0500000007f,
};
inline constexpr int8_t sum_tensor_scalar_pzeropoint_in2_int8[] = {
    20,
};
inline constexpr float sum_tensor_scalar_pscale_out_int8[] = {
    0.0500000007f,
};
inline constexpr int8_t sum_tensor_scalar_pzeropoint_out_int8[] = {
    -31,
};
inline constexpr int8_t sum_opt_in_data_int8[] = {
    54, 113, -83, 96, 16, 13, -3, -67,
    -101, 89, 119, 5, -114, -42, -39, -120,
    -90, 15, -72, -74, 81, 97, -58, -111,
    -28, -62, -6, 106, 93, -39, 21, 71,
    1, 61, 3, -125, 15, 7, 89, 125,
    -108, -55,
};
inline constexpr int8_t sum_opt_in2_data_int8[] = {
    61, 3, -78, -30, 25, -4, -20, -112,
    10, 30, 44, -124, -8, 100, -57, 16,
    -62, -11, 29, -34, -8, 43, -84, -58,
    -15, 38, 27, -54, -71, 8, 51, 71,
    -125, 53, -88, 115, -98, -33, 18, 75,
    65, 35,
};
inline constexpr int8_t sum_opt_out_reference_int8[] = {
    95, 81, -75, 49, 50, 27, 7, -92,
    -19, 89, 114, -66, -39, 77, -38, -24,
    -67, 23, 9, -38, 57, 103, -67, -74,
    -1, 21, 40, 36, 17, 10, 71, 111,
    -68, 93, -40, 47, -41, 3, 80, 127,
    18, 22,
};
inline constexpr float sum_opt_pscale_in_int8[] = {
    0.0299999993f,
};
inline constexpr int8_t sum_opt_pzeropoint_in_int8[] = {
    12,
};
inline constexpr float sum_opt_pscale_in2_int8[] = {
    0.0450000018f,
};
inline constexpr int8_t sum_opt_pzeropoint_in2_int8[] = {
    -33,
};
inline constexpr float sum_opt_pscale_out_int8[] = {
    0.0610000007f,
};
inline constexpr int8_t sum_opt_pzeropoint_out_int8[] = {
    5,
};

#endif
