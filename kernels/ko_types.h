/* SPDX-License-Identifier: MIT */
/* What the names of the integer kernels are made of: ko_<types>_<operation>[_CH].
 *
 *   types word      activations, in and out   weights                      zero points passed
 *   uint8           uint8_t, asymmetric       uint8_t, asymmetric          in, weights, out
 *   int8symwt       uint8_t, asymmetric       int8_t, symmetric (zero 0)   in, out
 *   int8_int8symwt  int8_t, asymmetric        int8_t, symmetric            in, out
 *
 * With _CH every output channel has a multiplier, a shift and, in the uint8 kernels, a weight zero
 * point of its own; without it they are pointers to one value for all channels.
 *
 * Maps are rows of pixels of channels; x is the direction of the width. A bias is in units of input
 * scale * weight scale; a null bias is one of zeros. Accumulators have 32 bits and wrap. Outputs
 * are requantized (ko_requantize.h) and saturated to the type of the output. Kernels check nothing
 * and return 0; without output channels or pixels they write nothing.
 *
 * Scratch buffers must be aligned to 4 bytes and may hold anything on entry. Every other pointer
 * needs the alignment of its own type only. */
#ifndef NNLIB_KERNELS_KO_TYPES_H
#define NNLIB_KERNELS_KO_TYPES_H

#include <stdint.h>

/* X(types) for each types word, and X(types, suffix) for each of the six forms of a kernel. */
#define KO_TYPES_WORDS(X) X(uint8) X(int8symwt) X(int8_int8symwt)
#define KO_FORMS(X)   \
  X(uint8, )          \
  X(uint8, _CH)       \
  X(int8symwt, )      \
  X(int8symwt, _CH)   \
  X(int8_int8symwt, ) \
  X(int8_int8symwt, _CH)

#define KO_ACTIVATION(types) KO_ACTIVATION_##types
#define KO_ACTIVATION_uint8 uint8_t
#define KO_ACTIVATION_int8symwt uint8_t
#define KO_ACTIVATION_int8_int8symwt int8_t

#define KO_WEIGHT(types) KO_WEIGHT_##types
#define KO_WEIGHT_uint8 uint8_t
#define KO_WEIGHT_int8symwt int8_t
#define KO_WEIGHT_int8_int8symwt int8_t

#define KO_ZEROPOINTS(types) KO_ZEROPOINTS_##types
#define KO_ZEROPOINTS_uint8 \
  uint8_t in_zeropoint, const uint8_t *weight_zeropoint, uint8_t out_zeropoint
#define KO_ZEROPOINTS_int8symwt uint8_t in_zeropoint, uint8_t out_zeropoint
#define KO_ZEROPOINTS_int8_int8symwt int8_t in_zeropoint, int8_t out_zeropoint

/* The first arguments of every convolution over maps and kernels of any sides. */
#define KO_CONVOLUTION(types)                                                                   \
  const KO_ACTIVATION(types) * in, uint16_t in_width, uint16_t in_height, uint16_t in_channels, \
      const KO_WEIGHT(types) * weights, uint16_t out_channels, uint16_t kernel_width,           \
      uint16_t kernel_height, uint16_t pad_x, uint16_t pad_y, uint16_t stride_x,                \
      uint16_t stride_y, const int32_t *bias, const int32_t *multiplier, const int16_t *shift,  \
      KO_ZEROPOINTS(types), KO_ACTIVATION(types) * out, uint16_t out_width, uint16_t out_height

#endif
