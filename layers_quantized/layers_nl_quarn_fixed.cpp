// SPDX-License-Identifier: MIT
#include "layers_quantized/layers_nl_quarn_fixed.h"

#include <algorithm>

#include "kernels/arm_shift.h"
#include "kernels/ko_fxp_nl.h"
#include "kernels/saturate.hpp"
#include "layers/layer_tensors.hpp"

namespace nnlib {
namespace {

constexpr int32_t kTableIntegerBits = 3;
enum : uint16_t { kSigmoid = 0, kTanh = 1 };

// Calls in_place(elements of out), a copy of in's.
template <class T, class InPlace>
void apply_elements(ai_array& out, const ai_array& in, ai_size size, InPlace in_place) {
  T* elements = static_cast<T*>(out.data);
  if (out.data != in.data) {
    std::copy_n(static_cast<const T*>(in.data), size, elements);
  }
  in_place(elements);
}

template <class InPlace>
void apply(ai_array& out, const ai_array& in, ai_size size, InPlace in_place) {
  if (ai_fmt_get_bits(in.format) == 8) {
    apply_elements<q7_t>(out, in, size, in_place);
  } else {
    apply_elements<q15_t>(out, in, size, in_place);
  }
}

void relu(q7_t* data, ai_size size) {
  ko_fxp_relu_q7(data, size);
}
void relu(q15_t* data, ai_size size) {
  ko_fxp_relu_q15(data, size);
}

// Integer bits that the Q7 kernel takes need no shift; below, it is told the fewest.
void activate(q7_t* data, ai_size size, int32_t integer_bits, uint16_t type) {
  const int32_t taken = std::clamp<int32_t>(integer_bits, 0, kTableIntegerBits);
  if (integer_bits != taken) {
    arm_shift_q7(data, saturate<int8_t>(integer_bits - taken), data, size);
  }
  ko_fxp_nn_activations_direct_q7(data, size, static_cast<uint16_t>(taken), type);
}
// With fewer integer bits than the table has the Q15 kernel gets negative data wrong.
void activate(q15_t* data, ai_size size, int32_t integer_bits, uint16_t type) {
  if (integer_bits != kTableIntegerBits) {
    arm_shift_q15(data, saturate<int8_t>(integer_bits - kTableIntegerBits), data, size);
  }
  ko_fxp_nn_activations_direct_q15(data, size, kTableIntegerBits, type);
}

void activate_array(ai_array& out, const ai_array& in, ai_size size, uint16_t type) {
  const int32_t integer_bits = ai_fmt_get_ibits(in.format);
  apply(out, in, size, [=](auto* data) { activate(data, size, integer_bits, type); });
}

void run_layer(ai_layer* layer, ai_nl_func kernel) {
  const ai_tensor& input = layer_input(*layer);
  const ai_array* params = layer_record<ai_layer_nl>(layer).nl_params;
  kernel(layer_output(*layer).data, input.data, ai_shape_elements(&input.shape),
         params != nullptr ? params->data : nullptr);
}

}  // namespace
}  // namespace nnlib

void nl_func_relu_array_fixed(ai_array* out, const ai_array* in, ai_size size,
                              const void* /*params*/) {
  nnlib::apply(*out, *in, size, [size](auto* data) { nnlib::relu(data, size); });
}

void nl_func_relu_max_array_fixed(ai_array* out, const ai_array* in, ai_size size,
                                  const void* params) {
  if (params == nullptr) {
    core_fault();
  }
  nnlib::apply(*out, *in, size, [size, params]<class T>(T* data) {
    nnlib::relu(data, size);
    const T maximum = *static_cast<const T*>(params);
    std::transform(data, data + size, data, [=](T x) { return std::min(x, maximum); });
  });
}

void nl_func_tanh_array_fixed(ai_array* out, const ai_array* in, ai_size size,
                              const void* /*params*/) {
  nnlib::activate_array(*out, *in, size, nnlib::kTanh);
}

void nl_func_sigmoid_array_fixed(ai_array* out, const ai_array* in, ai_size size,
                                 const void* /*params*/) {
  nnlib::activate_array(*out, *in, size, nnlib::kSigmoid);
}

void forward_relu_fixed(ai_layer* layer) {
  nnlib::run_layer(layer, nl_func_relu_array_fixed);
}

void forward_relu_max_fixed(ai_layer* layer) {
  nnlib::run_layer(layer, nl_func_relu_max_array_fixed);
}

void forward_tanh_fixed(ai_layer* layer) {
  nnlib::run_layer(layer, nl_func_tanh_array_fixed);
}

void forward_sigmoid_fixed(ai_layer* layer) {
  nnlib::run_layer(layer, nl_func_sigmoid_array_fixed);
}
