/* SPDX-License-Identifier: MIT */
/* Padding of width and height, for every element type. */
#ifndef NNLIB_LAYERS_LAYERS_PAD_GENERIC_FLOAT_H
#define NNLIB_LAYERS_LAYERS_PAD_GENERIC_FLOAT_H

#include "core/ai_layer.h"

#ifdef __cplusplus
extern "C" {
#endif

#define AI_PAD_CONSTANT 0u
#define AI_PAD_REFLECT 1u /* mirrored about the edge pixel, which is not repeated */
#define AI_PAD_EDGE 2u    /* the edge pixel repeated */

typedef struct ai_layer_pad {
  ai_layer base;
  uint32_t mode;        /* AI_PAD_* */
  const uint32_t* pads; /* [0] rows before, [1] columns before; the output's shape gives the rest */
  const ai_array* value; /* AI_PAD_CONSTANT: one element of the tensors' format; else unused */
} ai_layer_pad;

/* Chain: input and output of the same batch, channels and format. With T = pads[0], L = pads[1],
 * output pixel (T + y, L + x) is input pixel (y, x); the pixels around follow from the mode.
 *
 * AI_PAD_REFLECT: the columns before a row are its pixels 1, 2, ... L outwards, those after it W-2,
 * W-3, ...; rows after the map are likewise the mirrored rows. Of the rows before it only the first
 * min(T, L) are mirrored: their number comes from the column padding. When L < T the output's rows
 * L to T - 1 stay as they were. Mirroring that runs past the far edge turns back there.
 *
 * AI_PAD_EDGE: every cell is filled, whatever the pads. An unknown mode does nothing. */
void forward_pad(ai_layer* layer);

#ifdef __cplusplus
}
#endif

#endif
