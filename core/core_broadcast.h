/* SPDX-License-Identifier: MIT */
/* Broadcasting of dimensions of size 1 over the loops of a larger shape.
 *
 * The loops run batch fastest, then channels, width and height, and move each operand by an
 * element step after every visit and after every finished loop:
 *
 *   for d3 < s[3]:
 *     for d2 < s[2]:
 *       for d1 < s[1]:
 *         for d0 < s[0]:
 *           visit p; p += offsets[0]
 *         p += offsets[1]
 *       p += offsets[2]
 *     p += offsets[3]
 *
 * Limit: an operand cannot be broadcast over batch and channels at once (sizes 1 and 1 where the
 * loops have more of both): its walk then leaves the operand. Every other combination of
 * dimensions, each either of the loop's size or of size 1, walks the operand exactly; so with a
 * batch of 1 there is no limit. */
#ifndef NNLIB_CORE_CORE_BROADCAST_H
#define NNLIB_CORE_CORE_BROADCAST_H

#include "core/ai_tensor.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A shape-like record of element steps, one after each of the four loops. */
typedef struct ai_offsets {
  uint32_t type_size; /* a type byte of the caller's, then the number of dimensions */
  int32_t* data;      /* AI_SHAPE_DIMS steps, in elements */
} ai_offsets;

/* out[i] = max(a[i], b[i]) for each dimension of a, as many as which b is taken to have. out takes
 * a's dimension count and keeps its own type byte. Sizes that differ without one of them being 1
 * are not noticed. */
void core_get_broadcasted_shape(ai_shape* out, const ai_shape* a, const ai_shape* b);

/* The four element steps that walk an operand of shape a through loops over shape s. With eq_i = 1
 * where a[i] = s[i], else 0, and ne_i = 1 - eq_i:
 *
 *   out[0] = eq0
 *   out[1] = eq1 * ne0 - a0 * ne1
 *   out[2] = a0 * ne1 + ne0 * ne1 * eq2 - a0 * a1 * ne2
 *   out[3] = a0 * a1 * ne2 + ne0 * ne1 * ne2 * eq3 - a0 * a1 * a2 * ne3
 *
 * Both shapes have four dimensions. out takes a's dimension count and keeps its own type byte. */
void core_compute_offsets(ai_offsets* out, const ai_shape* a, const ai_shape* s);

#ifdef __cplusplus
}
#endif

#endif
