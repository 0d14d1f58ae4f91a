/* SPDX-License-Identifier: MIT */
/* The integer depthwise convolution: one filter for each channel. */
#ifndef NNLIB_KERNELS_KO_DEPTHWISE_SEPARABLE_CONV_HWC_H
#define NNLIB_KERNELS_KO_DEPTHWISE_SEPARABLE_CONV_HWC_H

#include "kernels/ko_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Bytes of scratch for the kernels of this header. */
uint32_t ko_depthwise_separable_conv_HWC_scratch_size(uint16_t channels, uint16_t kernel_width,
                                                      uint16_t kernel_height);

/* Writes the weights, [kernel_height][kernel_width][channels], less their zero point as 16-bit
 * values to scratch[(channels * K + 1) / 2] on, K = kernel_width * kernel_height. In memory:
 * channels in blocks of four; in a block kernel positions in pairs; of a pair the two values of
 * the block's first channel, then those of the second, third and fourth; of an odd last position
 * the four channels' values. All values of each of the 0 to 3 remaining channels follow. */
#define KO_WEIGHT_ZEROPOINT_uint8 const uint8_t *weight_zeropoint,
#define KO_WEIGHT_ZEROPOINT_int8symwt
#define KO_WEIGHT_ZEROPOINT_int8_int8symwt
#define KO_DECLARE_WADAPT_(types, suffix)                                                         \
  int32_t ko_##types##_DW_HWC_Wadapt##suffix(const KO_WEIGHT(types) * weights, uint16_t channels, \
                                             uint16_t kernel_width, uint16_t kernel_height,       \
                                             KO_WEIGHT_ZEROPOINT_##types void* scratch);
KO_FORMS(KO_DECLARE_WADAPT_)
#undef KO_DECLARE_WADAPT_

/* After ..._DW_HWC_Wadapt on the same scratch; weights and their zero points are not read, input
 * and output channels are equal. The accumulator of an output is its bias plus the sum of
 * (weight - weight zero point) * (input - input zero point) over the kernel positions inside the
 * map. */
#define KO_DECLARE_DEPTHWISE_(types, suffix)                                                 \
  int32_t ko_##types##_depthwise_separable_conv_HWC_nonsquare##suffix(KO_CONVOLUTION(types), \
                                                                      void* scratch);
KO_FORMS(KO_DECLARE_DEPTHWISE_)
#undef KO_DECLARE_DEPTHWISE_

#ifdef __cplusplus
}
#endif

#endif
