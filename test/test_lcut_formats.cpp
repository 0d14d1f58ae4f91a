// SPDX-License-Identifier: MIT
// Array and buffer format words.
#include <algorithm>
#include <iterator>

#include "test/fixture.hpp"
#include "test/reference/formats.h"

namespace {

constexpr uint32_t kArrayFormats = std::size(array_format_codes);
constexpr uint32_t kAllFlags = format_all_flags[0];
constexpr uint32_t kKeptFlags = format_kept_flags[0];
constexpr uint32_t kUnknown = 0x1030507;

// The list of named formats, with and without flags.
template <uint32_t Count>
void check_formats(lcut_case* tc, uint32_t (*get_formats)(const uint32_t**),
                   const char* (*name)(uint32_t), const uint32_t (&codes)[Count],
                   const char* const (&names)[Count], Site site = CALLING_SITE) {
  const uint32_t* formats = nullptr;
  check_equal(tc, {Count}, {get_formats(&formats)}, site);
  for (uint32_t i = 0; i < Count; ++i) {
    check_equal(tc, {codes[i]}, {formats[i]}, site);
    for (const uint32_t flags : {uint32_t{0}, kAllFlags}) {
      lcut_str_equal(tc, names[i], name(codes[i] | flags), site.line, site.function, site.file);
    }
  }
}

// Calls check(word, bits, fbits, is_signed) for fixed-point words of 1 to 64 bits, all fields set
// over the given word.
template <class Check>
void for_each_q(uint32_t base, Check check) {
  base = ai_fmt_set_float(ai_fmt_set_type_id(base, AI_FORMAT_TYPE_Q), false);
  base = ai_fmt_set_comp_shift(ai_fmt_set_pbits(base, 0), 0);
  for (const bool is_signed : {false, true}) {
    for (int32_t bits = 1; bits <= 64; ++bits) {
      for (int32_t fbits = -bits; fbits < bits; ++fbits) {
        const uint32_t fmt =
            ai_fmt_set_bits(ai_fmt_set_signed(base, is_signed), static_cast<uint32_t>(bits));
        check(ai_fmt_set_fbits(fmt, fbits), bits, fbits, is_signed);
      }
    }
  }
}

// Every field of a fixed-point word with the given flags.
void check_q(lcut_case* tc, uint32_t fmt, int32_t bits, int32_t fbits, bool is_signed,
             uint32_t flags, Site site = CALLING_SITE) {
  check_equal(tc, {bits, fbits, bits - fbits - (is_signed ? 1 : 0), is_signed, 2, 0, 0, 0, flags},
              {ai_fmt_get_bits(fmt), ai_fmt_get_fbits(fmt), ai_fmt_get_ibits(fmt),
               ai_fmt_is_signed(fmt), ai_fmt_get_type_id(fmt), ai_fmt_get_pbits(fmt),
               ai_fmt_get_comp_shift(fmt), ai_fmt_is_float(fmt), ai_fmt_get_flags(fmt)},
              site);
}

// The name of a fixed-point word: its own where its code is among the named ones, otherwise its
// family's.
template <uint32_t Count>
void check_q_name(lcut_case* tc, const char* name, uint32_t code, const uint32_t (&codes)[Count],
                  const char* const (&names)[Count], const char* family, Site site = CALLING_SITE) {
  const uint32_t* named = std::find(codes, codes + Count, code);
  lcut_str_equal(tc, named != codes + Count ? names[named - codes] : family, name, site.line,
                 site.function, site.file);
}

}  // namespace

CASE(tc_array_formats_check_formats) {
  check_formats(tc, ai_array_fmt_get_formats, ai_array_fmt_name, array_format_codes,
                array_format_names);
}

CASE(tc_array_formats_check_q_formats) {
  for_each_q(kAllFlags, [tc](uint32_t fmt, int32_t, int32_t, bool is_signed) {
    LCUT_TRUE(tc, ai_array_fmt_valid(fmt));
    check_q_name(tc, ai_array_fmt_name(fmt), fmt & ~kAllFlags, array_format_codes,
                 array_format_names, is_signed ? "AI_ARRAY_FORMAT_Q" : "AI_ARRAY_FORMAT_UQ");
  });
}

CASE(tc_buffer_formats_check_formats) {
  check_formats(tc, ai_buffer_fmt_get_formats, ai_buffer_fmt_name, buffer_format_codes,
                buffer_format_names);
}

