// SPDX-License-Identifier: MIT
// Format words that the named formats do not reach, against a model of their bits.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "test/unit/format_model.hpp"

namespace {

using namespace format_model;

TEST(Formats, WordsAreNamedAndConvertedByTheirBits) {
  std::mt19937 random(1);
  std::vector<uint32_t> words;
  for (uint32_t code : array_format_codes) {
    for (uint32_t flags = 0; flags < 128; ++flags) words.push_back(code | flags << 25);
    for (int i = 0; i < 32; ++i) {
      for (int j = 0; j < i; ++j) words.push_back(code ^ 1u << i ^ 1u << j);
    }
  }
  for (uint32_t bits_and_fbits = 0; bits_and_fbits < 0x4000; ++bits_and_fbits) {
    words.push_back(kQ | kSign | bits_and_fbits);
    words.push_back(kQ | bits_and_fbits | (random() & ~kCode));
  }
  for (int i = 0; i < 100000; ++i) words.push_back(random());
  for (uint32_t word : words) ASSERT_EQ(mismatch(word), "") << "word 0x" << std::hex << word;
}

TEST(Formats, AllQWordsRoundTrip) {
  uint32_t exported[2] = {};
  for (int32_t bits = 1; bits <= 64; ++bits) {
    for (int32_t fbits = -bits; fbits < bits; ++fbits) {
      for (uint32_t word :
           {AI_ARRAY_FORMAT_MAKE_UQ(bits, fbits), AI_ARRAY_FORMAT_MAKE_Q(bits, fbits)}) {
        exported[ai_fmt_is_signed(word)] += ai_array_fmt_exported(word);
        word |= kKeptFlags;
        EXPECT_EQ(ai_buffer_to_array_fmt(ai_array_to_buffer_fmt(word)), word);
      }
    }
  }
  EXPECT_EQ(exported[0], 4156u);
  EXPECT_EQ(exported[1], 4156u);
  // Beyond their 7 bits both fields wrap.
  EXPECT_EQ(ai_fmt_get_fbits(AI_ARRAY_FORMAT_MAKE_Q(8, 64)), -64);
  EXPECT_EQ(ai_fmt_set_fbits(~0u, -65), ~0u);
  EXPECT_EQ(ai_fmt_set_bits(AI_ARRAY_FORMAT_Q7, 128 + 9), AI_ARRAY_FORMAT_MAKE_Q(9, 7));
}

TEST(Formats, SizesOfAnyWidthAreWhatFits) {
  for (uint32_t width = 1; width < 1024; ++width) {            // bits, and padding above them
    for (uint32_t type : {2, 4, 8, 4 + 16, 8 + 32, 2 + 48}) {  // compression above it
      for (uint32_t count : {1u, 2u, 3u, 7u, 9u, 30001u}) {
        const uint32_t word = width << 7 | type << 17;
        ASSERT_TRUE(sizes_agree(word, count)) << std::hex << word << ' ' << count;
      }
    }
  }
  // 32-bit bit counts wrap.
  EXPECT_EQ(ai_array_get_byte_size(AI_ARRAY_FORMAT_FLOAT, 0x08000001), 4u);
  EXPECT_EQ(ai_array_get_elems_from_size(AI_ARRAY_FORMAT_U8, 0x20000003), 3u);
}

}  // namespace
