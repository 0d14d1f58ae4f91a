/* SPDX-License-Identifier: MIT */
/* Requantization: from a 32-bit accumulator to a quantized output.
 *
 * A pair (multiplier m, shift s) stands for the factor m / 2^31 * 2^-s. The output of an
 * accumulator acc with the output zero point z, before saturation to the type of the output:
 *
 *   s > 0:   t = acc * 2, wrapping to 32 bits;  p = floor(t * m / 2^32);
 *            floor((p + 2^(s - 1)) / 2^s) + z
 *   s <= 0:  t = acc * 2^(1 - s), wrapping to 32 bits;  floor((t * m + 2^31) / 2^32) + z
 *
 * So the product is rounded only where no shift follows. Multipliers must not be negative. */
#ifndef NNLIB_KERNELS_KO_REQUANTIZE_H
#define NNLIB_KERNELS_KO_REQUANTIZE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The pair of a real factor, returning the multiplier: the factor is doubled until it is at least
 * 0.5 (shift: the number of doublings) or halved until it is at most 1 (shift: minus the number of
 * halvings, two's complement), then multiplied by 2^31 and cut off, at most 0x7FFFFFFF. A factor of
 * 1 or any greater power of two thus gives 0x7FFFFFFF.
 *
 * A factor that is zero, negative, infinite or no number gives the multiplier and the shift 0:
 * every output is the zero point. */
int32_t align_factor(float scale, uint16_t* shift);

/* The pairs of the factors (wt_scale[i] * in_scale) / out_scale, evaluated in float. */
void align_factor_ch(float in_scale, float out_scale, const float* wt_scale, uint16_t channels,
                     int32_t* multiplier, int16_t* shift);

#ifdef __cplusplus
}
#endif

#endif
