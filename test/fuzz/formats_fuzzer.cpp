// SPDX-License-Identifier: MIT
// Format words against the model of the unit tests.
#include <fuzzer/FuzzedDataProvider.h>

#include "test/unit/format_model.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  const uint32_t word = input.ConsumeIntegral<uint32_t>();
  const uint32_t number = input.ConsumeIntegral<uint32_t>();
  if (!format_model::mismatch(word).empty()) __builtin_trap();
  ai_array_get_byte_size(word, number);
  ai_array_get_data_byte_size(word, number);
  if (ai_fmt_get_bits(word) + ai_fmt_get_pbits(word) != 0) {
    ai_array_get_elems_from_size(word, number);
    if (!format_model::sizes_agree(word, number % 0x10000 + 1)) __builtin_trap();
  }
  return 0;
}
