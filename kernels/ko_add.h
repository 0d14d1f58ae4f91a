/* SPDX-License-Identifier: MIT */
/* Integer addition of two vectors. */
#ifndef NNLIB_KERNELS_KO_ADD_H
#define NNLIB_KERNELS_KO_ADD_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* With all three scales equal and all three zero points equal: in1 + in2 - zero point, saturated.
 * Otherwise, with r1 = scale1 / out_scale, r2 = scale2 / out_scale and d1, d2 the inputs less their
 * zero points, in float and in the order written:
 *
 *   uint8: d2 * r2 + d1 * r1 + (out_zeropoint + 0.5), cut off
 *   int8:  d2 * r2 + d1 * r1 + out_zeropoint, rounded with halves away from zero
 *
 * and saturated. The output may be one of the inputs. They return 0. */
int32_t ko_uint8_add(const uint8_t* in1, const uint8_t* in2, uint8_t* out, uint32_t count,
                     float scale1, uint8_t zeropoint1, float scale2, uint8_t zeropoint2,
                     float out_scale, uint8_t out_zeropoint);
int32_t ko_int8_add(const int8_t* in1, const int8_t* in2, int8_t* out, uint32_t count, float scale1,
                    int8_t zeropoint1, float scale2, int8_t zeropoint2, float out_scale,
                    int8_t out_zeropoint);

#ifdef __cplusplus
}
#endif

#endif
