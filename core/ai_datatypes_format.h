/* SPDX-License-Identifier: MIT */
/* Array and buffer format words: layout, named formats, validity, conversion, sizes.
 *
 * A format word is 32 bits (bit 0 least significant):
 *
 *   bits   field       meaning
 *   0-6    fbits       fractional bits, stored biased by 64 (range -64..63)
 *   7-13   bits        element width in bits, sign included; 0 in the generic Q, UQ and NONE
 *   14-16  pbits       padding bits after each element; an element is stored in bits + pbits
 *   17-20  type_id     AI_FORMAT_TYPE_*
 *   21-22  comp_shift  log2(element width / index width) of a look-up-table stream
 *   23     is_signed
 *   24     is_float    floating point (look-up table: the table holds floats)
 *   25-31  flags       not part of the format; 27, 29 and 30 survive the conversions
 */
#ifndef NNLIB_CORE_AI_DATATYPES_FORMAT_H
#define NNLIB_CORE_AI_DATATYPES_FORMAT_H

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef uint32_t ai_array_format;
/* Same layout, restricted to the formats that may cross the platform API. */
typedef uint32_t ai_buffer_format;

#define AI_FORMAT_TYPE_NONE 0u
#define AI_FORMAT_TYPE_FLOAT 1u
#define AI_FORMAT_TYPE_Q 2u
#define AI_FORMAT_TYPE_LUT4 4u
#define AI_FORMAT_TYPE_LUT8 8u

/* The format proper, without flags. */
#define AI_FORMAT_CODE_MASK UINT32_C(0x01FFFFFF)
/* The flags that array/buffer conversions keep. */
#define AI_FORMAT_KEPT_FLAGS UINT32_C(0x68000000)
/* The array owns its storage: the platform API copies caller data instead of re-pointing. */
#define AI_FORMAT_FLAG_COPY UINT32_C(0x20000000)

#define AI_ARRAY_FORMAT_NONE UINT32_C(0x0000040)
#define AI_ARRAY_FORMAT_FLOAT UINT32_C(0x1821040)
#define AI_ARRAY_FORMAT_FLOAT64 UINT32_C(0x1822040)
#define AI_ARRAY_FORMAT_FLOAT16 UINT32_C(0x1820840)
#define AI_ARRAY_FORMAT_U8 UINT32_C(0x0040440)
#define AI_ARRAY_FORMAT_U16 UINT32_C(0x0040840)
#define AI_ARRAY_FORMAT_U32 UINT32_C(0x0041040)
#define AI_ARRAY_FORMAT_U64 UINT32_C(0x0042040)
#define AI_ARRAY_FORMAT_U4 UINT32_C(0x0040240)
#define AI_ARRAY_FORMAT_S8 UINT32_C(0x0840440)
#define AI_ARRAY_FORMAT_S16 UINT32_C(0x0840840)
#define AI_ARRAY_FORMAT_S32 UINT32_C(0x0841040)
#define AI_ARRAY_FORMAT_S64 UINT32_C(0x0842040)
#define AI_ARRAY_FORMAT_S4 UINT32_C(0x0840240)
#define AI_ARRAY_FORMAT_Q UINT32_C(0x0840040)
#define AI_ARRAY_FORMAT_Q7 UINT32_C(0x0840447)
#define AI_ARRAY_FORMAT_Q15 UINT32_C(0x084084F)
#define AI_ARRAY_FORMAT_Q31 UINT32_C(0x084105F)
#define AI_ARRAY_FORMAT_UQ UINT32_C(0x0040040)
#define AI_ARRAY_FORMAT_UQ7 UINT32_C(0x0040447)
#define AI_ARRAY_FORMAT_UQ15 UINT32_C(0x004084F)
#define AI_ARRAY_FORMAT_UQ31 UINT32_C(0x004105F)
#define AI_ARRAY_FORMAT_LUT4_FLOAT UINT32_C(0x1E81040)
#define AI_ARRAY_FORMAT_LUT8_FLOAT UINT32_C(0x1D01040)
#define AI_ARRAY_FORMAT_LUT4_Q15 UINT32_C(0x0C8084F)
#define AI_ARRAY_FORMAT_LUT8_Q15 UINT32_C(0x0B0084F)
#define AI_ARRAY_FORMAT_LUT4_UQ15 UINT32_C(0x048084F)
#define AI_ARRAY_FORMAT_LUT8_UQ15 UINT32_C(0x030084F)

