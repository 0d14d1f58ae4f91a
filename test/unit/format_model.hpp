// SPDX-License-Identifier: MIT
// What a format word means, in plain arithmetic on its bits, and a comparison with the functions.
#ifndef TEST_UNIT_FORMAT_MODEL_HPP
#define TEST_UNIT_FORMAT_MODEL_HPP

#include <iterator>
#include <string>

#include "core/ai_datatypes_format.h"
#include "test/reference/formats.h"

namespace format_model {

constexpr uint32_t kCode = 0x1FFFFFF;
constexpr uint32_t kKeptFlags = 1u << 27 | 1u << 29 | 1u << 30;
constexpr uint32_t kQ = 2u << 17;  // type of fixed point
constexpr uint32_t kSign = 1u << 23;
constexpr uint32_t kQFields = kSign | 0x3FFF;  // sign, bits, fbits

// The first function that disagrees about the word, or "".
inline std::string mismatch(uint32_t word) {
  size_t row = 0;
  while (row < std::size(array_format_codes) && array_format_codes[row] != (word & kCode)) ++row;
  const bool named = row < std::size(array_format_codes);
  const bool buffer_named = named && array_format_exported[row] != 0;
  const uint32_t other_fields = word & kCode & ~0x3FFFu;
  const std::string family = other_fields == 0              ? "NONE"
                             : other_fields == kQ           ? "UQ"
                             : other_fields == (kQ | kSign) ? "Q"
                                                            : "";
  const std::string name = named            ? array_format_names[row]
                           : family.empty() ? ""
                                            : "AI_ARRAY_FORMAT_" + family;
  const std::string buffer_name = buffer_named ? name
                                  : family.empty() || (word & ~kCode) != 0
                                      ? ""
                                      : "AI_BUFFER_FORMAT_" + family;
  const uint32_t flags = word & kKeptFlags;
  const uint32_t as_q = (word & kQFields) | kQ | flags;
  const uint32_t as_is = (word & kCode) | flags;
  const uint32_t buffer_word = (word >> 17 & 15) == 2 ? as_q : buffer_named ? as_is : (64 | flags);
  if (ai_array_fmt_name(word) != name) return "array name";
  if (ai_array_fmt_valid(word) != !name.empty()) return "array valid";
  if (ai_buffer_fmt_name(word) != buffer_name) return "buffer name";
  if (ai_buffer_fmt_valid(word) != !buffer_name.empty()) return "buffer valid";
  if (ai_array_fmt_exported(word) != (named ? buffer_named : !family.empty())) return "exported";
  if (ai_array_to_buffer_fmt(word) != buffer_word) return "to buffer";
  if (ai_buffer_to_array_fmt(word) != (buffer_named ? as_is : as_q)) return "to array";
  return "";
}

// Whether the bytes of count elements are a stream and a table, and what fits in them is the
// largest count of that size. The format needs a width, and no bit count may wrap.
inline bool sizes_agree(uint32_t word, uint32_t count) {
  const uint32_t width = (word >> 7 & 127) + (word >> 14 & 7);
  const uint32_t type = word >> 17 & 15;
  const uint32_t table_bytes = type == 4 ? 2 * width : type == 8 ? 32 * width : 0;
  const uint32_t size = ai_array_get_byte_size(word, count);
  const uint32_t fitting = ai_array_get_elems_from_size(word, size);
  return size == ai_array_get_data_byte_size(word, count) + table_bytes && fitting >= count &&
         ai_array_get_byte_size(word, fitting) == size &&
         ai_array_get_byte_size(word, fitting + 1) > size;
}

}  // namespace format_model

#endif
