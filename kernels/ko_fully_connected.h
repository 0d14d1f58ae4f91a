/* SPDX-License-Identifier: MIT */
/* The integer fully connected kernels. */
#ifndef NNLIB_KERNELS_KO_FULLY_CONNECTED_H
#define NNLIB_KERNELS_KO_FULLY_CONNECTED_H

#include "kernels/ko_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Bytes of scratch for a vector. */
uint32_t ko_fully_connected_scratch_size(uint16_t length);

/* Weights [rows][length]. The accumulator of output r is bias[r] plus the sum of (weights[r][i] -
 * weight zero point) * (in[i] - input zero point); _CH has a multiplier, a shift and a weight zero
 * point for each row. The scratch, or null, serves speed only: it receives the widened input. */
#define KO_DECLARE_(types, suffix)                                                          \
  int32_t ko_##types##_fully_connected##suffix(                                             \
      const KO_ACTIVATION(types) * in, const KO_WEIGHT(types) * weights, uint16_t length,   \
      uint16_t rows, const int32_t* multiplier, const int16_t* shift, KO_ZEROPOINTS(types), \
      const int32_t* bias, KO_ACTIVATION(types) * out, void* scratch);
KO_FORMS(KO_DECLARE_)
#undef KO_DECLARE_

#ifdef __cplusplus
}
#endif

#endif
