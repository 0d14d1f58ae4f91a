// SPDX-License-Identifier: MIT
#include "kernels/ai_dictionary.h"

#include "kernels/dictionary_dot.hpp"

namespace nnlib {
namespace {

template <unsigned Bits>
void add_dot(float* acc, const uint8_t* indices, const float* dictionary, const float* x,
             ai_size n) {
  float sum[1];
  dictionary_dots<Bits>(sum, indices, 0, dictionary, x, n);
  *acc += sum[0];
}

}  // namespace
}  // namespace nnlib

void ai_dict8_dot_array_f32(float* acc, const uint8_t* indices, const float* dictionary,
                            const float* x, ai_size n) {
  nnlib::add_dot<8>(acc, indices, dictionary, x, n);
}

void ai_dict4_dot_array_f32(float* acc, const uint8_t* indices, const float* dictionary,
                            const float* x, ai_size n) {
  nnlib::add_dot<4>(acc, indices, dictionary, x, n);
}

void ai_dict_decompress_f32(float* out, const uint8_t* indices, const float* dictionary,
                            uint32_t bits, ai_size row_len, ai_size count) {
  if (bits == 8) {
    for (ai_size i = 0; i < count; ++i) {
      out[i] = dictionary[indices[i]];
    }
  } else if (bits == 4) {
    ai_size column = 0;
    for (ai_size i = 0; i < count; ++i) {
      out[i] = dictionary[nnlib::dictionary_index<4>(indices, column)];
      if (++column == row_len) {
        indices += (row_len + 1) / 2;
        column = 0;
      }
    }
  }
}