#define AI_BUFFER_FORMAT_NONE AI_ARRAY_FORMAT_NONE
#define AI_BUFFER_FORMAT_FLOAT AI_ARRAY_FORMAT_FLOAT
#define AI_BUFFER_FORMAT_U8 AI_ARRAY_FORMAT_U8
#define AI_BUFFER_FORMAT_U16 AI_ARRAY_FORMAT_U16
#define AI_BUFFER_FORMAT_S8 AI_ARRAY_FORMAT_S8
#define AI_BUFFER_FORMAT_S16 AI_ARRAY_FORMAT_S16
#define AI_BUFFER_FORMAT_Q AI_ARRAY_FORMAT_Q
#define AI_BUFFER_FORMAT_Q7 AI_ARRAY_FORMAT_Q7
#define AI_BUFFER_FORMAT_Q15 AI_ARRAY_FORMAT_Q15
#define AI_BUFFER_FORMAT_UQ AI_ARRAY_FORMAT_UQ
#define AI_BUFFER_FORMAT_UQ7 AI_ARRAY_FORMAT_UQ7
#define AI_BUFFER_FORMAT_UQ15 AI_ARRAY_FORMAT_UQ15

/* Constant fixed-point words of any width and fractional bits, e.g. Q7 with 2 fractional bits:
 * AI_ARRAY_FORMAT_MAKE_Q(8, 2). */
#define AI_ARRAY_FORMAT_MAKE_Q(bits, fbits) AI_FORMAT_WITH_BITS_(AI_ARRAY_FORMAT_Q, bits, fbits)
#define AI_ARRAY_FORMAT_MAKE_UQ(bits, fbits) AI_FORMAT_WITH_BITS_(AI_ARRAY_FORMAT_UQ, bits, fbits)
#define AI_FORMAT_WITH_BITS_(family, bits, fbits) \
  (((family) & ~UINT32_C(0x3FFF)) | ((uint32_t)(bits) << 7) | (((uint32_t)(fbits) + 64u) & 127u))

/* Bytes of count adjoining elements, as a constant: 4 each for FLOAT, 1 each for Q7; for a
 * look-up-table format the bytes of their indices. */
#define AI_FORMAT_RUN_BYTES(format, count)                                         \
  ((((((((format) >> 7) & 127u) + (((format) >> 14) & 7u)) * (uint32_t)(count)) >> \
     (((format) >> 21) & 3u)) +                                                    \
    7u) /                                                                          \
   8u)

/* Field getters and setters of both kinds of word; a setter returns the changed word and keeps
 * only as many low bits of the value as the field has. */
static inline uint32_t ai_fmt_get_field_(uint32_t fmt, unsigned shift, unsigned width) {
  return (fmt >> shift) & ((UINT32_C(1) << width) - 1u);
}
static inline uint32_t ai_fmt_set_field_(uint32_t fmt, unsigned shift, unsigned width,
                                         uint32_t value) {
  const uint32_t mask = ((UINT32_C(1) << width) - 1u) << shift;
  return (fmt & ~mask) | ((value << shift) & mask);
}

