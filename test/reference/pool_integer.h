// SPDX-License-Identifier: MIT
// Written by tools/reference/generate.py; do not edit.
#ifndef TEST_REFERENCE_POOL_INTEGER_H
#define TEST_REFERENCE_POOL_INTEGER_H

#include <cstdint>

inline constexpr uint8_t max_pool_in_data_uint8[] = {
    224u, 104u, 83u, 170u, 219u, 37u, 18u, 187u,
    194u, 133u, 33u, 48u, 115u, 227u, 34u, 73u,
    247u, 223u, 154u, 31u, 250u, 247u, 13u, 122u,
    149u, 218u, 180u, 62u, 163u, 11u, 243u, 136u,
    23u, 232u, 75u, 150u, 247u, 20u, 233u, 74u,
    220u, 198u, 78u, 120u, 64u, 182u, 154u, 230u,
    78u, 119u, 46u, 219u, 208u, 111u, 21u, 17u,
    106u, 51u, 115u, 9u, 231u, 95u, 17u, 57u,
    41u, 107u, 178u, 87u, 137u, 20u, 72u, 214u,
    178u, 170u, 150u, 143u, 124u, 239u, 140u, 119u,
    83u, 203u, 225u, 19u, 206u, 198u, 212u, 166u,
    116u, 94u,
};
inline constexpr uint8_t max_pool_out_reference_uint8[] = {
    247u, 219u, 250u, 247u, 219u, 194u, 243u, 247u,
    223u, 247u, 220u, 250u, 247u, 220u, 230u, 243u,
    208u, 230u, 247u, 220u, 233u, 231u, 220u, 230u,
    219u, 208u, 230u, 178u, 170u, 239u, 231u, 225u,
    239u, 206u, 225u, 214u,
};
inline constexpr float max_pool_pscale_in_uint8[] = {
    0.0309999995f,
};
inline constexpr uint8_t max_pool_pzeropoint_in_uint8[] = {
    77u,
};
inline constexpr float max_pool_pscale_out_uint8[] = {
    0.0309999995f,
};
inline constexpr uint8_t max_pool_pzeropoint_out_uint8[] = {
    77u,
};
inline constexpr uint8_t ave_pool_in_data_uint8[] = {
    57u, 209u, 94u, 166u, 68u, 22u, 140u, 113u,
    29u, 69u, 62u, 91u, 47u, 27u, 119u, 214u,
    224u, 120u, 3u, 234u, 41u, 50u, 187u, 233u,
    124u, 48u, 30u, 221u, 134u, 84u, 241u, 31u,
    192u, 70u, 41u, 28u, 18u, 183u, 108u, 120u,
    1u, 94u, 21u, 180u, 82u, 197u, 255u, 246u,
    67u, 75u, 215u, 39u, 123u, 121u, 143u, 64u,
    93u, 249u, 191u, 166u, 44u, 48u, 246u, 125u,
    201u, 77u, 87u, 35u, 102u, 164u, 18u, 218u,
    220u, 69u, 254u, 114u, 74u, 203u, 244u, 184u,
    108u, 31u, 189u, 183u, 198u, 175u, 43u, 196u,
    20u, 1u, 191u, 189u, 37u, 62u, 251u, 145u,
    97u, 156u, 124u, 185u,
};
inline constexpr uint8_t ave_pool_out_reference_uint8[] = {
    0u, 221u, 46u, 156u, 7u, 0u, 79u, 25u,
    0u, 46u, 97u, 112u, 137u, 83u, 175u, 0u,
    85u, 143u, 131u, 19u, 38u, 10u, 107u, 0u,
    36u, 76u, 140u, 121u, 87u, 99u, 66u, 44u,
    125u, 117u, 53u, 20u, 10u, 164u, 43u, 85u,
    42u, 138u, 113u, 69u, 140u, 94u, 0u, 180u,
    156u, 112u, 71u, 0u, 221u, 80u, 88u, 63u,
    141u, 85u, 57u, 159u, 153u, 0u, 151u, 181u,
    152u, 52u, 0u, 237u, 101u, 118u, 67u, 128u,
    74u, 39u, 228u,
};
inline constexpr float ave_pool_pscale_in_uint8[] = {
    0.0500000007f,
};
inline constexpr uint8_t ave_pool_pzeropoint_in_uint8[] = {
    130u,
};
inline constexpr float ave_pool_pscale_out_uint8[] = {
    0.0329999998f,
};
inline constexpr uint8_t ave_pool_pzeropoint_out_uint8[] = {
    101u,
};
inline constexpr int8_t max_pool_in_data_int8[] = {
    17, -71, -23, 33, 46, -122, -123, -89,
    -7, -122, -37, 7, 107, -45, 75, -28,
    73, -111, -21, 53, -41, -19, -23, -40,
    -29, 6, 8, -4, -22, 30, 110, 53,
    -23, 36, -122, 33, -82, -37, 110, 38,
    -90, 118, 93, 111, -29, 85, -28, -123,
};
inline constexpr int8_t max_pool_out_reference_int8[] = {
    43, 54, 105, 54, 105, 11, 81, 67,
    105, 67, 107, 67, 95, 112, 95, 107,
    107, 89,
};
inline constexpr float max_pool_pscale_in_int8[] = {
    0.0399999991f,
};
inline constexpr int8_t max_pool_pzeropoint_in_int8[] = {
    -20,
};
inline constexpr float max_pool_pscale_out_int8[] = {
    0.0579999983f,
};
inline constexpr int8_t max_pool_pzeropoint_out_int8[] = {
    17,
};
inline constexpr int8_t ave_pool_in_data_int8[] = {
    20, 20, -12, 20, -105, 20, -1, 20,
    20, 20, -8, 20, 20, 11, -96, 20,
    20, 20, 20, 0, 6, 20, -105, 20,
    -54, 20, 20, -102, -51, 20, 20, -53,
    -110, -125, 20, -89, -55, 20, -15, 20,
    -52, 14, 20, -85, -11, 20, 20, -107,
    -84, 20, -88, 20, 20, 11, 1, 20,
    -60, 6, -40, 20, 20, 20, 20, -123,
    -117, -113, 20, 20, -97, 20, 20, 20,
    -81, -4, 20, -72, 20, 4, 20, -71,
    20, 20, -12, 20, 20, 2, 20, -127,
    -44, -57, -115, 19, -113, 15, -117, 20,
    -44, -116, 20, 20, 20, -98, -98, -76,
    20,
};
inline constexpr int8_t ave_pool_out_reference_int8[] = {
    20, 20, -12, 13, -30, 20, 20, 10,
    -23, 20, -94, 5, -29, -3, -41, -21,
    -1, -17, -51, -57, -46, -44, -17, -34,
    -25, -38, -1,
};
inline constexpr float ave_pool_pscale_in_int8[] = {
    0.0199999996f,
};
inline constexpr int8_t ave_pool_pzeropoint_in_int8[] = {
    -5,
};
inline constexpr float ave_pool_pscale_out_int8[] = {
    0.0199999996f,
};
inline constexpr int8_t ave_pool_pzeropoint_out_int8[] = {
    -5,
};

#endif
