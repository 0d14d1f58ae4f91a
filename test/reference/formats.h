// SPDX-License-Identifier: MIT
// Written by tools/reference/generate.py; do not edit.
#ifndef TEST_REFERENCE_FORMATS_H
#define TEST_REFERENCE_FORMATS_H

#include <cstdint>

inline constexpr const char* array_format_names[] = {
    "FMT_NONE", "FMT_FLOAT", "FMT_FLOAT64", "FMT_FLOAT16", "FMT_U8", "FMT_U16", "FMT_U32", "FMT_U64",
    "FMT_U4", "FMT_S8", "FMT_S16", "FMT_S32", "FMT_S64", "FMT_S4", "FMT_Q", "FMT_Q7",
    "FMT_Q15", "FMT_Q31", "FMT_UQ", "FMT_UQ7", "FMT_UQ15", "FMT_UQ31", "FMT_LUT4_FLOAT", "FMT_LUT8_FLOAT",
    "FMT_LUT4_Q15", "FMT_LUT8_Q15", "FMT_LUT4_UQ15", "FMT_LUT8_UQ15",
};
inline constexpr uint32_t array_format_codes[] = {
    64u, 25301056u, 25305152u, 25299008u, 263232u, 264256u, 266304u, 270400u,
    262720u, 8651840u, 8652864u, 8654912u, 8659008u, 8651328u, 8650816u, 8651847u,
    8652879u, 8654943u, 262208u, 263239u, 264271u, 266335u, 31985728u, 30412864u,
    13109327u, 11536463u, 4720719u, 3147855u,
};
inline constexpr int32_t array_format_fields[] = {
    0, 0, 0, 0, 0, 0, 0, 0,
    32, 0, 1, 0, 1, 1, 0, 64,
    0, 1, 0, 1, 1, 0, 16, 0,
    1, 0, 1, 1, 0, 8, 0, 2,
    0, 0, 0, 0, 16, 0, 2, 0,
    0, 0, 0, 32, 0, 2, 0, 0,
    0, 0, 64, 0, 2, 0, 0, 0,
    0, 4, 0, 2, 0, 0, 0, 0,
    8, 0, 2, 0, 1, 0, 0, 16,
    0, 2, 0, 1, 0, 0, 32, 0,
    2, 0, 1, 0, 0, 64, 0, 2,
    0, 1, 0, 0, 4, 0, 2, 0,
    1, 0, 0, 0, 0, 2, 0, 1,
    0, 7, 8, 0, 2, 0, 1, 0,
    15, 16, 0, 2, 0, 1, 0, 31,
    32, 0, 2, 0, 1, 0, 0, 0,
    0, 2, 0, 0, 0, 7, 8, 0,
    2, 0, 0, 0, 15, 16, 0, 2,
    0, 0, 0, 31, 32, 0, 2, 0,
    0, 0, 0, 32, 0, 4, 3, 1,
    1, 0, 32, 0, 8, 2, 1, 1,
    15, 16, 0, 4, 2, 1, 0, 15,
    16, 0, 8, 1, 1, 0, 15, 16,
    0, 4, 2, 0, 0, 15, 16, 0,
    8, 1, 0, 0,
};
inline constexpr uint32_t array_format_exported[] = {
    1u, 1u, 0u, 0u, 1u, 1u, 0u, 0u,
    0u, 1u, 1u, 0u, 0u, 0u, 1u, 1u,
    1u, 0u, 1u, 1u, 1u, 0u, 0u, 0u,
    0u, 0u, 0u, 0u,
};
inline constexpr uint32_t array_format_buffer_words[] = {
    64u, 25301056u, 64u, 64u, 263232u, 264256u, 266304u, 270400u,
    262720u, 8651840u, 8652864u, 8654912u, 8659008u, 8651328u, 8650816u, 8651847u,
    8652879u, 8654943u, 262208u, 263239u, 264271u, 266335u, 64u, 64u,
    64u, 64u, 64u, 64u,
};
inline constexpr const char* buffer_format_names[] = {
    "FMT_NONE", "FMT_FLOAT", "FMT_U8", "FMT_U16", "FMT_S8", "FMT_S16", "FMT_Q", "FMT_Q7",
    "FMT_Q15", "FMT_UQ", "FMT_UQ7", "FMT_UQ15",
};
inline constexpr uint32_t buffer_format_codes[] = {
    64u, 25301056u, 263232u, 264256u, 8651840u, 8652864u, 8650816u, 8651847u,
    8652879u, 262208u, 263239u, 264271u,
};
inline constexpr uint32_t format_all_flags[] = {
    4261412864u,
};
inline constexpr uint32_t format_kept_flags[] = {
    1744830464u,
};
inline constexpr uint32_t exported_q_words[] = {
    4156u, 4156u,
};
inline constexpr uint32_t sized_format_codes[] = {
    64u, 25301056u, 25305152u, 25299008u, 263232u, 264256u, 266304u, 270400u,
    262720u, 8651840u, 8652864u, 8654912u, 8659008u, 8651328u, 8650816u, 8651847u,
    8652879u, 8654943u, 262208u, 263239u, 264271u, 266335u, 31985728u, 30412864u,
    13109327u, 11536463u, 4720719u, 3147855u, 8700610u, 329285u, 8668361u,
};
inline constexpr uint32_t sized_format_counts[] = {
    0u, 1u, 3u, 17u,
};
inline constexpr uint32_t sized_format_bytes[] = {
    0u, 0u, 0u, 0u, 0u, 4u, 12u, 68u,
    0u, 8u, 24u, 136u, 0u, 2u, 6u, 34u,
    0u, 1u, 3u, 17u, 0u, 2u, 6u, 34u,
    0u, 4u, 12u, 68u, 0u, 8u, 24u, 136u,
    0u, 1u, 2u, 9u, 0u, 1u, 3u, 17u,
    0u, 2u, 6u, 34u, 0u, 4u, 12u, 68u,
    0u, 8u, 24u, 136u, 0u, 1u, 2u, 9u,
    0u, 0u, 0u, 0u, 0u, 1u, 3u, 17u,
    0u, 2u, 6u, 34u, 0u, 4u, 12u, 68u,
    0u, 0u, 0u, 0u, 0u, 1u, 3u, 17u,
    0u, 2u, 6u, 34u, 0u, 4u, 12u, 68u,
    0u, 65u, 66u, 73u, 0u, 1025u, 1027u, 1041u,
    0u, 33u, 34u, 41u, 0u, 513u, 515u, 529u,
    0u, 33u, 34u, 41u, 0u, 513u, 515u, 529u,
    0u, 1u, 3u, 17u, 0u, 2u, 6u, 34u,
    0u, 2u, 4u, 22u,
};
inline constexpr uint32_t sized_format_data_bytes[] = {
    0u, 0u, 0u, 0u, 0u, 4u, 12u, 68u,
    0u, 8u, 24u, 136u, 0u, 2u, 6u, 34u,
    0u, 1u, 3u, 17u, 0u, 2u, 6u, 34u,
    0u, 4u, 12u, 68u, 0u, 8u, 24u, 136u,
    0u, 1u, 2u, 9u, 0u, 1u, 3u, 17u,
    0u, 2u, 6u, 34u, 0u, 4u, 12u, 68u,
    0u, 8u, 24u, 136u, 0u, 1u, 2u, 9u,
    0u, 0u, 0u, 0u, 0u, 1u, 3u, 17u,
    0u, 2u, 6u, 34u, 0u, 4u, 12u, 68u,
    0u, 0u, 0u, 0u, 0u, 1u, 3u, 17u,
    0u, 2u, 6u, 34u, 0u, 4u, 12u, 68u,
    0u, 1u, 2u, 9u, 0u, 1u, 3u, 17u,
    0u, 1u, 2u, 9u, 0u, 1u, 3u, 17u,
    0u, 1u, 2u, 9u, 0u, 1u, 3u, 17u,
    0u, 1u, 3u, 17u, 0u, 2u, 6u, 34u,
    0u, 2u, 4u, 22u,
};
inline constexpr uint32_t sized_format_elements[] = {
    0u, 0u, 0u, 0u, 0u, 1u, 3u, 17u,
    0u, 1u, 3u, 17u, 0u, 1u, 3u, 17u,
    0u, 1u, 3u, 17u, 0u, 1u, 3u, 17u,
    0u, 1u, 3u, 17u, 0u, 1u, 3u, 17u,
    0u, 2u, 4u, 18u, 0u, 1u, 3u, 17u,
    0u, 1u, 3u, 17u, 0u, 1u, 3u, 17u,
    0u, 1u, 3u, 17u, 0u, 2u, 4u, 18u,
    0u, 0u, 0u, 0u, 0u, 1u, 3u, 17u,
    0u, 1u, 3u, 17u, 0u, 1u, 3u, 17u,
    0u, 0u, 0u, 0u, 0u, 1u, 3u, 17u,
    0u, 1u, 3u, 17u, 0u, 1u, 3u, 17u,
    0u, 2u, 4u, 18u, 0u, 1u, 3u, 17u,
    0u, 2u, 4u, 18u, 0u, 1u, 3u, 17u,
    0u, 2u, 4u, 18u, 0u, 1u, 3u, 17u,
    0u, 1u, 3u, 17u, 0u, 1u, 3u, 17u,
    0u, 1u, 3u, 17u,
};

#endif
