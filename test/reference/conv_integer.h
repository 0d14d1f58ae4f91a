// SPDX-License-Identifier: MIT
// Written by tools/reference/generate.py; do not edit.
#ifndef TEST_REFERENCE_CONV_INTEGER_H
#define TEST_REFERENCE_CONV_INTEGER_H

#include <cstdint>

inline constexpr uint8_t dense_in_data_uint8[] = {
    108u, 130u, 165u, 98u, 203u, 128u, 141u,
};
inline constexpr uint8_t dense_weight_data_uint8[] = {
    16u, 214u, 50u, 190u, 137u, 200u, 81u, 62u,
    191u, 108u, 146u, 159u, 52u, 221u, 250u, 140u,
    159u, 99u, 201u, 150u, 14u,
};
inline constexpr int32_t dense_bias_data_uint8[] = {
    -1734, 1122, -1434,
};
inline constexpr uint8_t dense_out_reference_uint8[] = {
    216u, 242u, 135u,
};
inline constexpr float dense_pscale_in_uint8[] = {
    0.0355538279f,
};
inline constexpr uint8_t dense_pzeropoint_in_uint8[] = {
    246u,
};
inline constexpr float dense_pscale_weights_uint8[] = {
    0.00759831397f,
};
inline constexpr uint8_t dense_pzeropoint_weights_uint8[] = {
    161u,
};
inline constexpr float dense_pscale_out_uint8[] = {
    0.028735647f,
};
inline constexpr uint8_t dense_pzeropoint_out_uint8[] = {
    12u,
};
inline constexpr uint8_t dense_in_data_uint8_CH[] = {
    196u, 234u, 176u, 93u, 53u, 112u, 7u, 198u,
    50u,
};
inline constexpr uint8_t dense_weight_data_uint8_CH[] = {
    243u, 219u, 180u, 132u, 137u, 146u, 77u, 85u,
    43u, 8u, 254u, 12u, 53u, 58u, 13u, 74u,
    31u, 0u, 172u, 218u, 44u, 70u, 58u, 251u,
    234u, 103u, 197u, 232u, 210u, 135u, 124u, 94u,
    59u, 195u, 151u, 166u, 89u, 148u, 158u, 248u,
    2u, 30u, 149u, 78u, 10u,
};
inline constexpr int32_t dense_bias_data_uint8_CH[] = {
    432, -402, -2963, -3141, -1699,
};
inline constexpr uint8_t dense_out_reference_uint8_CH[] = {
    172u, 32u, 54u, 242u, 12u,
};
inline constexpr float dense_pscale_in_uint8_CH[] = {
    0.0475524962f,
};
inline constexpr uint8_t dense_pzeropoint_in_uint8_CH[] = {
    18u,
};
inline constexpr float dense_pscale_weights_uint8_CH[] = {
    0.00449945033f, 0.00316660572f, 0.00959758088f, 0.00883119553f, 0.00546576269f,
};
inline constexpr uint8_t dense_pzeropoint_weights_uint8_CH[] = {
    102u, 114u, 147u, 100u, 145u,
};
inline constexpr float dense_pscale_out_uint8_CH[] = {
    0.143052876f,
};
inline constexpr uint8_t dense_pzeropoint_out_uint8_CH[] = {
    73u,
};
inline constexpr uint8_t dense_noscratch_in_data_uint8[] = {
    28u, 83u, 188u, 88u, 158u, 97u,
};
inline constexpr uint8_t dense_noscratch_weight_data_uint8[] = {
    128u, 123u, 141u, 179u, 248u, 224u, 64u, 193u,
    231u, 218u, 63u, 196u, 113u, 201u, 59u, 112u,
    232u, 124u,
};
inline constexpr int32_t dense_noscratch_bias_data_uint8[] = {
    -670, -1637, 1943,
};
inline constexpr uint8_t dense_noscratch_out_reference_uint8[] = {
    242u, 190u, 78u,
};
inline constexpr float dense_noscratch_pscale_in_uint8[] = {
    0.0329985544f,
};
inline constexpr uint8_t dense_noscratch_pzeropoint_in_uint8[] = {
    49u,
};
inline constexpr float dense_noscratch_pscale_weights_uint8[] = {
    0.00526583567f,
};
inline constexpr uint8_t dense_noscratch_pzeropoint_weights_uint8[] = {
    127u,
};
inline constexpr float dense_noscratch_pscale_out_uint8[] = {
    0.015859453f,
};
inline constexpr uint8_t dense_noscratch_pzeropoint_out_uint8[] = {
    12u,
};
inline constexpr uint8_t dense_in_data_int8sym[] = {
    117u, 187u, 199u, 83u, 7u, 81u, 250u, 49u,
    233u, 116u, 21u, 12u, 253u, 249u, 60u, 104u,
    40u, 93u,
};
inline constexpr int8_t dense_weight_data_int8sym[] = {
    90, 20, -23, 43, 22, 107, -104, 75,
    84, 106, 33, 63, -63, -26, -51, 38,
    -94, 80, -98, -103, 12, 87, 40, -22,
    -47, -113, 73, -7, -33, 61, 97, 42,
    -17, -83, 38, -99, -124, 5, -76, -61,
    58, 106, -103, -109, 106, 35, 11, 58,
    -9, 30, 0, 80, 94, -62, 85, 77,
    -128, 31, -12, 114, 86, -43, 69, -109,
    -126, 127, -119, 125, 45, -33, 118, -12,
};
inline constexpr int32_t dense_bias_data_int8sym[] = {
    2360, 2164, 2679, 2321,
};
inline constexpr uint8_t dense_out_reference_int8sym[] = {
    107u, 96u, 12u, 242u,
};
inline constexpr float dense_pscale_in_int8sym[] = {
    0.024888346f,
};
inline constexpr uint8_t dense_pzeropoint_in_int8sym[] = {
    34u,
};
inline constexpr float dense_pscale_weights_int8sym[] = {
    0.00973086525f,
};
inline constexpr int8_t dense_pzeropoint_weights_int8sym[] = {
    0,
};
inline constexpr float dense_pscale_out_int8sym[] = {
    0.0440081991f,
};
inline constexpr uint8_t dense_pzeropoint_out_int8sym[] = {
    85u,
};
inline constexpr uint8_t dense_noscratch_in_data_int8sym[] = {
    205u, 35u, 210u, 79u, 113u, 66u, 116u, 231u,
    68u, 52u, 50u,
};
inline constexpr int8_t dense_noscratch_weight_data_int8sym[] = {
    -73, 57, -78, 16, 117, -111, 118, -62,
    -33, 24, 102, -60, -39, 127, -96, -66,
    9, 5, -120, -65, 125, 118,
};
inline constexpr int32_t dense_noscratch_bias_data_int8sym[] = {
    -3988, -1324,
};
inline constexpr uint8_t dense_noscratch_out_reference_int8sym[] = {
    12u, 27u,
};
inline constexpr float dense_noscratch_pscale_in_int8sym[] = {
    0.0264437273f,
};
inline constexpr uint8_t dense_noscratch_pzeropoint_in_int8sym[] = {
    5u,
};
inline constexpr float dense_noscratch_pscale_weights_int8sym[] = {
    0.00926437043f,
};
inline constexpr int8_t dense_noscratch_pzeropoint_weights_int8sym[] = {
    0,
};
inline constexpr float dense_noscratch_pscale_out_int8sym[] = {
    0.0245985724f,
};
inline constexpr uint8_t dense_noscratch_pzeropoint_out_int8sym[] = {
    242u,
};
inline constexpr int8_t dense_in_data_int8_int8sym[] = {
    -91, 12, 93, -54, 90, -78, 109, 28,
    31, 117,
};
inline constexpr int8_t dense_weight_data_int8_int8sym[] = {
    -50, -29, -11, -22, 101, 2, 123, 15,
    43, -86, 71, -95, 114, 72, 102, -10,
    39, -89, -24, -47, -67, 19, 31, -29,
    93, 91, -43, -32, 17, -77,
};
inline constexpr int32_t dense_bias_data_int8_int8sym[] = {
    834, 2994, 215,
};
inline constexpr int8_t dense_out_reference_int8_int8sym[] = {
    114, -116, -43,
};
inline constexpr float dense_pscale_in_int8_int8sym[] = {
    0.0462193079f,
};
inline constexpr int8_t dense_pzeropoint_in_int8_int8sym[] = {
    114,
};
inline constexpr float dense_pscale_weights_int8_int8sym[] = {
    0.00809813105f,
};
inline constexpr int8_t dense_pzeropoint_weights_int8_int8sym[] = {
    0,
};
inline constexpr float dense_pscale_out_int8_int8sym[] = {
    0.0276779328f,
};
inline constexpr int8_t dense_pzeropoint_out_int8_int8sym[] = {
    -14,
};
inline constexpr int8_t dense_in_data_int8_int8sym_CH[] = {
    -2, 116, 104, -59, -60, -93, -25, -46,
    123, 53, -21, 15, -79,
};
inline constexpr int8_t dense_weight_data_int8_int8sym_CH[] = {
    34, -70, -112, 100, -88, -108, 117, 117,
    -36, 32, -73, 77, 76, -111, 70, -52,
    26, -69, -87, -55, 65, 59, -32, -16,
    -125, -108, -31, -105, -78, 38, 66, 126,
    41, 14, 107, 64, -90, -22, -111, 41,
    -71, -16, -112, -114, 23, 31, 66, 106,
    4, 24, -16, -19,
};
inline constexpr int32_t dense_bias_data_int8_int8sym_CH[] = {
    -775, -3910, -3309, 17,
};
inline constexpr int8_t dense_out_reference_int8_int8sym_CH[] = {
    -116, 97, -115, 114,
};
inline constexpr float dense_pscale_in_int8_int8sym_CH[] = {
    0.026665926f,
};
inline constexpr int8_t dense_pzeropoint_in_int8_int8sym_CH[] = {
    -34,
};
inline constexpr float dense_pscale_weights_int8_int8sym_CH[] = {
    0.00559904706f, 0.00573233142f, 0.00829805806f, 0.00483266125f,
};
inline constexpr int8_t dense_pzeropoint_weights_int8_int8sym_CH[] = {
    0, 0, 0, 0,
};
inline constexpr float dense_pscale_out_int8_int8sym_CH[] = {
    0.0205799565f,
};
inline constexpr int8_t dense_pzeropoint_out_int8_int8sym_CH[] = {
    53,
};
inline constexpr int8_t dense_noscratch_in_data_int8_int8sym[] = {
    86, -35, 115, -63, 45, -109, 96,
};
inline constexpr int8_t dense_noscratch_weight_data_int8_int8sym[] = {
    -120, -42, -10, 8, 58, 109, 90, 14,
    29, 77, 65, -3, 64, -92, 23, -50,
    37, 52, -94, -5, -27, -80, 99, -71,
    63, 114, -97, 25, 102, 12, 38, 22,
    15, -68, 74,
};
inline constexpr int32_t dense_noscratch_bias_data_int8_int8sym[] = {
    3953, -3512, 1782, 3626, 3841,
};
inline constexpr int8_t dense_noscratch_out_reference_int8_int8sym[] = {
    -85, -116, -63, -57, 114,
};
inline constexpr float dense_noscratch_pscale_in_int8_int8sym[] = {
    0.0399977788f,
};
inline constexpr int8_t dense_noscratch_pzeropoint_in_int8_int8sym[] = {
    -19,
};
inline constexpr float dense_noscratch_pscale_weights_int8_int8sym[] = {
    0.0113302786f,
};
inline constexpr int8_t dense_noscratch_pzeropoint_weights_int8_int8sym[] = {
    0,
};
inline constexpr float dense_noscratch_pscale_out_int8_int8sym[] = {
    0.0899534747f,
};
inline constexpr int8_t dense_noscratch_pzeropoint_out_int8_int8sym[] = {
    -58,
};
inline constexpr uint8_t conv1x1_in_data_uint8[] = {
    46u, 197u, 254u, 60u, 23u, 4u, 90u, 189u,
    177u, 54u, 165u, 230u, 169u, 19u, 227u, 42u,
    183u, 90u, 230u, 139u, 83u, 210u, 252u, 20u,
};
inline constexpr uint8_t conv1x1_weight_data_uint8[] = {
    155u, 119u, 229u, 4u, 19u, 45u, 55u, 86u,
};
inline constexpr int32_t conv1x1_bias_data_uint8[] = {
    -290, -635,
};
inline constexpr uint8_t conv1x1_out_reference_uint8[] = {
    180u, 107u, 12u, 242u, 44u, 90u, 204u, 129u,
    139u, 65u, 210u, 89u,
};
inline constexpr float conv1x1_pscale_in_uint8[] = {
    0.0385534912f,
};
inline constexpr uint8_t conv1x1_pzeropoint_in_uint8[] = {
    155u,
};
inline constexpr float conv1x1_pscale_weights_uint8[] = {
    0.00546576269f,
};
inline constexpr uint8_t conv1x1_pzeropoint_weights_uint8[] = {
    129u,
};
inline constexpr float conv1x1_pscale_out_uint8[] = {
    0.0392854102f,
};
inline constexpr uint8_t conv1x1_pzeropoint_out_uint8[] = {
    82u,
};
inline constexpr uint8_t conv1x1_odd_ch_in_in_data_uint8[] = {
    135u, 45u, 9u, 55u, 128u, 245u, 211u, 115u,
    13u, 247u, 194u, 18u, 102u, 75u, 55u, 184u,
    160u, 242u, 79u, 86u, 129u, 13u, 170u, 131u,
    130u, 205u, 79u, 163u, 247u, 118u, 52u, 236u,
    68u, 220u, 84u, 241u, 194u, 237u, 155u, 234u,
    134u, 250u, 251u, 118u, 50u,
};
inline constexpr uint8_t conv1x1_odd_ch_in_weight_data_uint8[] = {
    216u, 190u, 25u, 158u, 161u, 101u, 245u, 173u,
    85u, 221u,
};
inline constexpr int32_t conv1x1_odd_ch_in_bias_data_uint8[] = {
    3368, 134,
};
inline constexpr uint8_t conv1x1_odd_ch_in_out_reference_uint8[] = {
    242u, 105u, 216u, 212u, 180u, 41u, 84u, 131u,
    100u, 66u, 137u, 12u, 193u, 140u, 108u, 142u,
    74u, 164u,
};
inline constexpr float conv1x1_odd_ch_in_pscale_in_uint8[] = {
    0.0371092111f,
};
inline constexpr uint8_t conv1x1_odd_ch_in_pzeropoint_in_uint8[] = {
    156u,
};
inline constexpr float conv1x1_odd_ch_in_pscale_weights_uint8[] = {
    0.00923104864f,
};
inline constexpr uint8_t conv1x1_odd_ch_in_pzeropoint_weights_uint8[] = {
    163u,
};
inline constexpr float conv1x1_odd_ch_in_pscale_out_uint8[] = {
    0.0574229658f,
};
inline constexpr uint8_t conv1x1_odd_ch_in_pzeropoint_out_uint8[] = {
    122u,
};
inline constexpr uint8_t conv1x1_odd_ch_inout_in_data_uint8[] = {
    223u, 150u, 20u, 51u, 233u, 229u, 77u, 40u,
    104u, 183u, 222u, 61u, 34u, 131u, 140u, 69u,
    137u, 139u, 184u, 33u, 176u, 72u, 88u, 241u,
    105u, 35u, 184u, 65u, 218u, 191u, 50u, 130u,
    237u, 58u, 49u, 118u, 222u, 145u, 30u, 24u,
    171u, 146u,
};
inline constexpr uint8_t conv1x1_odd_ch_inout_weight_data_uint8[] = {
    194u, 177u, 68u, 232u, 35u, 41u, 147u, 117u,
    13u, 65u, 88u, 94u, 86u, 203u, 219u, 178u,
    208u, 55u, 1u, 198u, 42u,
};
inline constexpr int32_t conv1x1_odd_ch_inout_bias_data_uint8[] = {
    3136, 3873, -2376,
};
inline constexpr uint8_t conv1x1_odd_ch_inout_out_reference_uint8[] = {
    48u, 92u, 111u, 219u, 170u, 78u, 145u, 191u,
    12u, 91u, 129u, 242u, 163u, 78u, 63u, 133u,
    118u, 240u,
};
inline constexpr float conv1x1_odd_ch_inout_pscale_in_uint8[] = {
    0.0351094306f,
};
inline constexpr uint8_t conv1x1_odd_ch_inout_pzeropoint_in_uint8[] = {
    128u,
};
inline constexpr float conv1x1_odd_ch_inout_pscale_weights_uint8[] = {
    0.00943097472f,
};
inline constexpr uint8_t conv1x1_odd_ch_inout_pzeropoint_weights_uint8[] = {
    166u,
};
inline constexpr float conv1x1_odd_ch_inout_pscale_out_uint8[] = {
    0.069026202f,
};
inline constexpr uint8_t conv1x1_odd_ch_inout_pzeropoint_out_uint8[] = {
    115u,
};
inline constexpr int8_t conv1x1_in_data_int8_int8sym[] = {
    -73, 126, -97, -82, -45, 86, 70, 94,
    68, -8, 123, -23, 94, 59, 97, 83,
    -14, -92, -95, 108, 95, 3, -122, -32,
    -48, -7, -94, 96, 62, -120, -80, -103,
    22, 25, -113, 124, 121, -76, 33, -58,
    80, -87, 9, 109, -43, 120, 8, -72,
};
inline constexpr int8_t conv1x1_weight_data_int8_int8sym[] = {
    8, -55, 54, 13, -124, -24, 79, 121,
    79, -7, -100, 85, -57, 22, -113, 68,
};
inline constexpr int32_t conv1x1_bias_data_int8_int8sym[] = {
    2179, 1035,
};
inline constexpr int8_t conv1x1_out_reference_int8_int8sym[] = {
    33, 2, 57, -74, -102, 114, -116, 49,
    -98, 38, 12, 70,
};
inline constexpr float conv1x1_pscale_in_int8_int8sym[] = {
    0.0199999996f,
};
inline constexpr int8_t conv1x1_pzeropoint_in_int8_int8sym[] = {
    17,
};
inline constexpr float conv1x1_pscale_weights_int8_int8sym[] = {
    0.0063654324f,
};
inline constexpr int8_t conv1x1_pzeropoint_weights_int8_int8sym[] = {
    0,
};
inline constexpr float conv1x1_pscale_out_int8_int8sym[] = {
    0.0289865173f,
};
inline constexpr int8_t conv1x1_pzeropoint_out_int8_int8sym[] = {
    0,
};
inline constexpr int8_t conv1x1_odd_ch_in_in_data_int8_int8sym[] = {
    16, -26, -86, -87, 60, 70, -64, 20,
    -97, -72, -104, 21, 26, 116, -75, -32,
    -36, 61, 10, 55, -115, 62, 52, 79,
    -73, 79, 12, -1, 34, -46, -82, 47,
    -64, 119, 109, 1, -107, 88, -93, -12,
    117, 65, -47, -87, -25, -120, 110, -57,
    -4, -99, -33, 89, 48, -15, -55, -88,
    66, -65, -23, -14, 12, -26, 116, -119,
    -78, 39, -58, 76, -62, 97, 121, -25,
    -52, -60, 38, 27, 54, 49, 3, 29,
    40,
};
inline constexpr int8_t conv1x1_odd_ch_in_weight_data_int8_int8sym[] = {
    -127, 58, 68, 58, -81, 55, -15, 21,
    -82, -1, -115, -32, 69, -108, -94, -111,
    -4, 35, 9, -26, 26, 48, -115, 29,
    -119, 63, -31, 52, -29, 45, 89, 57,
    -71, -28, -70, -40,
};
inline constexpr int32_t conv1x1_odd_ch_in_bias_data_int8_int8sym[] = {
    -3906, 1387, -1874, 1780,
};
inline constexpr int8_t conv1x1_odd_ch_in_out_reference_int8_int8sym[] = {
    -9, -66, 15, 19, -36, 27, -39, 110,
    14, -40, 42, 19, -36, -111, -74, -9,
    42, -116, -59, 36, 114, -59, 0, -36,
    -11, 14, -7, 22, 29, -70, -49, 13,
    27, -35, 4, 44,
};
inline constexpr float conv1x1_odd_ch_in_pscale_in_int8_int8sym[] = {
    0.0465526059f,
};
inline constexpr int8_t conv1x1_odd_ch_in_pzeropoint_in_int8_int8sym[] = {
    -50,
};
inline constexpr float conv1x1_odd_ch_in_pscale_weights_int8_int8sym[] = {
    0.00573233142f,
};
inline constexpr int8_t conv1x1_odd_ch_in_pzeropoint_weights_int8_int8sym[] = {
    0,
};
inline constexpr float conv1x1_odd_ch_in_pscale_out_int8_int8sym[] = {
    0.0661881566f,
};
inline constexpr int8_t conv1x1_odd_ch_in_pzeropoint_out_int8_int8sym[] = {
    40,
};
inline constexpr int8_t conv1x1_in_data_int8_int8sym_CH[] = {
    104, 79, -75, -92, -90, 55, 58, -55,
    -6, 120, -75, 64, -42, -84, 10, 109,
    -59, -42, 114, 2, -68, 121, -30, -67,
    -98, -92, 118, -98, 5, 27,
};
inline constexpr int8_t conv1x1_weight_data_int8_int8sym_CH[] = {
    -84, -59, 105, -43, 74, -121, -80, -5,
    38, 34, -102, -39, -104, -27, -8, -104,
    -45, -41, -15, 113, -120, -91, -36, -5,
    66, -42, 53, -122, 53, -113,
};
inline constexpr int32_t conv1x1_bias_data_int8_int8sym_CH[] = {
    -2278, 2777, -1585, 2611, 264,
};
inline constexpr int8_t conv1x1_out_reference_int8_int8sym_CH[] = {
    -116, -33, 20, 114, -23, -84, -13, -21,
    -44, -74, -2, 4, 21, -54, -49, -70,
    -24, -30, 1, -35, 67, -8, 77, -42,
    11,
};
inline constexpr float conv1x1_pscale_in_int8_int8sym_CH[] = {
    0.0461082086f,
};
inline constexpr int8_t conv1x1_pzeropoint_in_int8_int8sym_CH[] = {
    82,
};
inline constexpr float conv1x1_pscale_weights_int8_int8sym_CH[] = {
    0.00806481019f, 0.00403295457f, 0.00676528597f, 0.00949761737f, 0.00656535942f,
};
inline constexpr int8_t conv1x1_pzeropoint_weights_int8_int8sym_CH[] = {
    0, 0, 0, 0, 0,
};
inline constexpr float conv1x1_pscale_out_int8_int8sym_CH[] = {
    0.117999479f,
};
inline constexpr int8_t conv1x1_pzeropoint_out_int8_int8sym_CH[] = {
    -45,
};
inline constexpr uint8_t conv_rgb_in_data_uint8[] = {
    64u, 55u, 64u, 32u, 143u, 167u, 51u, 255u,
    214u, 185u, 81u, 236u, 19u, 100u, 223u, 123u,
    46u, 239u, 91u, 77u, 107u, 52u, 16u, 172u,
    5u, 122u, 96u, 188u, 105u, 228u, 41u, 219u,
    146u, 179u, 168u, 140u, 75u, 30u, 40u, 208u,
    63u, 241u, 223u, 161u, 138u, 40u, 184u, 102u,
    102u, 197u, 177u, 113u, 8u, 132u, 59u, 133u,
    168u, 204u, 1u, 172u, 24u, 7u, 189u, 145u,
    116u, 105u, 144u, 101u, 251u, 1u, 141u, 111u,
    160u, 123u, 117u,
};
inline constexpr uint8_t conv_rgb_weight_data_uint8[] = {
    97u, 83u, 106u, 85u, 31u, 219u, 168u, 113u,
    12u, 169u, 2u, 100u, 174u, 213u, 116u, 205u,
    227u, 73u, 23u, 36u, 60u, 4u, 236u, 32u,
    140u, 95u, 43u, 47u, 186u, 174u, 111u, 248u,
    186u, 197u, 146u, 151u, 89u, 98u, 241u, 105u,
    50u, 2u, 9u, 222u, 174u, 139u, 38u, 164u,
    78u, 107u, 165u, 234u, 110u, 75u, 72u, 230u,
    2u, 206u, 62u, 34u, 108u, 3u, 11u, 63u,
    88u, 161u, 66u, 132u, 244u, 48u, 175u, 74u,
    62u, 230u, 43u, 238u, 45u, 30u, 164u, 68u,
    169u, 115u, 6u, 243u, 25u, 123u, 208u, 29u,
    197u, 18u, 205u, 54u, 110u, 92u, 113u, 221u,
    14u, 86u, 139u, 141u, 152u, 111u, 108u, 6u,
    2u, 157u, 133u, 29u,
};
inline constexpr int32_t conv_rgb_bias_data_uint8[] = {
    1582, 3902, 623, -559,
};
inline constexpr uint8_t conv_rgb_out_reference_uint8[] = {
    16u, 222u, 106u, 130u, 105u, 64u, 105u, 120u,
    59u, 94u, 154u, 90u, 204u, 18u, 66u, 87u,
    94u, 78u, 119u, 242u, 89u, 116u, 123u, 100u,
    12u, 118u, 71u, 146u, 78u, 65u, 186u, 183u,
    121u, 91u, 132u, 53u,
};
inline constexpr float conv_rgb_pscale_in_uint8[] = {
    0.0372203067f,
};
inline constexpr uint8_t conv_rgb_pzeropoint_in_uint8[] = {
    137u,
};
inline constexpr float conv_rgb_pscale_weights_uint8[] = {
    0.00906444341f,
};
inline constexpr uint8_t conv_rgb_pzeropoint_weights_uint8[] = {
    164u,
};
inline constexpr float conv_rgb_pscale_out_uint8[] = {
    0.115548715f,
};
inline constexpr uint8_t conv_rgb_pzeropoint_out_uint8[] = {
    60u,
};
inline constexpr uint8_t conv_rgb_in_data_int8sym[] = {
    153u, 160u, 75u, 27u, 249u, 152u, 173u, 180u,
    49u, 121u, 110u, 24u, 207u, 156u, 51u, 8u,
    24u, 136u, 196u, 24u, 153u, 111u, 190u, 27u,
    236u, 208u, 201u, 91u, 76u, 45u, 39u, 114u,
    59u, 18u, 133u, 18u, 103u, 194u, 171u, 253u,
    100u, 137u, 166u, 220u, 155u, 56u, 29u, 117u,
    91u, 153u, 90u, 189u, 180u, 142u, 181u, 179u,
    156u, 147u, 77u, 74u, 93u, 215u, 162u, 213u,
    21u, 75u, 53u, 49u, 216u, 145u, 87u, 115u,
    201u, 22u, 221u,
};
inline constexpr int8_t conv_rgb_weight_data_int8sym[] = {
    -60, -95, -58, 61, -32, 116, 123, -51,
    48, 32, 107, 58, 76, -11, -105, 116,
    77, -66, 64, -83, 73, -2, 36, -33,
    -114, -36, -12, -18, 17, 55, -94, 21,
    103, 77, 42, -116,
};
inline constexpr int32_t conv_rgb_bias_data_int8sym[] = {
    1740, -1568, -642,
};
inline constexpr uint8_t conv_rgb_out_reference_int8sym[] = {
    123u, 152u, 120u, 192u, 215u, 120u, 167u, 159u,
    51u, 203u, 242u, 97u, 202u, 109u, 151u, 136u,
    149u, 58u, 220u, 198u, 148u, 195u, 180u, 18u,
    154u, 154u, 131u, 230u, 143u, 156u, 236u, 169u,
    88u, 176u, 205u, 77u, 159u, 119u, 169u, 227u,
    195u, 12u, 164u, 200u, 116u, 156u, 149u, 25u,
};
inline constexpr float conv_rgb_pscale_in_int8sym[] = {
    0.0251105428f,
};
inline constexpr uint8_t conv_rgb_pzeropoint_in_int8sym[] = {
    24u,
};
inline constexpr float conv_rgb_pscale_weights_int8sym[] = {
    0.00589893712f,
};
inline constexpr int8_t conv_rgb_pzeropoint_weights_int8sym[] = {
    0,
};
inline constexpr float conv_rgb_pscale_out_int8sym[] = {
    0.055282373f,
};
inline constexpr uint8_t conv_rgb_pzeropoint_out_int8sym[] = {
    117u,
};
inline constexpr int8_t conv_rgb_in_data_int8_int8sym[] = {
    113, -120, -42, -106, -30, 8, -90, -22,
    12, -70, 11, -61, 11, 85, 8, 21,
    -127, -95, -83, 99, 72, 42, -20, 9,
    83, -90, -77, 122, -80, -9, -91, -120,
    100, -16, -29, 23, 2, -27, -83, -85,
    9, -95, -19, -104, 45, -56, 2, 5,
};
inline constexpr int8_t conv_rgb_weight_data_int8_int8sym[] = {
    -48, -19, -126, -120, -33, 23, -82, 98,
    15, -38, 26, 103, 35, 40, 6, -103,
    54, -84, 91, 125, 53, -95, -95, -9,
    115, 50, -59, -88, 112, -93, -90, 33,
    -114, -50, -88, -44, 23, 84, -111, 107,
    -107, 58, -101, 56, -77, -23, -75, -42,
    120, -36, 29, 16, -40, 61,
};
inline constexpr int32_t conv_rgb_bias_data_int8_int8sym[] = {
    -743, 1989,
};
inline constexpr int8_t conv_rgb_out_reference_int8_int8sym[] = {
    -44, 2, -70, -62, -91, -39, -65, -99,
    -12, -16, -66, 114, -9, -9, -29, 35,
    -116, -16, -81, 45, -67, 9, -71, -63,
    -68, 21, -93, -65, -17, 3, -47, -115,
};
inline constexpr float conv_rgb_pscale_in_int8_int8sym[] = {
    0.0436640382f,
};
inline constexpr int8_t conv_rgb_pzeropoint_in_int8_int8sym[] = {
    46,
};
inline constexpr float conv_rgb_pscale_weights_int8_int8sym[] = {
    0.00466605555f,
};
inline constexpr int8_t conv_rgb_pzeropoint_weights_int8_int8sym[] = {
    0,
};
inline constexpr float conv_rgb_pscale_out_int8_int8sym[] = {
    0.0930705518f,
};
inline constexpr int8_t conv_rgb_pzeropoint_out_int8_int8sym[] = {
    -57,
};
inline constexpr int8_t conv_rgb_in_data_int8_int8sym_CH[] = {
    -55, -16, -31, -110, 75, -7, 32, -96,
    104, 122, 40, -17, -57, -115, 92, -93,
    106, 58, 22, 46, 119, 101, -102, 120,
    58, -5, 29, 25, -108, 64, -93, 30,
    13, 78, -64, -99, 29, -119, 48, -39,
    46, 57, -76, -44, 62, -40, 104, 20,
    -60, -63, 43, -44, -117, 32, 39, -111,
    2, -96, 102, 4, 105, -8, -21, -35,
    -42, -115, 0, 73, 17, 49, 107, -5,
    -99, -51, 44,
};
inline constexpr int8_t conv_rgb_weight_data_int8_int8sym_CH[] = {
    -117, 62, 127, 15, 98, -89, 34, -124,
    120, 15, 61, -25, -119, 53, -35, -62,
    35, -89, -110, -67, 99, -14, -108, 92,
    -110, -43, -123, 109, -66, 72, 8, 78,
    -65, 94, 89, 118, 24, -31, -122, -16,
    -91, -128, 34, 39, 50, -11, -52, -77,
    -55, 57, -105, -112, -117, 119, -78, 68,
    117, -111, -112, -44, -99, -11, 17, 72,
    66, -57, 47, -61, -54, -99, -32, 95,
    33, -88, 64, -9, -71, 81, -96, 122,
    -74, -72, -70, -88, 54, 110, 43, 32,
    -91, 29, -80, 16, -84, -85, -126, -8,
    -1, -15, 21, 96, 7, 110, 105, 62,
    -40, -31, -125, -119, 29, -3, 117, 123,
    26, -62, -119, -7, -18, 20, 65, -95,
    -87, 25, 2, 88, -79, 102, -41, -89,
    54, -87, -69, -128, 24, 116, 76,
};
inline constexpr int32_t conv_rgb_bias_data_int8_int8sym_CH[] = {
    -349, -2245, 2603, 342, 998,
};
inline constexpr int8_t conv_rgb_out_reference_int8_int8sym_CH[] = {
    61, -41, -81, 71, -14, 81, 66, 16,
    -7, 32, 77, -77, 61, 50, 61, -37,
    114, -30, 86, -116,
};
inline constexpr float conv_rgb_pscale_in_int8_int8sym_CH[] = {
    0.0314431712f,
};
inline constexpr int8_t conv_rgb_pzeropoint_in_int8_int8sym_CH[] = {
    31,
};
inline constexpr float conv_rgb_pscale_weights_int8_int8sym_CH[] = {
    0.0102306828f, 0.0100973975f, 0.00656535942f, 0.00723178172f, 0.00526583567f,
};
inline constexpr int8_t conv_rgb_pzeropoint_weights_int8_int8sym_CH[] = {
    0, 0, 0, 0, 0,
};
inline constexpr float conv_rgb_pscale_out_int8_int8sym_CH[] = {
    0.0921611339f,
};
inline constexpr int8_t conv_rgb_pzeropoint_out_int8_int8sym_CH[] = {
    -34,
};
inline constexpr int8_t conv_basic_in_data_int8_int8sym_CH[] = {
    34, 89, -20, -115, -75, -22, -103, 85,
    -61, 59, 69, 27, -125, -59, -79, 48,
    84, -45, 127, -7, -90, -96, 72, -25,
    33, 81, -121, -72, 119, -119, -95, -76,
    -73, -84, -98, 34, 57, 44, -77, 7,
};
inline constexpr int8_t conv_basic_weight_data_int8_int8sym_CH[] = {
    83, -47, 123, 16, 80, -24, -51, 36,
    -71, -107, -44, 32, 55, 42, -95, -65,
    -11, 103, -78, -94, -81, -56, -48, 34,
    119, 111, -91, 22, -18, -62, 53, 0,
    -58, 105, -108, 110,
};
inline constexpr int32_t conv_basic_bias_data_int8_int8sym_CH[] = {
    2876, 3739, -2897,
};
inline constexpr int8_t conv_basic_out_reference_int8_int8sym_CH[] = {
    9, -66, 17, -59, 100, -83, -116, -22,
    -25, 45, -4, -53, -76, -43, -14, 114,
    32, -110, 32, 90, -8, 25, 37, 16,
    34, -34, -97,
};
inline constexpr float conv_basic_pscale_in_int8_int8sym_CH[] = {
    0.0271103196f,
};
inline constexpr int8_t conv_basic_pzeropoint_in_int8_int8sym_CH[] = {
    13,
};
inline constexpr float conv_basic_pscale_weights_int8_int8sym_CH[] = {
    0.0111636724f, 0.0104306089f, 0.00819809362f,
};
inline constexpr int8_t conv_basic_pzeropoint_weights_int8_int8sym_CH[] = {
    0, 0, 0,
};
inline constexpr float conv_basic_pscale_out_int8_int8sym_CH[] = {
    0.086497575f,
};
inline constexpr int8_t conv_basic_pzeropoint_out_int8_int8sym_CH[] = {
    -10,
};
inline constexpr uint8_t conv_k_in_data_uint8[] = {
    250u, 65u, 119u, 8u, 158u, 90u, 147u, 139u,
    159u, 123u, 225u, 198u, 191u, 125u, 134u, 61u,
    189u, 236u, 104u, 68u, 84u, 91u, 118u, 213u,
    136u, 39u, 113u, 214u, 219u, 82u, 30u, 203u,
    224u, 139u, 252u, 40u, 212u, 80u, 181u, 181u,
};
inline constexpr uint8_t conv_k_weight_data_uint8[] = {
    248u, 233u, 194u, 204u, 225u, 119u, 178u, 179u,
    46u, 233u, 253u, 236u, 99u, 179u, 154u, 110u,
    105u, 174u, 126u, 191u, 116u, 25u, 52u, 230u,
    152u, 208u, 202u, 98u, 75u, 210u, 127u, 132u,
    112u, 132u, 124u, 209u,
};
inline constexpr int32_t conv_k_bias_data_uint8[] = {
    -993, -868, -1192,
};
inline constexpr uint8_t conv_k_out_reference_uint8[] = {
    167u, 23u, 75u, 120u, 92u, 84u, 193u, 96u,
    109u, 181u, 119u, 136u, 242u, 12u, 108u, 122u,
    143u, 125u, 195u, 29u, 74u, 81u, 66u, 84u,
    166u, 83u, 60u,
};
inline constexpr float conv_k_pscale_in_uint8[] = {
    0.0279991105f,
};
inline constexpr uint8_t conv_k_pzeropoint_in_uint8[] = {
    91u,
};
inline constexpr float conv_k_pscale_weights_uint8[] = {
    0.00923104864f,
};
inline constexpr uint8_t conv_k_pzeropoint_weights_uint8[] = {
    148u,
};
inline constexpr float conv_k_pscale_out_uint8[] = {
    0.095511511f,
};
inline constexpr uint8_t conv_k_pzeropoint_out_uint8[] = {
    106u,
};
inline constexpr uint8_t conv_dw_in_data_uint8[] = {
    82u, 169u, 130u, 4u, 8u, 75u, 12u, 65u,
    250u, 60u, 254u, 242u, 124u, 182u, 218u, 203u,
    166u, 133u, 209u, 15u, 131u, 150u, 36u, 68u,
    111u, 125u, 218u, 117u, 190u, 156u, 28u, 97u,
    137u, 233u, 217u, 173u,
};
inline constexpr uint8_t conv_dw_weight_data_uint8[] = {
    239u, 243u, 56u, 227u, 29u, 128u, 137u, 7u,
    243u, 135u, 23u, 194u, 35u, 189u, 166u, 56u,
    15u, 189u,
};
inline constexpr int32_t conv_dw_bias_data_uint8[] = {
    -1110, -350, 2344,
};
inline constexpr uint8_t conv_dw_out_reference_uint8[] = {
    75u, 151u, 242u, 67u, 12u, 227u, 187u, 122u,
    194u, 189u, 85u, 190u,
};
inline constexpr float conv_dw_pscale_in_uint8[] = {
    0.030221086f,
};
inline constexpr uint8_t conv_dw_pzeropoint_in_uint8[] = {
    19u,
};
inline constexpr float conv_dw_pscale_weights_uint8[] = {
    0.00919772685f,
};
inline constexpr uint8_t conv_dw_pzeropoint_weights_uint8[] = {
    139u,
};
inline constexpr float conv_dw_pscale_out_uint8[] = {
    0.112510681f,
};
inline constexpr uint8_t conv_dw_pzeropoint_out_uint8[] = {
    153u,
};
inline constexpr uint8_t conv_dw_group_in_data_uint8[] = {
    171u, 18u, 141u, 255u, 113u, 59u, 134u, 246u,
    85u, 252u, 27u, 30u, 56u, 238u, 47u, 88u,
    143u, 30u, 58u, 218u, 178u, 209u, 210u, 179u,
    86u, 210u, 68u, 20u, 162u, 229u, 26u, 247u,
    50u, 71u, 183u, 51u, 11u, 150u, 186u, 17u,
    66u, 24u, 80u, 67u, 5u, 151u, 124u, 210u,
    23u, 144u, 79u, 132u, 187u, 198u, 141u, 203u,
    79u, 59u, 23u, 249u, 0u, 185u, 253u, 110u,
    218u, 147u, 20u, 250u, 4u, 242u, 19u, 140u,
    195u, 187u, 75u, 151u, 248u, 113u, 49u, 230u,
    140u, 239u, 114u, 137u, 108u, 98u, 193u, 131u,
    53u, 233u, 221u, 79u, 251u, 181u, 94u, 24u,
    88u, 244u, 214u, 25u, 71u, 40u, 235u, 153u,
    233u, 83u, 65u, 241u, 255u, 54u, 201u, 151u,
    180u, 119u, 121u, 20u, 84u, 24u, 93u, 183u,
    3u, 40u, 157u, 66u, 203u, 174u, 66u, 49u,
    220u, 191u, 236u, 57u, 107u, 125u, 235u, 180u,
    99u, 154u, 125u, 79u, 35u, 64u, 151u, 104u,
    4u, 248u, 166u, 208u, 128u, 133u, 131u, 158u,
    21u, 198u, 237u, 70u, 147u, 214u, 24u, 135u,
    135u, 37u, 250u, 250u, 0u, 96u, 94u, 127u,
    233u, 196u, 157u, 193u, 65u, 77u, 251u, 197u,
    65u, 230u, 180u, 203u,
};
inline constexpr uint8_t conv_dw_group_weight_data_uint8[] = {
    104u, 170u, 238u, 12u, 232u, 79u, 249u, 77u,
    178u, 71u, 212u, 114u, 182u, 95u, 236u, 183u,
    55u, 20u, 138u, 192u, 196u, 248u, 143u, 146u,
    99u, 88u, 73u, 205u, 186u, 84u, 75u, 28u,
    220u, 36u, 135u, 123u, 166u, 162u, 225u, 22u,
    121u, 191u, 33u, 0u, 126u, 18u, 10u, 210u,
    49u, 59u, 190u, 26u, 234u, 171u, 147u, 179u,
    168u, 154u, 90u, 156u, 35u, 138u, 244u, 189u,
    63u, 83u, 83u, 119u, 191u, 250u, 178u, 217u,
    190u, 57u, 75u, 109u, 245u, 232u, 11u, 6u,
    156u,
};
inline constexpr int32_t conv_dw_group_bias_data_uint8[] = {
    -2811, 1778, 526, -322, -2514, -3043, 1169, 232,
    3740,
};
inline constexpr uint8_t conv_dw_group_out_reference_uint8[] = {
    89u, 151u, 90u, 144u, 74u, 68u, 171u, 102u,
    108u, 123u, 112u, 130u, 157u, 123u, 24u, 242u,
    90u, 101u, 74u, 118u, 107u, 166u, 108u, 57u,
    164u, 132u, 110u, 105u, 94u, 88u, 139u, 126u,
    48u, 158u, 149u, 164u, 81u, 119u, 53u, 165u,
    113u, 62u, 162u, 146u, 120u, 110u, 102u, 115u,
    143u, 130u, 50u, 110u, 160u, 138u, 121u, 130u,
    91u, 75u, 99u, 35u, 141u, 94u, 98u, 126u,
    111u, 102u, 152u, 86u, 12u, 130u, 167u, 72u,
    75u, 98u, 89u, 129u, 157u, 67u, 114u, 148u,
    101u, 140u, 71u, 80u, 133u, 125u, 49u, 146u,
    125u, 105u, 75u, 71u, 30u, 89u, 123u, 48u,
    108u, 161u, 144u, 134u, 81u, 103u, 155u, 100u,
    57u, 74u, 135u, 117u,
};
inline constexpr float conv_dw_group_pscale_in_uint8[] = {
    0.0467748046f,
};
inline constexpr uint8_t conv_dw_group_pzeropoint_in_uint8[] = {
    214u,
};
inline constexpr float conv_dw_group_pscale_weights_uint8[] = {
    0.00899780076f,
};
inline constexpr uint8_t conv_dw_group_pzeropoint_weights_uint8[] = {
    121u,
};
inline constexpr float conv_dw_group_pscale_out_uint8[] = {
    0.260895699f,
};
inline constexpr uint8_t conv_dw_group_pzeropoint_out_uint8[] = {
    118u,
};
inline constexpr uint8_t conv_dw_in_data_int8sym[] = {
    3u, 122u, 152u, 250u, 219u, 44u, 0u, 172u,
    177u, 189u, 56u, 73u, 244u, 38u, 131u, 230u,
    121u, 183u, 163u, 165u, 224u, 12u, 128u, 33u,
};
inline constexpr int8_t conv_dw_weight_data_int8sym[] = {
    -67, -88, 46, 51, 6, -82, -104, 14,
    91, 37, 20, 56,
};
inline constexpr int32_t conv_dw_bias_data_int8sym[] = {
    -2178, -2076,
};
inline constexpr uint8_t conv_dw_out_reference_int8sym[] = {
    230u, 186u, 210u, 74u, 242u, 167u, 168u, 12u,
};
inline constexpr float conv_dw_pscale_in_int8sym[] = {
    0.0268881228f,
};
inline constexpr uint8_t conv_dw_pzeropoint_in_int8sym[] = {
    38u,
};
inline constexpr float conv_dw_pscale_weights_int8sym[] = {
    0.00643207505f,
};
inline constexpr int8_t conv_dw_pzeropoint_weights_int8sym[] = {
    0,
};
inline constexpr float conv_dw_pscale_out_int8sym[] = {
    0.0315484367f,
};
inline constexpr uint8_t conv_dw_pzeropoint_out_int8sym[] = {
    168u,
};
inline constexpr uint8_t conv_dw_group_in_data_int8sym[] = {
    91u, 226u, 163u, 245u, 68u, 28u, 121u, 97u,
    12u, 125u, 85u, 117u, 176u, 95u, 216u, 115u,
    98u, 80u, 11u, 111u, 15u, 71u, 46u, 144u,
    36u, 126u, 24u, 82u, 105u, 119u, 22u, 36u,
    132u, 4u, 114u, 62u, 65u, 221u, 192u, 108u,
    140u, 72u, 222u, 187u, 40u, 183u, 71u, 240u,
    1u, 56u, 160u, 28u, 18u, 217u, 128u, 40u,
    54u, 200u, 175u, 52u, 139u, 90u, 199u, 246u,
    27u, 86u, 95u, 147u, 190u, 18u, 167u, 148u,
    23u, 242u, 27u, 93u, 149u, 41u, 2u, 104u,
    190u, 150u, 41u, 209u, 90u, 52u, 110u, 191u,
    117u, 47u, 43u, 36u, 228u, 7u, 110u, 50u,
    76u, 100u, 84u, 28u, 64u, 185u, 106u, 70u,
    250u, 185u, 122u, 74u, 16u, 101u, 179u, 23u,
    94u, 47u, 126u, 12u, 253u, 211u, 56u, 185u,
    74u, 150u, 81u, 62u, 84u, 250u, 91u, 68u,
    79u, 6u, 128u, 219u, 152u, 179u, 183u, 128u,
    90u, 159u, 216u, 150u, 145u, 137u, 193u, 247u,
    247u, 195u, 9u, 104u, 172u, 232u, 136u, 80u,
    54u, 25u, 102u, 79u, 192u, 164u, 145u, 239u,
    212u, 98u, 167u, 228u, 178u, 247u, 68u, 168u,
    200u, 37u, 175u, 97u, 169u, 169u, 136u, 100u,
    235u, 229u, 48u, 4u,
};
inline constexpr int8_t conv_dw_group_weight_data_int8sym[] = {
    107, 126, 96, 68, 30, -4, 120, 39,
    106, 102, -127, 115, 71, 46, -46, 126,
    7, 93, 99, -121, 51, -55, 66, 0,
    1, -26, 110, -25, -100, 24, 33, 112,
    45, 77, -123, 105, -58, 6, -26, -21,
    119, -4, -25, -100, 2, -6, 11, -13,
    -26, -5, -54, -111, -71, -53,
};
inline constexpr int32_t conv_dw_group_bias_data_int8sym[] = {
    3868, -297, -2211, 1549, 337, -35, -2166, 646,
    2908,
};
inline constexpr uint8_t conv_dw_group_out_reference_int8sym[] = {
    163u, 113u, 130u, 146u, 42u, 111u, 162u, 217u,
    101u, 178u, 155u, 130u, 149u, 34u, 139u, 177u,
    211u, 116u, 87u, 222u, 88u, 79u, 20u, 137u,
    54u, 217u, 93u, 151u, 242u, 56u, 113u, 12u,
    129u, 42u, 189u, 85u, 72u, 194u, 80u, 85u,
    67u, 154u, 19u, 185u, 108u, 101u, 193u, 55u,
    61u, 37u, 113u, 47u, 196u, 150u,
};
inline constexpr float conv_dw_group_pscale_in_int8sym[] = {
    0.037664704f,
};
inline constexpr uint8_t conv_dw_group_pzeropoint_in_int8sym[] = {
    208u,
};
inline constexpr float conv_dw_group_pscale_weights_int8sym[] = {
    0.00523251481f,
};
inline constexpr int8_t conv_dw_group_pzeropoint_weights_int8sym[] = {
    0,
};
inline constexpr float conv_dw_group_pscale_out_int8sym[] = {
    0.0668130741f,
};
inline constexpr uint8_t conv_dw_group_pzeropoint_out_int8sym[] = {
    125u,
};
inline constexpr int8_t conv_dw_in_data_int8_int8sym[] = {
    52, -53, 46, 113, 45, -115, 115, -105,
    -25, -66, -15, 33, -20, 23, -83, -128,
    -53, 105, -12, -70, -66, 2, 92, 126,
    -117, 84, 2, 112, -51, 65, -108, 58,
    -83, -30, -49, 67, -35, 1, -62, 26,
    49, 96, 37, 119, -71, 71, 44, -128,
};
inline constexpr int8_t conv_dw_weight_data_int8_int8sym[] = {
    118, -116, -55, -24, 62, 98, 121, -41,
    -87, 15, 123, 81, 81, -86, 43, -70,
    60, -73, -124, -33, 26, 34, -15, 24,
    -64, 14, 2,
};
inline constexpr int32_t conv_dw_bias_data_int8_int8sym[] = {
    -880, -3808, -648,
};
inline constexpr int8_t conv_dw_out_reference_int8_int8sym[] = {
    114, 11, -40, -66, -68, -22, 56, 14,
    99, -103, -116, -108,
};
inline constexpr float conv_dw_pscale_in_int8_int8sym[] = {
    0.0386645943f,
};
inline constexpr int8_t conv_dw_pzeropoint_in_int8_int8sym[] = {
    -64,
};
inline constexpr float conv_dw_pscale_weights_int8_int8sym[] = {
    0.010197361f,
};
inline constexpr int8_t conv_dw_pzeropoint_weights_int8_int8sym[] = {
    0,
};
inline constexpr float conv_dw_pscale_out_int8_int8sym[] = {
    0.106684454f,
};
inline constexpr int8_t conv_dw_pzeropoint_out_int8_int8sym[] = {
    -24,
};
inline constexpr int8_t conv_dw_in_data_int8_int8sym_CH[] = {
    -116, 51, 57, 108, -105, 125, -20, 77,
    67, 126, 14, 76, -88, 79, 1, 14,
    -75, 2, 93, -123, -20, 61, 10, -19,
    115, -86, 107, 15, -80, -118, -111, -48,
    87, 64, -83, -55, -8, -92, 69, 72,
    86, -8, -20, -78, -53, 87, -111, -113,
    107, 96, 114, 52, -22, 108, -14, 5,
    -100, -42, -56, -17, -105, 123, 16, -1,
    -35, -104, 41, -85, -9, -78, -69, 28,
};
inline constexpr int8_t conv_dw_weight_data_int8_int8sym_CH[] = {
    -22, -87, 106, -92, -78, 98, 83, 105,
    113, -68, 96, -103, -55, -122, -102, 124,
    53, -12, -7, 122, 78, -39, -1, -52,
};
inline constexpr int32_t conv_dw_bias_data_int8_int8sym_CH[] = {
    2645, 2543, -3002, -2218, -1649, 3281,
};
inline constexpr int8_t conv_dw_out_reference_int8_int8sym_CH[] = {
    -30, -6, 63, -85, -35, -70, -29, -6,
    44, -116, -12, -2, -23, -26, 23, -76,
    -42, -3, -8, -50, -39, -50, -2, -4,
    -3, 7, 85, -68, -31, -27, -47, -34,
    16, -42, -26, -50, -18, -5, 114, -105,
    -2, -27, -17, -62, 6, -84, -53, 5,
};
inline constexpr float conv_dw_pscale_in_int8_int8sym_CH[] = {
    0.0469969995f,
};
inline constexpr int8_t conv_dw_pzeropoint_in_int8_int8sym_CH[] = {
    -65,
};
inline constexpr float conv_dw_pscale_weights_int8_int8sym_CH[] = {
    0.00336653227f, 0.00403295457f, 0.0089644799f, 0.0084313415f, 0.0040662759f, 0.00793152489f,
};
inline constexpr int8_t conv_dw_pzeropoint_weights_int8_int8sym_CH[] = {
    0, 0, 0, 0, 0, 0,
};
inline constexpr float conv_dw_pscale_out_int8_int8sym_CH[] = {
    0.115057774f,
};
inline constexpr int8_t conv_dw_pzeropoint_out_int8_int8sym_CH[] = {
    -26,
};
inline constexpr int8_t conv_dw_group_in_data_int8_int8sym[] = {
    -28, -100, 68, 103, 0, 110, 102, 2,
    -98, 63, 43, 120, 101, -121, 86, -101,
    -98, -101, -58, 80, 27, 120, -73, 92,
    90, -1, -43, -82, -108, -45, -113, 103,
    0, -98, -117, 79, 19, 72, -57, 118,
    123, -112, -77, -18, -36, 103, -10, -97,
    95, 52, 27, -128, -106, 117, 108, 52,
    -112, -100, 20, -116, -36, 75, -11, 67,
    126, 122, -50, 120, -44, 67, -122, 33,
    20, 69, -46, -121, -128, 62, -68, -86,
    -118, 16, 59, 61, -64, 111, -15, -101,
    -43, -105, 31, 101, 66, -127, 7, 89,
    57, 12, -113, 33, -75, 19, -88, 74,
    -108, 82, -48, 80, -87, 44, -111, -41,
    -36, -60, 5, 127, 124, -20, -127, 61,
};
inline constexpr int8_t conv_dw_group_weight_data_int8_int8sym[] = {
    -75, 59, 97, -72, 34, -20, 1, 96,
    123, 111, -34, 77, 92, 5, 104, -79,
    76, -91, -32, -128, -74, 118, 0, -51,
    100, -11, 31, 75, 109, -4, -111, -36,
    105, 22, -100, 91, 4, 88, 69, 11,
    -57, -67, -85, -61, -68, -38, 31, -26,
};
inline constexpr int32_t conv_dw_group_bias_data_int8_int8sym[] = {
    1729, -1667, 2603, 2163, 1609, 2891, -1412, -688,
};
inline constexpr int8_t conv_dw_group_out_reference_int8_int8sym[] = {
    -15, 89, 106, -52, 66, 39, -82, 27,
    -116, 23, 114, 20, 13, -49, 25, 46,
    -18, -64, 33, 47, 36, 84, -51, 5,
    34, -12, -53, 99, -35, 113, 49, 69,
    -108, 15, -3, 98, -63, 21, 56, 4,
    -42, -84, 47, 40, 113, 26, 75, -62,
};
inline constexpr float conv_dw_group_pscale_in_int8_int8sym[] = {
    0.0308876783f,
};
inline constexpr int8_t conv_dw_group_pzeropoint_in_int8_int8sym[] = {
    23,
};
inline constexpr float conv_dw_group_pscale_weights_int8_int8sym[] = {
    0.0107304994f,
};
inline constexpr int8_t conv_dw_group_pzeropoint_weights_int8_int8sym[] = {
    0,
};
inline constexpr float conv_dw_group_pscale_out_int8_int8sym[] = {
    0.0715247989f,
};
inline constexpr int8_t conv_dw_group_pzeropoint_out_int8_int8sym[] = {
    12,
};
inline constexpr int8_t conv_dw_group4_in_data_int8_int8sym[] = {
    60, 4, 79, 99, 106, 95, -33, -72,
    -6, -1, 72, -92, 33, -64, -85, 40,
    -121, 51, 47, 27, 74, -77, 101, -54,
    65, 85, 63, 77, 120, 28, -115, -3,
    -87, -3, 104, -44, 47, -21, 74, -92,
    -96, 40, 122, 42, -18, 119, 91, -82,
};
inline constexpr int8_t conv_dw_group4_weight_data_int8_int8sym[] = {
    84, 8, -60, -52, 66, 126, -27, 98,
    -125, 99, 96, 41, 34, 27, -39, -121,
    31, 91, 116, 68, -80, -45, 80, 37,
    62, -32, 58, 106, 79, 27, 37, -21,
    -92, 99, 23, -31,
};
inline constexpr int32_t conv_dw_group4_bias_data_int8_int8sym[] = {
    2781, 2245, -2201, 3658,
};
inline constexpr int8_t conv_dw_group4_out_reference_int8_int8sym[] = {
    -26, 13, 18, 2, -84, -4, 57, 18,
    -8, 59, 50, -50, -4, 58, 55, -8,
    71, -10, -25, 60, -41, 14, 54, 20,
    -116, 111, 79, 59, 38, 85, 114, -48,
    -8, 102, 25, 18, 62, 35, -26, 23,
    10, 14, 47, 7, -96, 42, 102, 25,
    -27, 37, 50, -1, -20, 79, 9, 65,
    59, 83, -11, -49,
};
inline constexpr float conv_dw_group4_pscale_in_int8_int8sym[] = {
    0.0406643711f,
};
inline constexpr int8_t conv_dw_group4_pzeropoint_in_int8_int8sym[] = {
    -73,
};
inline constexpr float conv_dw_group4_pscale_weights_int8_int8sym[] = {
    0.00959758088f,
};
inline constexpr int8_t conv_dw_group4_pzeropoint_weights_int8_int8sym[] = {
    0,
};
inline constexpr float conv_dw_group4_pscale_out_int8_int8sym[] = {
    0.143051043f,
};
inline constexpr int8_t conv_dw_group4_pzeropoint_out_int8_int8sym[] = {
    -17,
};
inline constexpr uint8_t conv_pad_in_data_uint8[] = {
    21u, 236u, 218u, 222u, 83u, 207u, 217u, 238u,
    213u, 64u, 229u, 79u, 93u, 120u, 127u, 54u,
    240u, 76u, 24u, 102u, 248u, 110u, 147u, 185u,
};
inline constexpr uint8_t conv_pad_weight_data_uint8[] = {
    168u, 43u, 41u, 107u, 219u, 230u, 11u, 19u,
    210u, 219u, 198u, 218u, 202u, 14u, 77u, 82u,
    69u, 64u, 193u, 230u, 127u, 7u, 65u, 61u,
    201u, 92u, 237u, 152u, 109u, 8u, 222u, 17u,
    246u, 169u, 44u, 71u,
};
inline constexpr int32_t conv_pad_bias_data_uint8[] = {
    -2049, -1641, -2002,
};
inline constexpr uint8_t conv_pad_out_reference_uint8[] = {
    93u, 151u, 160u, 84u, 126u, 75u, 141u, 120u,
    104u, 97u, 128u, 86u, 164u, 97u, 97u, 127u,
    125u, 120u, 48u, 174u, 152u, 89u, 210u, 75u,
    39u, 142u, 152u, 86u, 172u, 111u, 121u, 106u,
    53u, 186u, 67u, 140u, 54u, 168u, 182u, 12u,
    242u, 184u, 53u, 216u, 137u, 152u, 206u, 140u,
    154u, 141u, 79u, 175u, 127u, 113u, 92u, 144u,
    162u, 59u, 179u, 156u, 169u, 208u, 109u, 102u,
    146u, 111u, 163u, 169u, 113u, 125u, 123u, 114u,
};
inline constexpr float conv_pad_pscale_in_uint8[] = {
    0.040886566f,
};
inline constexpr uint8_t conv_pad_pzeropoint_in_uint8[] = {
    232u,
};
inline constexpr float conv_pad_pscale_weights_uint8[] = {
    0.00809813105f,
};
inline constexpr uint8_t conv_pad_pzeropoint_weights_uint8[] = {
    124u,
};
inline constexpr float conv_pad_pscale_out_uint8[] = {
    0.158720106f,
};
inline constexpr uint8_t conv_pad_pzeropoint_out_uint8[] = {
    129u,
};
inline constexpr uint8_t conv_pad_in_data_int8sym[] = {
    109u, 85u, 229u, 217u, 189u, 192u, 82u, 163u,
    48u, 0u, 1u, 123u, 25u, 176u, 212u, 195u,
    218u, 229u, 129u, 49u, 39u, 169u, 65u, 40u,
    143u, 129u, 146u, 10u, 191u, 47u, 9u, 170u,
    123u, 57u, 163u, 95u,
};
inline constexpr int8_t conv_pad_weight_data_int8sym[] = {
    101, 50, 79, -1, -22, 87, 8, -94,
    17, -106, 38, -51, 62, -80, 21, 100,
    -103, -111, -40, -64, 105, -16, -7, 100,
    -82, -68, -93, 15, 96, 30, -66, -36,
    106, -13, -28, 45,
};
inline constexpr int32_t conv_pad_bias_data_int8sym[] = {
    733, 299,
};
inline constexpr uint8_t conv_pad_out_reference_int8sym[] = {
    74u, 175u, 12u, 155u, 35u, 109u, 108u, 105u,
    173u, 174u, 242u, 202u, 138u, 116u, 144u, 21u,
    86u, 161u, 54u, 182u, 113u, 198u, 197u, 79u,
    150u, 171u, 137u, 133u, 162u, 136u, 169u, 95u,
};
inline constexpr float conv_pad_pscale_in_int8sym[] = {
    0.0395533815f,
};
inline constexpr uint8_t conv_pad_pzeropoint_in_int8sym[] = {
    17u,
};
inline constexpr float conv_pad_pscale_weights_int8sym[] = {
    0.00659868028f,
};
inline constexpr int8_t conv_pad_pzeropoint_weights_int8sym[] = {
    0,
};
inline constexpr float conv_pad_pscale_out_int8sym[] = {
    0.127163798f,
};
inline constexpr uint8_t conv_pad_pzeropoint_out_int8sym[] = {
    134u,
};
inline constexpr int8_t conv_pad_in_data_int8_int8sym[] = {
    69, 61, 112, 85, -90, 48, 76, -39,
    12, 65, -98, 39, 85, 104, -88, -47,
    67, -2, 106, 124, -42, 100, 111, 22,
    -10, 86, 124, 41, 34, -8, -122, -64,
    -92, 24, 1, 101,
};
inline constexpr int8_t conv_pad_weight_data_int8_int8sym[] = {
    -127, -43, -46, 45, 15, -17, -49, -35,
    34, -90, -117, -36, 51, -124, -66, -80,
    69, -101, 81, -18, 93, -73, 69, 1,
    -13, -116, -121, 83, 1, -1, 99, -87,
    71, -125, -82, 49, -69, -78, 113, 19,
    -70, -80, 94, -82, -17, 93, -86, -50,
    -99, 20, 75, 20, 84, 35, -69, 16,
    21, 37, 40, -114, 32, -20, -118, 40,
    -89, 54, -91, -91, -75, 30, 66, 2,
    -54, -118, 101, -42, 48, 52, 15, 110,
    -49, 99, 56, 65, 67, 23, -54, -79,
    52, -125, 51, -122, 96, -4, 6, -111,
    -74, 114, 0, 73, 57, -82, -106, 13,
    -110, 8, 83, -21,
};
inline constexpr int32_t conv_pad_bias_data_int8_int8sym[] = {
    -3620, -806, 3849,
};
inline constexpr int8_t conv_pad_out_reference_int8_int8sym[] = {
    -47, 0, 34, 16, 12, -41, -63, 17,
    30, -36, 56, 28, -106, -22, 31, -12,
    56, -66, 16, 2, -60, 31, 114, 68,
    56, 47, -40, -24, -77, -16, -116, -36,
    -42, 28, -17, 14, 48, 50, -79, 42,
    19, -37, 6, -36, -30,
};
inline constexpr float conv_pad_pscale_in_int8_int8sym[] = {
    0.0276658144f,
};
inline constexpr int8_t conv_pad_pzeropoint_in_int8_int8sym[] = {
    75,
};
inline constexpr float conv_pad_pscale_weights_int8_int8sym[] = {
    0.00519919395f,
};
inline constexpr int8_t conv_pad_pzeropoint_weights_int8_int8sym[] = {
    0,
};
inline constexpr float conv_pad_pscale_out_int8_int8sym[] = {
    0.064244546f,
};
inline constexpr int8_t conv_pad_pzeropoint_out_int8_int8sym[] = {
    -14,
};
inline constexpr uint8_t conv_stride_in_data_uint8[] = {
    30u, 37u, 251u, 208u, 143u, 161u, 70u, 14u,
    231u, 129u, 59u, 210u, 145u, 33u, 125u, 222u,
    172u, 23u, 83u, 199u, 132u, 31u, 157u, 5u,
    93u, 44u, 102u, 72u, 134u, 193u, 4u, 214u,
    206u, 246u, 95u, 106u, 28u, 249u, 212u, 219u,
    180u, 7u, 22u, 153u, 180u, 54u, 112u, 107u,
    167u, 216u, 231u, 124u, 113u, 36u, 74u, 157u,
};
inline constexpr uint8_t conv_stride_weight_data_uint8[] = {
    208u, 253u, 17u, 30u, 185u, 221u, 236u, 23u,
    34u, 96u, 136u, 245u, 163u, 147u, 248u, 181u,
    100u, 206u, 89u, 118u, 8u, 12u, 71u, 111u,
    137u, 49u, 5u, 242u, 20u, 125u, 33u, 179u,
    116u, 70u, 98u, 123u,
};
inline constexpr int32_t conv_stride_bias_data_uint8[] = {
    1528, 849, -3192,
};
inline constexpr uint8_t conv_stride_out_reference_uint8[] = {
    58u, 207u, 173u, 151u, 138u, 125u, 172u, 160u,
    171u, 242u, 171u, 100u, 186u, 128u, 105u, 12u,
    69u, 177u, 172u, 165u, 210u, 218u, 142u, 146u,
    147u, 184u, 106u,
};
inline constexpr float conv_stride_pscale_in_uint8[] = {
    0.023999555f,
};
inline constexpr uint8_t conv_stride_pzeropoint_in_uint8[] = {
    138u,
};
inline constexpr float conv_stride_pscale_weights_uint8[] = {
    0.00543244136f,
};
inline constexpr uint8_t conv_stride_pzeropoint_weights_uint8[] = {
    114u,
};
inline constexpr float conv_stride_pscale_out_uint8[] = {
    0.0567618199f,
};
inline constexpr uint8_t conv_stride_pzeropoint_out_uint8[] = {
    149u,
};
inline constexpr uint8_t conv_stride_in_data_int8sym[] = {
    118u, 142u, 6u, 203u, 249u, 145u, 191u, 196u,
    66u, 66u, 88u, 254u, 78u, 89u, 210u, 107u,
    150u, 176u, 187u, 146u, 179u, 90u, 75u, 116u,
    68u, 130u, 208u, 231u, 106u, 11u, 2u, 108u,
    119u, 84u, 60u, 240u, 55u, 156u, 87u, 9u,
    217u, 159u, 221u, 213u, 197u, 70u, 213u, 123u,
    156u, 172u, 144u, 200u, 29u, 45u, 196u, 203u,
    195u, 196u, 93u, 188u, 255u, 173u, 208u, 92u,
    195u, 66u, 45u, 193u, 128u, 35u, 194u, 185u,
    142u, 105u, 192u, 89u, 215u, 233u, 176u, 176u,
    162u, 132u, 225u, 150u, 11u, 102u, 119u, 209u,
    20u, 233u, 136u, 102u, 127u, 247u, 185u, 40u,
    147u, 220u, 135u, 172u, 32u, 71u, 164u, 210u,
    70u,
};
inline constexpr int8_t conv_stride_weight_data_int8sym[] = {
    -124, 123, 91, -37, -71, 78, 86, -39,
    -19, 19, 102, 121, 30, 19, 68, -118,
    -123, 127, -83, -67, -49, 77, -103, -45,
};
inline constexpr int32_t conv_stride_bias_data_int8sym[] = {
    -3162, 1600,
};
inline constexpr uint8_t conv_stride_out_reference_int8sym[] = {
    12u, 70u, 50u, 242u, 100u, 186u, 111u, 96u,
    18u, 114u, 98u, 225u,
};
inline constexpr float conv_stride_pscale_in_int8sym[] = {
    0.0309987776f,
};
inline constexpr uint8_t conv_stride_pzeropoint_in_int8sym[] = {
    195u,
};
inline constexpr float conv_stride_pscale_weights_int8sym[] = {
    0.00436616596f,
};
inline constexpr int8_t conv_stride_pzeropoint_weights_int8sym[] = {
    0,
};
inline constexpr float conv_stride_pscale_out_int8sym[] = {
    0.059337955f,
};
inline constexpr uint8_t conv_stride_pzeropoint_out_int8sym[] = {
    98u,
};
inline constexpr int8_t conv_stride_in_data_int8_int8sym[] = {
    78, 118, -111, 70, -30, 2, -71, -6,
    30, -126, -11, -86, -118, 17, -90, 121,
    -1, -55, -92, -35, 98, 21, 121, 98,
    -85, 88, -70, 5, -51, -44,
};
inline constexpr int8_t conv_stride_weight_data_int8_int8sym[] = {
    -128, -125, -96, 50, -102, -11, -45, -65,
    90, -73, 126, -73, 36, -111, 87, -42,
    -69, 10, 17, 0, -71, -108, 73, -73,
};
inline constexpr int32_t conv_stride_bias_data_int8_int8sym[] = {
    3827, 1719, 349, 1318,
};
inline constexpr int8_t conv_stride_out_reference_int8_int8sym[] = {
    -95, -116, -8, -2, -40, 16, 51, -18,
    -56, 111, 37, 83, 83, -40, 2, -10,
    -87, 27, 11, -72, -31, 79, 114, -90,
};
inline constexpr float conv_stride_pscale_in_int8_int8sym[] = {
    0.0298877899f,
};
inline constexpr int8_t conv_stride_pzeropoint_in_int8_int8sym[] = {
    -67,
};
inline constexpr float conv_stride_pscale_weights_int8_int8sym[] = {
    0.00526583567f,
};
inline constexpr int8_t conv_stride_pzeropoint_weights_int8_int8sym[] = {
    0,
};
inline constexpr float conv_stride_pscale_out_int8_int8sym[] = {
    0.0302088689f,
};
inline constexpr int8_t conv_stride_pzeropoint_out_int8_int8sym[] = {
    62,
};
inline constexpr uint8_t conv_nl_stride_in_data_uint8[] = {
    39u, 95u, 28u, 194u, 204u, 114u, 178u, 47u,
    249u, 195u, 145u, 85u, 198u, 201u, 123u, 134u,
    104u, 226u, 141u, 40u, 17u, 208u, 167u, 81u,
    18u, 45u, 163u, 36u, 49u, 157u, 254u, 153u,
    201u, 17u, 247u, 251u, 110u, 227u, 92u, 101u,
    35u, 207u, 107u, 77u, 232u, 102u, 160u, 154u,
    134u, 83u, 226u, 96u, 116u, 64u, 183u, 41u,
    170u, 81u, 246u, 246u,
};
inline constexpr uint8_t conv_nl_stride_weight_data_uint8[] = {
    138u, 78u, 154u, 228u, 4u, 5u, 120u, 90u,
    57u, 68u, 86u, 194u, 225u, 160u, 144u, 31u,
    116u, 161u, 129u, 50u, 213u, 43u, 152u, 222u,
};
inline constexpr int32_t conv_nl_stride_bias_data_uint8[] = {
    -2852, -3552, -1352,
};
inline constexpr uint8_t conv_nl_stride_out_reference_uint8[] = {
    162u, 191u, 162u, 162u, 162u, 162u, 177u, 162u,
    162u, 242u, 162u, 162u, 162u, 162u, 162u, 162u,
    162u, 202u, 162u, 162u, 162u, 195u, 162u, 162u,
    226u, 171u, 162u, 163u, 162u, 162u, 164u, 162u,
    162u, 197u, 162u, 162u,
};
inline constexpr float conv_nl_stride_pscale_in_uint8[] = {
    0.0252216421f,
};
inline constexpr uint8_t conv_nl_stride_pzeropoint_in_uint8[] = {
    250u,
};
inline constexpr float conv_nl_stride_pscale_weights_uint8[] = {
    0.0101307184f,
};
inline constexpr uint8_t conv_nl_stride_pzeropoint_weights_uint8[] = {
    108u,
};
inline constexpr float conv_nl_stride_pscale_out_uint8[] = {
    0.0814532116f,
};
inline constexpr uint8_t conv_nl_stride_pzeropoint_out_uint8[] = {
    162u,
};
inline constexpr uint8_t conv_fused_in_data_uint8[] = {
    127u, 199u, 39u, 189u, 53u, 99u, 44u, 229u,
    85u, 131u, 174u, 129u, 130u, 2u, 208u, 19u,
    82u, 123u, 246u, 243u, 63u, 11u, 85u, 192u,
    249u, 131u, 13u, 195u, 20u, 230u, 252u, 47u,
    114u, 111u, 213u, 128u, 138u, 134u, 223u, 146u,
    72u, 103u, 50u, 136u, 250u, 118u, 5u, 169u,
    123u, 39u, 138u, 172u, 32u, 74u, 48u, 87u,
    157u, 24u, 66u, 148u, 208u, 30u, 126u, 40u,
    165u, 230u, 29u, 38u, 22u, 212u, 32u, 198u,
};
inline constexpr uint8_t conv_fused_weight_data_uint8[] = {
    11u, 60u, 247u, 3u, 66u, 126u, 233u, 115u,
    238u, 126u, 115u, 130u, 241u, 34u, 123u, 44u,
    244u, 210u, 253u, 39u, 93u, 241u, 209u, 207u,
    0u, 4u, 67u, 49u, 21u, 33u, 98u, 86u,
    96u, 28u, 209u, 96u,
};
inline constexpr int32_t conv_fused_bias_data_uint8[] = {
    -2577, -3322, -1240,
};
inline constexpr uint8_t conv_fused_out_reference_uint8[] = {
    190u, 208u, 190u, 190u, 208u, 190u, 220u, 242u,
    190u, 190u, 242u, 190u, 190u, 190u, 200u, 205u,
    190u, 193u,
};
inline constexpr float conv_fused_pscale_in_uint8[] = {
    0.0343317389f,
};
inline constexpr uint8_t conv_fused_pzeropoint_in_uint8[] = {
    115u,
};
inline constexpr float conv_fused_pscale_weights_uint8[] = {
    0.0081314519f,
};
inline constexpr uint8_t conv_fused_pzeropoint_weights_uint8[] = {
    130u,
};
inline constexpr float conv_fused_pscale_out_uint8[] = {
    0.136008888f,
};
inline constexpr uint8_t conv_fused_pzeropoint_out_uint8[] = {
    154u,
};
inline constexpr int8_t conv_fused_in_data_int8[] = {
    87, -81, -78, 56, 30, -45, 37, 26,
    48, -61, 75, 45, -66, -70, -92, 33,
    -69, -108, -33, 62, -18, -58, -125, -82,
    96, 89, -9, -30, 120, -81, 121, 70,
    -101, 77, 50, -122, 37, -86, -31, 64,
    -19, 127, 121, 68, -117, 6, -22, 56,
    -17, 123, -77, 120, 76, -45, 41, 6,
    16, 95, 14, -79, -106, 110, -29, -20,
    -58, 71, 66, 114, 115, -28,
};
inline constexpr int8_t conv_fused_weight_data_int8[] = {
    106, 74, -75, 87, -33, 102, -111, -38,
    -46, 52, -121, 81, -49, -90, 104, -117,
    81, -53, 20, -11, -92, -110, -46, 26,
};
inline constexpr int32_t conv_fused_bias_data_int8[] = {
    -1105, -175,
};
inline constexpr int8_t conv_fused_out_reference_int8[] = {
    2, 36, -4, 46, -18, 40, -26, 58,
};
inline constexpr float conv_fused_pscale_in_int8[] = {
    0.040886566f,
};
inline constexpr int8_t conv_fused_pzeropoint_in_int8[] = {
    90,
};
inline constexpr float conv_fused_pscale_weights_int8[] = {
    0.00733174523f,
};
inline constexpr int8_t conv_fused_pzeropoint_weights_int8[] = {
    0,
};
inline constexpr float conv_fused_pscale_out_int8[] = {
    0.133166909f,
};
inline constexpr int8_t conv_fused_pzeropoint_out_int8[] = {
    -24,
};
inline constexpr uint8_t conv_unit_scale_in_data_uint8[] = {
    103u, 102u, 101u, 100u, 103u, 103u, 101u, 100u,
    101u, 104u, 102u, 101u, 100u, 104u, 101u, 101u,
    101u, 103u, 100u, 102u, 102u, 104u, 102u, 102u,
};
inline constexpr uint8_t conv_unit_scale_weight_data_uint8[] = {
    139u, 139u, 137u, 136u, 139u, 137u, 139u, 136u,
    137u, 139u, 136u, 139u, 136u, 137u, 136u, 138u,
};
inline constexpr int32_t conv_unit_scale_bias_data_uint8[] = {
    8, 18,
};
inline constexpr uint8_t conv_unit_scale_out_reference_uint8[] = {
    128u, 111u, 127u, 115u, 117u, 122u, 122u, 120u,
};
inline constexpr float conv_unit_scale_pscale_in_uint8[] = {
    1.0f,
};
inline constexpr uint8_t conv_unit_scale_pzeropoint_in_uint8[] = {
    98u,
};
inline constexpr float conv_unit_scale_pscale_weights_uint8[] = {
    1.0f,
};
inline constexpr uint8_t conv_unit_scale_pzeropoint_weights_uint8[] = {
    137u,
};
inline constexpr float conv_unit_scale_pscale_out_uint8[] = {
    1.0f,
};
inline constexpr uint8_t conv_unit_scale_pzeropoint_out_uint8[] = {
    90u,
};
inline constexpr uint8_t conv_saturate_in_data_uint8[] = {
    136u, 0u, 72u, 175u, 113u, 53u, 152u, 6u,
    103u, 196u, 4u, 4u, 183u, 170u, 205u, 187u,
    13u, 70u,
};
inline constexpr uint8_t conv_saturate_weight_data_uint8[] = {
    49u, 84u, 203u, 188u, 95u, 12u, 174u, 133u,
    75u, 159u, 191u, 194u, 245u, 242u, 110u, 138u,
    110u, 17u, 220u, 113u, 103u, 28u, 183u, 46u,
};
inline constexpr int32_t conv_saturate_bias_data_uint8[] = {
    3000000, -3000000,
};
inline constexpr uint8_t conv_saturate_out_reference_uint8[] = {
    255u, 0u, 255u, 0u,
};
inline constexpr float conv_saturate_pscale_in_uint8[] = {
    0.0258882344f,
};
inline constexpr uint8_t conv_saturate_pzeropoint_in_uint8[] = {
    135u,
};
inline constexpr float conv_saturate_pscale_weights_uint8[] = {
    0.0101640392f,
};
inline constexpr uint8_t conv_saturate_pzeropoint_weights_uint8[] = {
    109u,
};
inline constexpr float conv_saturate_pscale_out_uint8[] = {
    0.0457203835f,
};
inline constexpr uint8_t conv_saturate_pzeropoint_out_uint8[] = {
    111u,
};
inline constexpr uint8_t conv1x1_in_data_int8sym[] = {
    20u, 207u, 164u, 12u,
};
inline constexpr int8_t conv1x1_weight_data_int8sym[] = {
    -76, -74, 103, 75, -22, -49, -104, 109,
};
inline constexpr int32_t conv1x1_bias_data_int8sym[] = {
    8638, -559,
};
inline constexpr uint8_t conv1x1_out_reference_int8sym[] = {
    255u, 10u,
};
inline constexpr float conv1x1_pscale_in_int8sym[] = {
    0.0317764692f,
};
inline constexpr uint8_t conv1x1_pzeropoint_in_int8sym[] = {
    23u,
};
inline constexpr float conv1x1_pscale_weights_int8sym[] = {
    0.0100307558f,
};
inline constexpr int8_t conv1x1_pzeropoint_weights_int8sym[] = {
    0,
};
inline constexpr float conv1x1_pscale_out_int8sym[] = {
    0.0390680693f,
};
inline constexpr uint8_t conv1x1_pzeropoint_out_int8sym[] = {
    217u,
};

#endif
