// SPDX-License-Identifier: MIT
#include "core/ai_datatypes_format.h"

#include <cstddef>

namespace {

// X(suffix): every named array format, in list order.
#define ARRAY_FORMATS(X) \
  X(NONE)                \
  X(FLOAT)               \
  X(FLOAT64)             \
  X(FLOAT16)             \
  X(U8)                  \
  X(U16)                 \
  X(U32)                 \
  X(U64)                 \
  X(U4)                  \
  X(S8)                  \
  X(S16)                 \
  X(S32)                 \
  X(S64)                 \
  X(S4)                  \
  X(Q)                   \
  X(Q7)                  \
  X(Q15)                 \
  X(Q31)                 \
  X(UQ)                  \
  X(UQ7)                 \
  X(UQ15)                \
  X(UQ31)                \
  X(LUT4_FLOAT)          \
  X(LUT8_FLOAT)          \
  X(LUT4_Q15)            \
  X(LUT8_Q15)            \
  X(LUT4_UQ15)           \
  X(LUT8_UQ15)

#define BUFFER_FORMATS(X) \
  X(NONE) X(FLOAT) X(U8) X(U16) X(S8) X(S16) X(Q) X(Q7) X(Q15) X(UQ) X(UQ7) X(UQ15)

struct FormatName {
  const char* exact;
  const char* family;
};

#define ARRAY_CODE(suffix) AI_ARRAY_FORMAT_##suffix,
#define ARRAY_NAME(suffix) {"FMT_" #suffix, "AI_ARRAY_FORMAT_" #suffix},
#define BUFFER_CODE(suffix) AI_BUFFER_FORMAT_##suffix,
#define BUFFER_NAME(suffix) {"FMT_" #suffix, "AI_BUFFER_FORMAT_" #suffix},

constexpr ai_array_format kArrayFormats[] = {ARRAY_FORMATS(ARRAY_CODE)};
constexpr FormatName kArrayNames[] = {ARRAY_FORMATS(ARRAY_NAME)};
constexpr ai_buffer_format kBufferFormats[] = {BUFFER_FORMATS(BUFFER_CODE)};
constexpr FormatName kBufferNames[] = {BUFFER_FORMATS(BUFFER_NAME)};

// A word's family is the word with bits and fbits cleared.
constexpr uint32_t kFamilyMask = UINT32_C(0x1FFC000);
constexpr uint32_t kBufferFamilyMask = UINT32_C(0xFFFFC000);
constexpr uint32_t kZeroFbits = 0x40;
constexpr uint32_t kQBits = UINT32_C(0x3FFF);
constexpr uint32_t kSignBit = UINT32_C(0x800000);

// Without the names: those of a product that asks for none are not linked.
struct FormatList {
  const uint32_t* codes;
  uint32_t count;
  uint32_t family_mask;

  // The place of a code, or `count`.
  uint32_t find(uint32_t code) const {
    uint32_t i = 0;
    while (i < count && codes[i] != code) {
      ++i;
    }
    return i;
  }
  bool has(uint32_t code) const { return find(code) != count; }
  uint32_t find_family(uint32_t fmt) const { return find((fmt & family_mask) | kZeroFbits); }
};

template <size_t N>
constexpr FormatList make_list(const uint32_t (&codes)[N], uint32_t family_mask) {
  return {codes, static_cast<uint32_t>(N), family_mask};
}

constexpr FormatList kArrayList = make_list(kArrayFormats, kFamilyMask);
constexpr FormatList kBufferList = make_list(kBufferFormats, kBufferFamilyMask);

const char* name_of(const FormatList& list, const FormatName* names, uint32_t fmt) {
  if (const uint32_t i = list.find(ai_fmt_get_code(fmt)); i != list.count) {
    return names[i].exact;
  }
  const uint32_t i = list.find_family(fmt);
  return i != list.count ? names[i].family : "";
}

uint32_t element_bits(ai_array_format fmt) {
  return ai_fmt_get_bits(fmt) + ai_fmt_get_pbits(fmt);
}

uint32_t table_bits(ai_array_format fmt) {
  switch (ai_fmt_get_type_id(fmt)) {
    case AI_FORMAT_TYPE_LUT4:
      return element_bits(fmt) * 16;
    case AI_FORMAT_TYPE_LUT8:
      return element_bits(fmt) * 256;
    default:
      return 0;
  }
}

uint32_t round_up_to_byte(uint32_t bits) {
  return (bits + 7) & ~UINT32_C(7);
}

uint32_t stream_bits(ai_array_format fmt, uint32_t count) {
  return round_up_to_byte(count * element_bits(fmt)) >> ai_fmt_get_comp_shift(fmt);
}

}  // namespace

uint32_t ai_array_fmt_get_formats(const ai_array_format** formats) {
  *formats = kArrayFormats;
  return kArrayList.count;
}

uint32_t ai_buffer_fmt_get_formats(const ai_buffer_format** formats) {
  *formats = kBufferFormats;
  return kBufferList.count;
}

const char* ai_array_fmt_name(ai_array_format fmt) {
  return name_of(kArrayList, kArrayNames, fmt);
}

const char* ai_buffer_fmt_name(ai_buffer_format fmt) {
  return name_of(kBufferList, kBufferNames, fmt);
}

bool ai_array_fmt_valid(ai_array_format fmt) {
  return ai_array_fmt_name(fmt)[0] != '\0';
}

bool ai_buffer_fmt_valid(ai_buffer_format fmt) {
  return ai_buffer_fmt_name(fmt)[0] != '\0';
}

bool ai_array_fmt_exported(ai_array_format fmt) {
  const uint32_t code = ai_fmt_get_code(fmt);
  if (kArrayList.has(code)) {
    return kBufferList.has(code);
  }
  return kArrayList.find_family(fmt) != kArrayList.count;
}

ai_buffer_format ai_array_to_buffer_fmt(ai_array_format fmt) {
  const uint32_t flags = fmt & AI_FORMAT_KEPT_FLAGS;
  if (ai_fmt_get_type_id(fmt) == AI_FORMAT_TYPE_Q) {
    return ai_fmt_set_type_id(fmt & (kSignBit | kQBits), AI_FORMAT_TYPE_Q) | flags;
  }
  const ai_buffer_format code = ai_fmt_get_code(fmt);
  return (kBufferList.has(code) ? code : AI_BUFFER_FORMAT_NONE) | flags;
}

ai_array_format ai_buffer_to_array_fmt(ai_buffer_format fmt) {
  const uint32_t flags = fmt & AI_FORMAT_KEPT_FLAGS;
  if (kBufferList.has(ai_fmt_get_code(fmt))) {
    return ai_fmt_get_code(fmt) | flags;
  }
  return ai_fmt_set_type_id(fmt & (kSignBit | kQBits), AI_FORMAT_TYPE_Q) | flags;
}

uint32_t ai_array_get_byte_size(ai_array_format fmt, uint32_t count) {
  return count == 0 ? 0 : (stream_bits(fmt, count) + table_bits(fmt) + 7) >> 3;
}

uint32_t ai_array_get_data_byte_size(ai_array_format fmt, uint32_t count) {
  return count == 0 ? 0 : (stream_bits(fmt, count) + 7) >> 3;
}

uint32_t ai_array_get_elems_from_size(ai_array_format fmt, uint32_t size) {
  if (size == 0) {
    return 0;
  }
  const uint32_t stream = (size * 8 - table_bits(fmt)) << ai_fmt_get_comp_shift(fmt);
  return round_up_to_byte(stream) / element_bits(fmt);
}
