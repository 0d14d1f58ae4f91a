// SPDX-License-Identifier: MIT
// Which types are linked by layers that see them only when they run: all, or those that
// NNLIB_QUANTIZED_TYPES of CMake names. A layer that is fed with others hangs. Kernels that a
// program names itself are there in any case.
#ifndef NNLIB_LAYERS_QUANTIZED_QUANTIZED_TYPES_HPP
#define NNLIB_LAYERS_QUANTIZED_QUANTIZED_TYPES_HPP

#include <string_view>

#include "core/core_common.h"
#include "kernels/ko_types.hpp"

// Types words of integers (ko_types.h), and fixed point, with commas between them.
#if !defined(NNLIB_QUANTIZED_TYPES)
#define NNLIB_QUANTIZED_TYPES "fixed,uint8,int8symwt,int8_int8symwt"
#endif

namespace nnlib {

constexpr bool names_types(std::string_view word) {
  for (std::string_view rest = NNLIB_QUANTIZED_TYPES; !rest.empty();) {
    const size_t comma = rest.find(',');
    if (rest.substr(0, comma) == word) {
      return true;
    }
    rest = comma == rest.npos ? std::string_view() : rest.substr(comma + 1);
  }
  return false;
}

inline constexpr bool kFixedLinked = names_types("fixed");

// Of activations and weights.
template <class Types>
inline constexpr bool kTypesLinked = false;
#define NNLIB_TYPES_LINKED(types) \
  template <>                     \
  inline constexpr bool kTypesLinked<KO_TYPES(types)> = names_types(#types);
KO_TYPES_WORDS(NNLIB_TYPES_LINKED)
#undef NNLIB_TYPES_LINKED

// Of activations alone.
template <class Activation>
inline constexpr bool kElementsLinked =
    kTypesLinked<KoTypes<Activation, uint8_t>> || kTypesLinked<KoTypes<Activation, int8_t>>;

// Calls function(T()) with T the type of the elements, int8_t or uint8_t.
template <class Function>
void for_elements(bool is_signed, Function function) {
  if (is_signed) {
    if constexpr (kElementsLinked<int8_t>) {
      return function(int8_t{});
    }
  } else if constexpr (kElementsLinked<uint8_t>) {
    return function(uint8_t{});
  }
  core_hang();
}

}  // namespace nnlib

#endif
