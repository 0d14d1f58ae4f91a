/* SPDX-License-Identifier: MIT */
/* Integer max and average pooling of maps in rows of pixels of channels. */
#ifndef NNLIB_KERNELS_KO_POOL_H
#define NNLIB_KERNELS_KO_POOL_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Only cells inside the map take part. With m a window's maximum, or its sum and count:
 *
 *   input and output scale and zero point equal:
 *     max m; average (sum + count / 2) / count in integers, cut off toward zero
 *   otherwise, in float, m the maximum or sum / count:
 *     (m - in_zeropoint) * (in_scale / out_scale) + out_zeropoint, rounded: uint8 plus 0.5 and cut
 *     off, int8 halves away from zero
 *
 * and saturated. The output of a window without cells is the output zero point. They return 0. */
#define KO_DECLARE_(types, Element, operation)                                                   \
  int32_t ko_##types##_##operation##pool(                                                        \
      const Element* in, Element* out, uint16_t in_width, uint16_t in_height, uint16_t channels, \
      uint16_t pool_width, uint16_t pool_height, uint16_t pad_x, uint16_t pad_y,                 \
      uint16_t stride_x, uint16_t stride_y, uint16_t out_width, uint16_t out_height,             \
      float in_scale, Element in_zeropoint, float out_scale, Element out_zeropoint);             \
  /* The whole map is the window, one pixel the output. */                                       \
  int32_t ko_##types##_glo##operation##pool(                                                     \
      const Element* in, Element* out, uint16_t in_width, uint16_t in_height, uint16_t channels, \
      float in_scale, Element in_zeropoint, float out_scale, Element out_zeropoint);
KO_DECLARE_(uint8, uint8_t, max)
KO_DECLARE_(uint8, uint8_t, ave)
KO_DECLARE_(int8, int8_t, max)
KO_DECLARE_(int8, int8_t, ave)
#undef KO_DECLARE_

#ifdef __cplusplus
}
#endif

#endif
