// SPDX-License-Identifier: MIT
// Written by tools/reference/generate.py; do not edit.
#ifndef TEST_REFERENCE_NL_H
#define TEST_REFERENCE_NL_H

#include <cstdint>

inline constexpr float relu_in_data[] = {
    1.0f, 3.0f, -2.0f,
};
inline constexpr float relu_out_reference[] = {
    1.0f, 3.0f, 0.0f,
};
inline constexpr float relu6_in_data[] = {
    1.0f, 8.0f, -2.0f,
};
inline constexpr float relu6_params_data[] = {
    0.0f, 6.0f,
};
inline constexpr float relu6_out_reference[] = {
    1.0f, 6.0f, 0.0f,
};
inline constexpr float relu_thresholded_in_data[] = {
    1.0f, 8.0f, -2.0f,
};
inline constexpr float relu_thresholded_params_data[] = {
    1.00000012f,
};
inline constexpr float relu_thresholded_out_reference[] = {
    0.0f, 8.0f, -0.0f,
};
inline constexpr float relu_generic_in_data[] = {
    1.0f, 8.0f, -2.0f,
};
inline constexpr float relu_generic_params_data[] = {
    1.0f, 0.5f, 7.0f,
};
inline constexpr float relu_generic_out_reference[] = {
    1.0f, 7.0f, -1.5f,
};
inline constexpr float relu_generic_no_max_in_data[] = {
    1.0f, 8.0f, -2.0f,
};
inline constexpr float relu_generic_no_max_params_data[] = {
    1.0f, 0.5f, -1.0f,
};
inline constexpr float relu_generic_no_max_out_reference[] = {
    1.0f, 8.0f, -1.5f,
};
inline constexpr float elu_in_data[] = {
    1.0f, 8.0f, -2.0f,
};
inline constexpr float elu_params_data[] = {
    0.5f,
};
inline constexpr float elu_out_reference[] = {
    1.0f, 8.0f, -0.432332367f,
};
inline constexpr float selu_in_data[] = {
    1.0f, 8.0f, -2.0f,
};
inline constexpr float selu_params_data[] = {
    1.67320001f, 1.05069995f,
};
inline constexpr float selu_out_reference[] = {
    1.05069995f, 8.40559959f, -1.52010751f,
};
inline constexpr float sign_in_data[] = {
    2.0f, 0.25f, 0.0f,
};
inline constexpr float sign_out_reference[] = {
    1.0f, 1.0f, -1.0f,
};
inline constexpr float clip_in_data[] = {
    -2.5f, 0.375f, 1.75f, -0.0625f, 3.125f, -1.5f, 0.8125f, -0.4375f,
    2.25f, -3.0f, 0.15625f, -0.71875f,
};
inline constexpr float clip_params_data[] = {
    -1.25f, 2.5f,
};
inline constexpr float clip_out_reference[] = {
    -1.25f, 0.375f, 1.75f, -0.0625f, 2.5f, -1.25f, 0.8125f, -0.4375f,
    2.25f, -1.25f, 0.15625f, -0.71875f,
};
inline constexpr float sigmoid_in_data[] = {
    -2.5f, 0.375f, 1.75f, -0.0625f, 3.125f, -1.5f, 0.8125f, -0.4375f,
    2.25f, -3.0f, 0.15625f, -0.71875f,
};
inline constexpr float sigmoid_out_reference[] = {
    0.0758581832f, 0.592666626f, 0.851952791f, 0.484380096f, 0.957912266f, 0.182425529f, 0.692641973f, 0.392336816f,
    0.904650509f, 0.0474258736f, 0.538983226f, 0.327668309f,
};
inline constexpr float hard_sigmoid_in_data[] = {
    -2.5f, 1.0f, -2.0f, 2.75f, 2.5f, -0.300000012f,
};
inline constexpr float hard_sigmoid_out_reference[] = {
    0.0f, 0.699999988f, 0.100000001f, 1.0f, 1.0f, 0.439999998f,
};
inline constexpr float exp_in_data[] = {
    -3.0f, 0.600000024f, -0.25f, 0.0f, -1.75f, 0.3125f,
};
inline constexpr float exp_out_reference[] = {
    0.0497870669f, 1.82211888f, 0.778800786f, 1.0f, 0.173773944f, 1.36683798f,
};
inline constexpr float sqrt_in_data[] = {
    0.0900000036f, 2.0f, 3.5f, 0.0f, 0.5f, 1.21000004f,
};
inline constexpr float sqrt_out_reference[] = {
    0.300000012f, 1.41421354f, 1.87082875f, 0.0f, 0.707106769f, 1.10000002f,
};
inline constexpr float soft_plus_in_data[] = {
    -2.5f, 0.375f, 1.75f, -0.0625f, 3.125f, -1.5f, 0.8125f, -0.4375f,
    2.25f, -3.0f, 0.15625f, -0.71875f,
};
inline constexpr float soft_plus_out_reference[] = {
    0.078889735f, 0.898123264f, 1.9102242f, 0.662385404f, 3.16799903f, 0.201413274f, 1.17974198f, 0.498134553f,
    2.35020661f, 0.048587352f, 0.774320841f, 0.397003472f,
};
inline constexpr float soft_sign_in_data[] = {
    -2.5f, 0.375f, 1.75f, -0.0625f, 3.125f, -1.5f, 0.8125f, -0.4375f,
    2.25f, -3.0f, 0.15625f, -0.71875f,
};
inline constexpr float soft_sign_out_reference[] = {
    -0.714285731f, 0.272727281f, 0.636363626f, -0.0588235296f, 0.75757575f, -0.600000024f, 0.448275864f, -0.304347813f,
    0.692307711f, -0.75f, 0.135135129f, -0.418181807f,
};
inline constexpr float tanh_in_data[] = {
    -2.5f, 0.375f, 1.75f, -0.0625f, 3.125f, -1.5f, 0.8125f, -0.4375f,
    2.25f, -3.0f, 0.15625f, -0.71875f,
};
inline constexpr float tanh_out_reference[] = {
    -0.986614287f, 0.3583574f, 0.941375554f, -0.0624187477f, 0.99614656f, -0.905148268f, 0.670967102f, -0.411570042f,
    0.978026092f, -0.995054781f, 0.154990733f, -0.616134405f,
};
inline constexpr float reciprocal_in_data[] = {
    -2.5f, 1.75f, 3.125f, 0.8125f, 2.25f, 0.15625f,
};
inline constexpr float reciprocal_out_reference[] = {
    -0.400000006f, 0.571428597f, 0.319999993f, 1.23076928f, 0.444444448f, 6.4000001f,
};
inline constexpr float acos_in_data[] = {
    -0.400000006f, 0.150000006f, 0.829999983f, -0.319999993f, 0.0599999987f, -0.109999999f, 0.550000012f, -0.0799999982f,
    0.920000017f, -0.270000011f, 0.360000014f, -0.209999993f,
};
inline constexpr float acos_out_reference[] = {
    1.98231316f, 1.420228f, 0.591688693f, 1.89652586f, 1.51076031f, 1.68101943f, 0.98843205f, 1.65088189f,
    0.402715802f, 1.84418941f, 1.20252848f, 1.78237128f,
};
inline constexpr float acosh_in_data[] = {
    1.0f, 1.02999997f, 3.5999999f, 2.04999995f, 1.5f, 2.9000001f,
};
inline constexpr float acosh_out_reference[] = {
    0.0f, 0.244340584f, 1.95420754f, 1.34535599f, 0.962423623f, 1.72671092f,
};
inline constexpr float atanh_in_data[] = {
    -0.400000006f, 0.150000006f, 0.829999983f, -0.319999993f, 0.0599999987f, -0.109999999f, 0.550000012f, -0.0799999982f,
    0.920000017f, -0.270000011f, 0.360000014f, -0.209999993f,
};
inline constexpr float atanh_out_reference[] = {
    -0.423648924f, 0.151140437f, 1.18813634f, -0.331647098f, 0.0600721538f, -0.110446915f, 0.618381321f, -0.0801713243f,
    1.58902705f, -0.276863843f, 0.376885921f, -0.213171333f,
};
inline constexpr float asinh_in_data[] = {
    2.20000005f, -0.310000002f, 1.39999998f, -1.04999995f, 0.0599999987f, 0.709999979f, -1.20000005f, 0.5f,
    -0.829999983f, 1.20000005f, -0.0199999996f, 0.439999998f,
};
inline constexpr float asinh_out_reference[] = {
    1.52966046f, -0.305238008f, 1.13798201f, -0.9162907f, 0.0599640571f, 0.660839617f, -1.01597321f, 0.481211811f,
    -0.755923271f, 1.01597321f, -0.0199986659f, 0.42691344f,
};
inline constexpr float cosh_in_data[] = {
    -0.400000006f, 0.150000006f, 0.829999983f, -0.319999993f, 0.0599999987f, -0.109999999f, 0.550000012f, -0.0799999982f,
    0.920000017f, -0.270000011f, 0.360000014f, -0.209999993f,
};
inline constexpr float cosh_out_reference[] = {
    1.08107233f, 1.01127112f, 1.36468399f, 1.05163836f, 1.00180054f, 1.00605607f, 1.15510142f, 1.00320172f,
    1.45390475f, 1.036672f, 1.06550288f, 1.0221312f,
};
inline constexpr float sinh_in_data[] = {
    -0.400000006f, 0.150000006f, 0.829999983f, -0.319999993f, 0.0599999987f, -0.109999999f, 0.550000012f, -0.0799999982f,
    0.920000017f, -0.270000011f, 0.360000014f, -0.209999993f,
};
inline constexpr float sinh_out_reference[] = {
    -0.410752326f, 0.150563136f, 0.928634703f, -0.325489342f, 0.0600360036f, -0.110221967f, 0.578151643f, -0.0800853595f,
    1.05538571f, -0.273292482f, 0.367826551f, -0.211546898f,
};
inline constexpr float abs_in_data[] = {
    -2.5f, 0.375f, 1.75f, -0.0625f, 3.125f, -1.5f, 0.8125f, -0.4375f,
    2.25f, -3.0f, 0.15625f, -0.71875f,
};
inline constexpr float abs_out_reference[] = {
    2.5f, 0.375f, 1.75f, 0.0625f, 3.125f, 1.5f, 0.8125f, 0.4375f,
    2.25f, 3.0f, 0.15625f, 0.71875f,
};
inline constexpr float ceil_in_data[] = {
    -0.5f, 0.5f, 1.5f, -1.5f, 2.5f, -2.49999976f, 0.49999997f, -0.75f,
    8388607.5f, -8388608.0f, 7.0f, -8388606.5f,
};
inline constexpr float ceil_out_reference[] = {
    -0.0f, 1.0f, 2.0f, -1.0f, 3.0f, -2.0f, 1.0f, -0.0f,
    8388608.0f, -8388608.0f, 7.0f, -8388606.0f,
};
inline constexpr float floor_in_data[] = {
    -0.5f, 0.5f, 1.5f, -1.5f, 2.5f, -2.49999976f, 0.49999997f, -0.75f,
    8388607.5f, -8388608.0f, 7.0f, -8388606.5f,
};
inline constexpr float floor_out_reference[] = {
    -1.0f, 0.0f, 1.0f, -2.0f, 2.0f, -3.0f, 0.0f, -1.0f,
    8388607.0f, -8388608.0f, 7.0f, -8388607.0f,
};
inline constexpr float round_in_data[] = {
    -0.5f, 0.5f, 1.5f, -1.5f, 2.5f, -2.49999976f, 0.49999997f, -0.75f,
    8388607.5f, -8388608.0f, 7.0f, -8388606.5f,
};
inline constexpr float round_out_reference[] = {
    -1.0f, 1.0f, 2.0f, -2.0f, 3.0f, -2.0f, 0.0f, -1.0f,
    8388608.0f, -8388608.0f, 7.0f, -8388607.0f,
};
inline constexpr float erf_in_data[] = {
    2.20000005f, -0.310000002f, 1.39999998f, -1.04999995f, 0.0599999987f, 0.709999979f, -1.20000005f, 0.5f,
    -0.829999983f, 1.20000005f, -0.0199999996f, 0.439999998f,
};
inline constexpr float erf_out_reference[] = {
    0.998137176f, -0.338908166f, 0.952285111f, -0.862436116f, 0.0676215962f, 0.684665561f, -0.910313964f, 0.520499885f,
    -0.759523749f, 0.910313964f, -0.0225645751f, 0.466225117f,
};
inline constexpr float asin_in_data[] = {
    -0.400000006f, 0.150000006f, 0.829999983f, -0.319999993f, 0.0599999987f, -0.109999999f, 0.550000012f, -0.0799999982f,
    0.920000017f, -0.270000011f, 0.360000014f, -0.209999993f,
};
inline constexpr float asin_out_reference[] = {
    -0.411516845f, 0.150568277f, 0.979107678f, -0.325729489f, 0.0600360557f, -0.110223047f, 0.582364261f, -0.0800855756f,
    1.16808057f, -0.273393035f, 0.368267924f, -0.211574957f,
};
inline constexpr float atan_in_data[] = {
    -2.5f, 0.375f, 1.75f, -0.0625f, 3.125f, -1.5f, 0.8125f, -0.4375f,
    2.25f, -3.0f, 0.15625f, -0.71875f,
};
inline constexpr float atan_out_reference[] = {
    -1.19028997f, 0.358770669f, 1.05165017f, -0.062418811f, 1.26109338f, -0.982793748f, 0.682316542f, -0.412410438f,
    1.15257204f, -1.24904573f, 0.154996738f, -0.623199344f,
};
inline constexpr float cos_in_data[] = {
    -2.5f, 0.375f, 1.75f, -0.0625f, 3.125f, -1.5f, 0.8125f, -0.4375f,
    2.25f, -3.0f, 0.15625f, -0.71875f,
};
inline constexpr float cos_out_reference[] = {
    -0.801143587f, 0.9305076f, -0.178246051f, 0.998047531f, -0.999862373f, 0.070737198f, 0.687685549f, 0.905813694f,
    -0.628173649f, -0.989992499f, 0.987817764f, 0.752629399f,
};
inline constexpr float sin_in_data[] = {
    -2.5f, 0.375f, 1.75f, -0.0625f, 3.125f, -1.5f, 0.8125f, -0.4375f,
    2.25f, -3.0f, 0.15625f, -0.71875f,
};
inline constexpr float sin_out_reference[] = {
    -0.598472118f, 0.366272539f, 0.98398596f, -0.0624593161f, 0.0165918916f, -0.997494996f, 0.726008654f, -0.423676252f,
    0.778073192f, -0.141120002f, 0.155614987f, -0.658444405f,
};
inline constexpr float tan_in_data[] = {
    -0.400000006f, 0.150000006f, 0.829999983f, -0.319999993f, 0.0599999987f, -0.109999999f, 0.550000012f, -0.0799999982f,
    0.920000017f, -0.270000011f, 0.360000014f, -0.209999993f,
};
inline constexpr float tan_out_reference[] = {
    -0.422793239f, 0.151135221f, 1.0934329f, -0.331389397f, 0.0600721017f, -0.110445827f, 0.613105237f, -0.0801711008f,
    1.31326377f, -0.276758134f, 0.376402855f, -0.21314244f,
};
inline constexpr float neg_in_data[] = {
    -2.5f, 0.375f, 1.75f, -0.0625f, 3.125f, -1.5f, 0.8125f, -0.4375f,
    2.25f, -3.0f, 0.15625f, -0.71875f,
};
inline constexpr float neg_out_reference[] = {
    2.5f, -0.375f, -1.75f, 0.0625f, -3.125f, 1.5f, -0.8125f, 0.4375f,
    -2.25f, 3.0f, -0.15625f, 0.71875f,
};
inline constexpr float log_in_data[] = {
    0.300000012f, 1.70000005f, 0.239999995f, 5.19999981f, 0.899999976f, 2.5999999f, 0.50999999f, 3.29999995f,
    1.10000002f, 6.9000001f, 0.170000002f, 0.730000019f,
};
inline constexpr float log_out_reference[] = {
    -1.20397282f, 0.530628264f, -1.42711639f, 1.64865863f, -0.105360545f, 0.955511391f, -0.673344553f, 1.1939224f,
    0.0953102037f, 1.93152142f, -1.7719568f, -0.314710706f,
};
inline constexpr float rsqrt_in_data[] = {
    0.300000012f, 1.70000005f, 0.239999995f, 5.19999981f, 0.899999976f, 2.5999999f, 0.50999999f, 3.29999995f,
    1.10000002f, 6.9000001f, 0.170000002f, 0.730000019f,
};
inline constexpr float rsqrt_out_reference[] = {
    1.82574177f, 0.766964972f, 2.04124141f, 0.438529015f, 1.05409253f, 0.620173693f, 1.40028012f, 0.550481915f,
    0.953462601f, 0.380693495f, 2.42535615f, 1.17041147f,
};
inline constexpr float reciprocal_u_in_data[] = {
    0.300000012f, 1.70000005f, 0.239999995f, 5.19999981f, 0.899999976f, 2.5999999f, 0.50999999f, 3.29999995f,
    1.10000002f, 6.9000001f, 0.170000002f, 0.730000019f,
};
inline constexpr float reciprocal_u_out_reference[] = {
    3.33333325f, 0.588235259f, 4.16666698f, 0.192307696f, 1.11111116f, 0.384615391f, 1.96078432f, 0.303030312f,
    0.909090877f, 0.144927531f, 5.88235283f, 1.36986303f,
};
inline constexpr float prelu_slope_data[] = {
    9.99999975e-05f, 0.000300000014f, 0.000199999995f,
};
inline constexpr float prelu_in_data[] = {
    -2.0f, -1.0f, 5.0f, 1.0f, 8.0f, -2.0f,
};
inline constexpr float prelu_out_reference[] = {
    -0.000199999995f, -0.000300000014f, 5.0f, 1.0f, 8.0f, -0.00039999999f,
};
inline constexpr float soft_max_in_data[] = {
    0.5f, -1.25f, 2.0f, 99.0f, 98.5f, 100.25f, -120.5f, -119.0f,
    -121.75f, 0.25f, 0.25f, 0.25f,
};
inline constexpr float soft_max_out_reference[] = {
    0.176820189f, 0.0307267401f, 0.792453051f, 0.196198702f, 0.119000532f, 0.684800744f, 0.17336449f, 0.776965737f,
    0.0496697575f, 0.333333343f, 0.333333343f, 0.333333343f,
};
inline constexpr float hardmax_in_data[] = {
    -3.0f, -1.5f, -2.0f, -1.5f, 0.5f, 4.0f, -7.0f, 4.5f,
    2.0f, 1.0f, 2.0f, -0.5f, 0.25f, 1.0f, 0.5f, -1.0f,
    1.0f, 2.0f, 3.0f, 4.0f, 3.0f, 1.0f, 2.0f, 0.5f,
};
inline constexpr float hardmax_out_reference[] = {
    0.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f, 1.0f,
    1.0f, 0.0f, 0.0f, 0.0f, -28720636.0f, -28720636.0f, -28720636.0f, -28720636.0f,
    -28720636.0f, -28720636.0f, -28720636.0f, -28720636.0f, -28720636.0f, -28720636.0f, -28720636.0f, -28720636.0f,
};

#endif
