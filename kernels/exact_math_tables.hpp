// SPDX-License-Identifier: MIT
// Written by tools/exact_math/make_tables.py; do not edit.
// clang-format off
#ifndef NNLIB_KERNELS_EXACT_MATH_TABLES_HPP
#define NNLIB_KERNELS_EXACT_MATH_TABLES_HPP

#include <cstdint>

namespace nnlib::exact {

// 2^((i + 0.5) / 32) to 55 bits behind the point: the bits of a float below it, and 32 more.
struct PowerEntry {
  uint32_t bits, more;
};
inline constexpr PowerEntry kPowers[] = {
    {0x3f8164d1, 0xf3bc0307},
    {0x3f843a28, 0xc3acde40},
    {0x3f871f61, 0x969e8d10},
    {0x3f8a14d5, 0x75496efe},
    {0x3f8d1adf, 0x5b7e5baa},
    {0x3f9031dc, 0x431466b2},
    {0x3f935a2b, 0x2f13e6e9},
    {0x3f96942d, 0x3720185a},
    {0x3f99e045, 0x9320b7fa},
    {0x3f9d3ed9, 0xa72cffb7},
    {0x3fa0b051, 0x0fb97150},
    {0x3fa43515, 0xae09e681},
    {0x3fa7cd93, 0xb4e96535},
    {0x3fab7a39, 0xb5a93ed3},
    {0x3faf3b78, 0xad690a43},
    {0x3fb311c4, 0x12a91125},
    {0x3fb6fd91, 0xe328d178},
    {0x3fbaff5a, 0xb2133e46},
    {0x3fbf1799, 0xb67a7311},
    {0x3fc346cc, 0xda249764},
    {0x3fc78d74, 0xc8abb9b1},
    {0x3fcbec14, 0xfef2727c},
    {0x3fd06333, 0xdaef2b26},
    {0x3fd4f35a, 0xabcfedfa},
    {0x3fd99d15, 0xc278afd8},
    {0x3fde60f4, 0x825e0e91},
    {0x3fe33f89, 0x72be8a5a},
    {0x3fe8396a, 0x503c4bdc},
    {0x3fed4f30, 0x1ed9942c},
    {0x3ff28177, 0x3c59ffb1},
    {0x3ff7d0df, 0x730ad13c},
    {0x3ffd3e0c, 0x0cf486c1},
};

// log2(e): in Q30, and what remains in Q62.
inline constexpr int32_t kLog2E[] = {
    1549082005,
    -1374947234,
};

// ln(2) / 64 in Q69.
inline constexpr int64_t kLn2Over64 = 6393154322601327830;

// 2^x - 1 of |x| <= 2^-6, within 2^-33.7: Q36, Q31, Q26, Q21, from x^0 on.
inline constexpr int32_t kPowerFirst[] = {
    -5,
    1488522236,
    16121486,
    116402,
};

// (e^r - 1) / r of |r| <= ln(2) / 64, within 2^-67.0: Q62, from r^6 down.
inline constexpr int64_t kExpSecond[] = {
    915020427970511,
    6405142948956740,
    38430716819942592,
    192153584099764099,
    768614336404564659,
    2305843009213693972,
    4611686018427387904,
};

// (e^r - 1) / r of |r| <= ln(2) / 2, within 2^-37.7: from r^0 on.
inline constexpr double kExpDoubles[] = {
    0x1.fffffffff61ecp-1,
    0x1.fffffffff0300p-2,
    0x1.5555557e741e0p-3,
    0x1.5555558292f41p-5,
    0x1.1110a61dd0fd6p-7,
    0x1.6c162ff2bba3ap-10,
    0x1.a17df9357e9ddp-13,
    0x1.a17e013d65101p-16,
};

// (1 - tanh(x) / x) / z of z = x^2 <= 0.30175 as a polynomial of -z, z times it within about 2^-34.7: Q33, from z^5 down.
inline constexpr uint32_t kTanhFirst[] = {
    20835115u,
    72509386u,
    187193802u,
    463522731u,
    1145322127u,
    2863311501u,
};

// (1 - tanh(x) / x) / z of z = x^2 <= 0.30175 as a polynomial of -z, z times it within about 2^-65.3: Q65, from z^11 down.
inline constexpr uint64_t kTanhSecond[] = {
    279877419408898u,
    1225510973482250u,
    3474232569535694u,
    8791992593966396u,
    21762008617901121u,
    53709951933823556u,
    132526052569781662u,
    326995670005071822u,
    806841715909929828u,
    1991077138110711415u,
    4919131752989176909u,
    12297829382473034332u,
};

// (sinh(x) / x - 1) / z of z = x^2 <= 0.25, z times it within about 2^-66.7: Q66, from z^5 down.
inline constexpr uint64_t kSinhSecond[] = {
    11896904411u,
    1848503915896u,
    203337128457805u,
    14640273074185026u,
    614891469123658031u,
    12297829382473034350u,
};

}  // namespace nnlib::exact

#endif
