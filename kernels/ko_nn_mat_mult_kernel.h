/* SPDX-License-Identifier: MIT */
/* The matrix kernels of the integer convolutions: every output channel of two pixels. */
#ifndef NNLIB_KERNELS_KO_NN_MAT_MULT_KERNEL_H
#define NNLIB_KERNELS_KO_NN_MAT_MULT_KERNEL_H

#include "kernels/ko_types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* columns: two columns of `length` values, and right behind them the 32-bit biases of the output
 * channels, aligned to 4 bytes. Writes the output channels of the first pixel, then those of the
 * second, and returns the end of both.
 *
 * The columns hold inputs as they are, and the biases are corrected for the input zero point (see
 * ko_convolve_HWC.h). For columns of inputs less their zero point, pass 0 as the input zero point
 * and uncorrected biases.
 *
 * ..._reordered: the columns are in the interleaved order of ko_<type>_reordered_no_shift, the
 * weights in their natural order. */
#define KO_MAT_MULT(types)                                                                    \
  const KO_WEIGHT(types) * weights, const int16_t *columns, uint16_t out_channels,            \
      uint16_t length, const int16_t *shift, const int32_t *multiplier, KO_ZEROPOINTS(types), \
      KO_ACTIVATION(types) * out
#define KO_DECLARE_(types, suffix)                                                    \
  KO_ACTIVATION(types) * ko_##types##_nn_mat_mult_kernel##suffix(KO_MAT_MULT(types)); \
  KO_ACTIVATION(types) * ko_##types##_nn_mat_mult_kernel_reordered##suffix(KO_MAT_MULT(types));
KO_FORMS(KO_DECLARE_)
#undef KO_DECLARE_

#ifdef __cplusplus
}
#endif

#endif