static inline int32_t ai_fmt_get_fbits(uint32_t fmt) {
  return (int32_t)ai_fmt_get_field_(fmt, 0, 7) - 64;
}
static inline uint32_t ai_fmt_set_fbits(uint32_t fmt, int32_t fbits) {
  return ai_fmt_set_field_(fmt, 0, 7, (uint32_t)fbits + 64u);
}
static inline uint32_t ai_fmt_get_bits(uint32_t fmt) {
  return ai_fmt_get_field_(fmt, 7, 7);
}
static inline uint32_t ai_fmt_set_bits(uint32_t fmt, uint32_t bits) {
  return ai_fmt_set_field_(fmt, 7, 7, bits);
}
static inline uint32_t ai_fmt_get_pbits(uint32_t fmt) {
  return ai_fmt_get_field_(fmt, 14, 3);
}
static inline uint32_t ai_fmt_set_pbits(uint32_t fmt, uint32_t pbits) {
  return ai_fmt_set_field_(fmt, 14, 3, pbits);
}
static inline uint32_t ai_fmt_get_type_id(uint32_t fmt) {
  return ai_fmt_get_field_(fmt, 17, 4);
}
static inline uint32_t ai_fmt_set_type_id(uint32_t fmt, uint32_t type_id) {
  return ai_fmt_set_field_(fmt, 17, 4, type_id);
}
static inline uint32_t ai_fmt_get_comp_shift(uint32_t fmt) {
  return ai_fmt_get_field_(fmt, 21, 2);
}
static inline uint32_t ai_fmt_set_comp_shift(uint32_t fmt, uint32_t comp_shift) {
  return ai_fmt_set_field_(fmt, 21, 2, comp_shift);
}
static inline bool ai_fmt_is_signed(uint32_t fmt) {
  return ai_fmt_get_field_(fmt, 23, 1) != 0;
}
static inline uint32_t ai_fmt_set_signed(uint32_t fmt, bool is_signed) {
  return ai_fmt_set_field_(fmt, 23, 1, is_signed ? 1u : 0u);
}
static inline bool ai_fmt_is_float(uint32_t fmt) {
  return ai_fmt_get_field_(fmt, 24, 1) != 0;
}
static inline uint32_t ai_fmt_set_float(uint32_t fmt, bool is_float) {
  return ai_fmt_set_field_(fmt, 24, 1, is_float ? 1u : 0u);
}
/* Integer bits: bits - fbits - is_signed. */
static inline int32_t ai_fmt_get_ibits(uint32_t fmt) {
  return (int32_t)ai_fmt_get_bits(fmt) - ai_fmt_get_fbits(fmt) - (ai_fmt_is_signed(fmt) ? 1 : 0);
}
/* The format proper and the flags of a word, both in their place; of the flags to set, only bits 25
 * to 31 count. */
static inline uint32_t ai_fmt_get_code(uint32_t fmt) {
  return fmt & AI_FORMAT_CODE_MASK;
}
static inline uint32_t ai_fmt_get_flags(uint32_t fmt) {
  return fmt & ~AI_FORMAT_CODE_MASK;
}
static inline uint32_t ai_fmt_set_flags(uint32_t fmt, uint32_t flags) {
  return ai_fmt_get_code(fmt) | ai_fmt_get_flags(flags);
}

/* Points *formats at the constant list of the named formats; returns its length (28 and 12). */
uint32_t ai_array_fmt_get_formats(const ai_array_format** formats);
uint32_t ai_buffer_fmt_get_formats(const ai_buffer_format** formats);

/* Short name ("FMT_Q7") of a named code; the long family name ("AI_ARRAY_FORMAT_Q") of any other
 * Q, UQ or NONE word; "" otherwise. Flags are ignored, but for one case: an unnamed buffer word
 * with any flag bit set is unknown. */
const char* ai_array_fmt_name(ai_array_format fmt);
const char* ai_buffer_fmt_name(ai_buffer_format fmt);

/* True exactly for the words that have a name. */
bool ai_array_fmt_valid(ai_array_format fmt);
bool ai_buffer_fmt_valid(ai_buffer_format fmt);

/* True when arrays of this format may cross the platform API. A named format that is not a buffer
 * format (S32, Q31, ...) is not exported, though other words of its family are. */
bool ai_array_fmt_exported(ai_array_format fmt);

/* Q words keep sign, bits and fbits (pbits and compression are dropped); the other named buffer
 * formats keep their code; all others become NONE. The flags of AI_FORMAT_KEPT_FLAGS are kept. */
ai_buffer_format ai_array_to_buffer_fmt(ai_array_format fmt);

/* The inverse of ai_array_to_buffer_fmt for every exported named or Q word; any word that is not a
 * named buffer format is read as a Q or UQ one. */
ai_array_format ai_buffer_to_array_fmt(ai_buffer_format fmt);

/* Bytes of count elements. The element stream is rounded up to whole bytes before and after
 * look-up-table compression. The full size adds the table: 16 or 256 elements.
 * Unsigned 32-bit arithmetic; 0 for count 0. */
uint32_t ai_array_get_byte_size(ai_array_format fmt, uint32_t count);
uint32_t ai_array_get_data_byte_size(ai_array_format fmt, uint32_t count);

/* Elements that fit in size bytes (the table's bytes taken off first); 0 for size 0. The format
 * must have a width: not the generic NONE, Q and UQ. */
uint32_t ai_array_get_elems_from_size(ai_array_format fmt, uint32_t size);

#ifdef __cplusplus
}
#endif

#endif
