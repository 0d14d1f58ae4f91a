// SPDX-License-Identifier: MIT
#include "core/core_convert.h"

#include <bit>
#include <type_traits>

#include "kernels/arm_convert.h"
#include "kernels/arm_shift.h"
#include "kernels/map_elements.hpp"
#include "kernels/round_quantized.hpp"
#include "kernels/saturate.hpp"
#include "layers/layer_tensors.hpp"
#include "layers_quantized/quantized_types.hpp"

namespace nnlib {
namespace {

// The exponents of formats are far inside those of floats.
void scale_by_power_of_two(float* values, int32_t exponent, ai_size count) {
  const float factor = std::bit_cast<float>(static_cast<uint32_t>(127 + exponent) << 23);
  map_elements(values, values, count, [=](float x) { return x * factor; });
}

void require_fixed() {
  if (!kFixedLinked) {
    core_hang();
  }
}

void float_to_fixed(float* in, const ai_tensor& output, ai_size count) {
  require_fixed();
  const ai_array_format format = ai_tensor_format(&output);
  if (const int32_t integer_bits = ai_fmt_get_ibits(format); integer_bits != 0) {
    scale_by_power_of_two(in, -integer_bits, count);
  }
  if (ai_fmt_get_bits(format) == 8) {
    arm_float_to_q7(in, tensor_data<q7_t>(output), count);
  } else {
    arm_float_to_q15(in, tensor_data<q15_t>(output), count);
  }
}

void float_to_integer(const float* in, const ai_tensor& output, ai_size count) {
  const float scale = tensor_scale(output);
  const float zero_point = static_cast<float>(tensor_zeropoint(output));
  for_elements(ai_fmt_is_signed(ai_tensor_format(&output)), [&](auto element) {
    using T = decltype(element);
    if constexpr (std::is_signed_v<T>) {
      map_elements(in, tensor_data<T>(output), count,
                   [=](float x) { return saturate<T>(plus_half_away(x / scale + zero_point)); });
    } else {
      const float offset = zero_point + 0.5f;
      map_elements(in, tensor_data<T>(output), count,
                   [=](float x) { return saturate<T>(x / scale + offset); });
    }
  });
}

void fixed_to_float(const ai_tensor& input, float* out, ai_size count) {
  require_fixed();
  const ai_array_format format = ai_tensor_format(&input);
  if (ai_fmt_get_bits(format) == 8) {
    arm_q7_to_float(tensor_data<q7_t>(input), out, count);
  } else {
    arm_q15_to_float(tensor_data<q15_t>(input), out, count);
  }
  if (const int32_t integer_bits = ai_fmt_get_ibits(format); integer_bits != 0) {
    scale_by_power_of_two(out, integer_bits, count);
  }
}

void integer_to_float(const ai_tensor& input, float* out, ai_size count) {
  const float scale = tensor_scale(input);
  const int32_t zero_point = tensor_zeropoint(input);
  for_elements(ai_fmt_is_signed(ai_tensor_format(&input)), [&](auto element) {
    using T = decltype(element);
    map_elements(tensor_data<T>(input), out, count,
                 [=](T x) { return static_cast<float>(x - zero_point) * scale; });
  });
}

void shift(const q7_t* in, int32_t count, q7_t* out, ai_size elements) {
  arm_shift_q7(in, saturate<int8_t>(count), out, elements);
}
void shift(const q15_t* in, int32_t count, q15_t* out, ai_size elements) {
  arm_shift_q15(in, saturate<int8_t>(count), out, elements);
}

void change_width(const q7_t* in, q15_t* out, ai_size count) {
  arm_q7_to_q15(in, out, count);
}
void change_width(const q15_t* in, q7_t* out, ai_size count) {
  arm_q15_to_q7(in, out, count);
}

template <class T>
void fixed_to_fixed(T* in, T* out, int32_t left, ai_size count) {
  if (left != 0) {
    shift(in, left, out, count);
  }
}
template <class In, class Out>
void fixed_to_fixed(In* in, Out* out, int32_t left, ai_size count) {
  if (left > 0) {
    shift(in, left, in, count);
  }
  change_width(in, out, count);
  if (left < 0) {
    shift(out, left, out, count);
  }
}

template <class In>
void fixed_to_fixed(In* in, const ai_tensor& output, int32_t left, ai_size count) {
  if (ai_fmt_get_bits(ai_tensor_format(&output)) == 8) {
    fixed_to_fixed(in, tensor_data<q7_t>(output), left, count);
  } else {
    fixed_to_fixed(in, tensor_data<q15_t>(output), left, count);
  }
}

}  // namespace
}  // namespace nnlib

void node_convert(ai_layer* layer) {
  const ai_tensor& input = nnlib::layer_input(*layer);
  const ai_tensor& output = nnlib::layer_output(*layer);
  const ai_size count = ai_shape_elements(&input.shape);
  if (ai_fmt_get_type_id(ai_tensor_format(&input)) == AI_FORMAT_TYPE_FLOAT) {
    float* in = nnlib::tensor_data<float>(input);
    if (output.klass == nullptr) {
      nnlib::float_to_fixed(in, output, count);
    } else {
      nnlib::float_to_integer(in, output, count);
    }
    return;
  }
  float* out = nnlib::tensor_data<float>(output);
  if (input.klass == nullptr) {
    nnlib::fixed_to_float(input, out, count);
  } else {
    nnlib::integer_to_float(input, out, count);
  }
}

void node_convert_fixed(ai_layer* layer) {
  const ai_tensor& input = nnlib::layer_input(*layer);
  const ai_tensor& output = nnlib::layer_output(*layer);
  const ai_size count = ai_shape_elements(&input.shape);
  const ai_array_format format = ai_tensor_format(&input);
  const int32_t left = ai_fmt_get_ibits(format) - ai_fmt_get_ibits(ai_tensor_format(&output));
  if (ai_fmt_get_bits(format) == 8) {
    nnlib::fixed_to_fixed(nnlib::tensor_data<q7_t>(input), output, left, count);
  } else {
    nnlib::fixed_to_fixed(nnlib::tensor_data<q15_t>(input), output, left, count);
  }
}

void node_convert_integer(ai_layer* layer) {
  const ai_tensor& input = nnlib::layer_input(*layer);
  const uint8_t* in = nnlib::tensor_data<uint8_t>(input);
  uint8_t* out = nnlib::tensor_data<uint8_t>(nnlib::layer_output(*layer));
  const ai_size count = ai_shape_elements(&input.shape);
  nnlib::map_words(in, out, count, [](uint32_t word) { return word ^ UINT32_C(0x80808080); });
}
