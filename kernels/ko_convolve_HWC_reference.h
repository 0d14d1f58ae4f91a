/* SPDX-License-Identifier: MIT */
/* The reference convolution: the arithmetic that every other convolution kernel reproduces. */
#ifndef NNLIB_KERNELS_KO_CONVOLVE_HWC_REFERENCE_H
#define NNLIB_KERNELS_KO_CONVOLVE_HWC_REFERENCE_H

#include "kernels/ko_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Weights [out_channels][kernel_height][kernel_width][in_channels]. The accumulator of an output is
 * its bias plus the sum of (weight - weight zero point) * (input - input zero point) over the
 * kernel positions inside the map: output (x, y) meets input column stride_x * x + kx - pad_x and
 * row stride_y * y + ky - pad_y. No scratch. */
#define KO_DECLARE_(types, suffix) \
  int32_t ko_##types##_convolve_HWC_reference##suffix(KO_CONVOLUTION(types));
KO_FORMS(KO_DECLARE_)
#undef KO_DECLARE_

#ifdef __cplusplus
}
#endif

#endif