CASE(tc_formats_check_bits) {
  for (uint32_t i = 0; i < kArrayFormats; ++i) {
    const uint32_t fmt = array_format_codes[i] | kAllFlags;
    const int32_t* fields = &array_format_fields[i * 7];
    check_equal(tc, {fields[0], fields[1], fields[2], fields[3], fields[4], fields[5], fields[6]},
                {ai_fmt_get_fbits(fmt), ai_fmt_get_bits(fmt), ai_fmt_get_pbits(fmt),
                 ai_fmt_get_type_id(fmt), ai_fmt_get_comp_shift(fmt), ai_fmt_is_signed(fmt),
                 ai_fmt_is_float(fmt)});
    check_equal(tc, {array_format_codes[i], kAllFlags},
                {ai_fmt_get_code(fmt), ai_fmt_get_flags(fmt)});
  }
}

CASE(tc_array_formats_check_fbits_ibits) {
  for (int32_t fbits = -64; fbits <= 63; ++fbits) {
    check_q(tc, AI_ARRAY_FORMAT_MAKE_Q(12, fbits), 12, fbits, true, 0);
    check_q(tc, AI_ARRAY_FORMAT_MAKE_UQ(12, fbits), 12, fbits, false, 0);
  }
}

CASE(tc_array_formats_check_q_to_int_mapping) {
  check_equal(tc,
              {AI_ARRAY_FORMAT_S4, AI_ARRAY_FORMAT_S8, AI_ARRAY_FORMAT_S16, AI_ARRAY_FORMAT_S32},
              {AI_ARRAY_FORMAT_MAKE_Q(4, 0), AI_ARRAY_FORMAT_MAKE_Q(8, 0),
               AI_ARRAY_FORMAT_MAKE_Q(16, 0), AI_ARRAY_FORMAT_MAKE_Q(32, 0)});
  check_equal(tc,
              {AI_ARRAY_FORMAT_U4, AI_ARRAY_FORMAT_U8, AI_ARRAY_FORMAT_U16, AI_ARRAY_FORMAT_U32},
              {AI_ARRAY_FORMAT_MAKE_UQ(4, 0), AI_ARRAY_FORMAT_MAKE_UQ(8, 0),
               AI_ARRAY_FORMAT_MAKE_UQ(16, 0), AI_ARRAY_FORMAT_MAKE_UQ(32, 0)});
}

CASE(tc_formats_check_conversions) {
  for (uint32_t i = 0; i < kArrayFormats; ++i) {
    const uint32_t fmt = array_format_codes[i];
    check_equal(tc, {array_format_buffer_words[i], array_format_buffer_words[i] | kKeptFlags},
                {ai_array_to_buffer_fmt(fmt), ai_array_to_buffer_fmt(fmt | kAllFlags)});
  }
  for (const uint32_t fmt : buffer_format_codes) {
    check_equal(tc, {fmt, fmt | kKeptFlags},
                {ai_buffer_to_array_fmt(fmt), ai_buffer_to_array_fmt(fmt | kAllFlags)});
  }
  // Padding and compression of a fixed-point word do not cross.
  const uint32_t padded = ai_fmt_set_comp_shift(ai_fmt_set_pbits(AI_ARRAY_FORMAT_Q7, 3), 1);
  LCUT_INT_EQUAL(tc, AI_BUFFER_FORMAT_Q7, ai_array_to_buffer_fmt(padded));
}

CASE(tc_formats_check_exported) {
  for (uint32_t i = 0; i < kArrayFormats; ++i) {
    LCUT_INT_EQUAL(tc, array_format_exported[i],
                   ai_array_fmt_exported(array_format_codes[i] | kAllFlags));
  }
  uint32_t exported[2] = {0, 0};
  for_each_q(0, [&exported](uint32_t fmt, int32_t, int32_t, bool is_signed) {
    exported[is_signed] += ai_array_fmt_exported(fmt) ? 1u : 0u;
  });
  check_equal(tc, {exported_q_words[0], exported_q_words[1]}, {exported[0], exported[1]});
}

CASE(tc_formats_check_invalids) {
  const uint32_t float_24_bits = ai_fmt_set_bits(AI_ARRAY_FORMAT_FLOAT, 24);
  for (const uint32_t fmt : {kUnknown, float_24_bits, kUnknown | kAllFlags}) {
    LCUT_FALSE(tc, ai_array_fmt_valid(fmt) || ai_buffer_fmt_valid(fmt));
    LCUT_FALSE(tc, ai_array_fmt_exported(fmt));
    LCUT_STR_EQUAL(tc, "", ai_array_fmt_name(fmt));
    LCUT_STR_EQUAL(tc, "", ai_buffer_fmt_name(fmt));
    LCUT_INT_EQUAL(tc, AI_BUFFER_FORMAT_NONE, ai_fmt_get_code(ai_array_to_buffer_fmt(fmt)));
  }
  LCUT_FALSE(tc, ai_buffer_fmt_valid(AI_ARRAY_FORMAT_FLOAT64));
}

