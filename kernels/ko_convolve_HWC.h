/* SPDX-License-Identifier: MIT */
/* The convolution kernels by way of two columns: the 16-bit copies of what two output pixels see.
 *
 * Scratch: ko_convolve_HWC_scratch_size bytes. With K = kernel width * kernel height * input
 * channels, two columns of K 16-bit values, then at byte 4 * K the output channels' corrected
 * 32-bit biases. Results are those of ko_<types>_convolve_HWC_reference. */
#ifndef NNLIB_KERNELS_KO_CONVOLVE_HWC_H
#define NNLIB_KERNELS_KO_CONVOLVE_HWC_H

#include "kernels/ko_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Bytes of scratch for the kernels of this header. */
uint32_t ko_convolve_HWC_scratch_size(uint16_t in_channels, uint16_t out_channels,
                                      uint16_t kernel_width, uint16_t kernel_height);

/* Writes the corrected biases into the scratch: bias - input zero point * sum of the channel's K
 * weights. */
#define KO_DECLARE_RANK1UPD_(types, suffix)                                          \
  int32_t ko_##types##_convolve_HWC_basic_rank1upd##suffix(                          \
      uint16_t in_channels, const KO_WEIGHT(types) * weights, uint16_t out_channels, \
      uint16_t kernel_width, uint16_t kernel_height, const int32_t* bias,            \
      KO_ACTIVATION(types) in_zeropoint, void* scratch);
KO_FORMS(KO_DECLARE_RANK1UPD_)
#undef KO_DECLARE_RANK1UPD_

/* Any shape, after ..._basic_rank1upd on the same scratch; bias itself is not read. */
#define KO_DECLARE_BASIC_(types, suffix) \
  int32_t ko_##types##_convolve_HWC_basic_nonsquare##suffix(KO_CONVOLUTION(types), void* scratch);
KO_FORMS(KO_DECLARE_BASIC_)
#undef KO_DECLARE_BASIC_

/* Three input channels, everything square; after ..._basic_rank1upd on the same scratch with the
 * kernel's side for both of its arguments; bias itself is not read. */
#define KO_DECLARE_RGB_(types, suffix)                                                             \
  int32_t ko_##types##_convolve_HWC_RGB##suffix(                                                   \
      const KO_ACTIVATION(types) * in, uint16_t in_size, uint16_t in_channels,                     \
      const KO_WEIGHT(types) * weights, uint16_t out_channels, uint16_t kernel_size, uint16_t pad, \
      uint16_t stride, const int32_t* bias, const int32_t* multiplier, const int16_t* shift,       \
      KO_ZEROPOINTS(types), KO_ACTIVATION(types) * out, uint16_t out_size, void* scratch);
KO_FORMS(KO_DECLARE_RGB_)
#undef KO_DECLARE_RGB_

/* A kernel of one position, no padding, strides of 1; needs no corrected biases, but scratch
 * of the whole size. */
#define KO_DECLARE_1X1_(types, suffix)                                                \
  int32_t ko_##types##_convolve_1x1_HWC_fast_nonsquare##suffix(KO_CONVOLUTION(types), \
                                                               void* scratch);
KO_FORMS(KO_DECLARE_1X1_)
#undef KO_DECLARE_1X1_

#ifdef __cplusplus
}
#endif

#endif
