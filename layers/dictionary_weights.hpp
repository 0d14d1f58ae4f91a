// SPDX-License-Identifier: MIT
// Weights that are indices into a table of floats.
#ifndef NNLIB_LAYERS_DICTIONARY_WEIGHTS_HPP
#define NNLIB_LAYERS_DICTIONARY_WEIGHTS_HPP

#include <cstdint>

#include "core/ai_datatypes_format.h"
#include "core/ai_tensor.h"

namespace nnlib {

// The table, or null when the weights are plain floats.
inline const float* weights_dictionary(const ai_tensor& weights) {
  const uint32_t type = ai_fmt_get_type_id(weights.data->format);
  const bool indices = type == AI_FORMAT_TYPE_LUT4 || type == AI_FORMAT_TYPE_LUT8;
  return indices ? static_cast<const float*>(weights.data->data_start) : nullptr;
}

// Bits of an index: 4, or 8 for every other format.
inline uint32_t weights_index_bits(const ai_tensor& weights) {
  const ai_array_format format = weights.data->format;
  return ai_fmt_get_bits(format) >> ai_fmt_get_comp_shift(format) == 4 ? 4 : 8;
}

}  // namespace nnlib

#endif