CASE(tc_formats_check_format_flags_bits) {
  check_equal(
      tc, {0x42840447u, 0x00840447u, 0x19821040u},
      {ai_fmt_set_flags(0xA8840447u, 0x42000000u), ai_fmt_set_flags(0xFE840447u, 0x1234567u),
       ai_fmt_set_flags(AI_ARRAY_FORMAT_FLOAT, ai_fmt_get_flags(0x19FFFFFFu))});
  for (const uint32_t fmt : {0x41821040u, 0x20040440u, 0x08840447u}) {
    check_equal(tc, {fmt, fmt}, {ai_array_to_buffer_fmt(fmt), ai_buffer_to_array_fmt(fmt)});
  }
  // A flag makes an unnamed word unknown as a buffer format, not as an array format.
  const uint32_t q12_5 = AI_ARRAY_FORMAT_MAKE_Q(12, 5) | AI_FORMAT_FLAG_COPY;
  LCUT_STR_EQUAL(tc, "AI_ARRAY_FORMAT_Q", ai_array_fmt_name(q12_5));
  LCUT_STR_EQUAL(tc, "", ai_buffer_fmt_name(q12_5));
  LCUT_STR_EQUAL(tc, "AI_BUFFER_FORMAT_Q", ai_buffer_fmt_name(ai_fmt_get_code(q12_5)));
}

CASE(tc_formats_check_array_size_one) {
  uint32_t row = 0;
  for (const uint32_t fmt : sized_format_codes) {
    for (const uint32_t count : sized_format_counts) {
      const uint32_t bytes = ai_array_get_byte_size(fmt, count);
      check_equal(
          tc, {sized_format_bytes[row], sized_format_data_bytes[row], sized_format_elements[row]},
          {bytes, ai_array_get_data_byte_size(fmt, count),
           ai_array_get_elems_from_size(fmt, bytes)});
      ++row;
    }
  }
}

CASE(tc_array_formats_check_q_setters) {
  for_each_q(0xFFFFFFFF, [tc](uint32_t fmt, int32_t bits, int32_t fbits, bool is_signed) {
    check_q(tc, fmt, bits, fbits, is_signed, kAllFlags);
  });
}

CASE(tc_array_formats_convert_q) {
  for_each_q(kAllFlags, [tc](uint32_t fmt, int32_t bits, int32_t fbits, bool is_signed) {
    check_q(tc, ai_array_to_buffer_fmt(fmt), bits, fbits, is_signed, kKeptFlags);
  });
}

CASE(tc_buffer_formats_check_q_setters) {
  for_each_q(0, [tc](uint32_t fmt, int32_t, int32_t, bool is_signed) {
    LCUT_TRUE(tc, ai_buffer_fmt_valid(fmt));
    check_q_name(tc, ai_buffer_fmt_name(fmt), fmt, buffer_format_codes, buffer_format_names,
                 is_signed ? "AI_BUFFER_FORMAT_Q" : "AI_BUFFER_FORMAT_UQ");
  });
}

CASE(tc_buffer_formats_convert_q) {
  for_each_q(kAllFlags, [tc](uint32_t fmt, int32_t bits, int32_t fbits, bool is_signed) {
    check_q(tc, ai_buffer_to_array_fmt(fmt), bits, fbits, is_signed, kKeptFlags);
  });
}

SUITE(test_lcut_formats, "test_lcut_formats test unit", ENTRY(tc_array_formats_check_formats),
      ENTRY(tc_array_formats_check_q_formats), ENTRY(tc_buffer_formats_check_formats),
      ENTRY(tc_formats_check_bits), ENTRY(tc_array_formats_check_fbits_ibits),
      ENTRY(tc_array_formats_check_q_to_int_mapping), ENTRY(tc_formats_check_conversions),
      ENTRY(tc_formats_check_exported), ENTRY(tc_formats_check_invalids),
      ENTRY(tc_formats_check_format_flags_bits), ENTRY(tc_formats_check_array_size_one),
      ENTRY(tc_array_formats_check_q_setters), ENTRY(tc_array_formats_convert_q),
      ENTRY(tc_buffer_formats_check_q_setters), ENTRY(tc_buffer_formats_convert_q))
