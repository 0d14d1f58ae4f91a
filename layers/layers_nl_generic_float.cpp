// SPDX-License-Identifier: MIT
#include "layers/layers_nl_generic_float.h"

#include <algorithm>
#include <cstdint>

#include "core/scalar_ops.hpp"
#include "kernels/exact_arrays.hpp"
#include "kernels/vector.hpp"
#include "layers/layer_tensors.hpp"
#include "layers/overlap.hpp"

namespace {

using nnlib::Ops;

// Elements taken at a time: where there are vectors, arithmetic becomes instructions on them;
// library calls stay single.
constexpr ai_size kVector = NNLIB_VECTOR_LANES > 1 ? 64 : 1;
constexpr ai_size kSingle = 1;

// out[i] = op(in[i], i) from the last element to the first. The elements of a block are independent
// unless in and out overlap within less than one.
template <ai_size Block, class Op>
void map(ai_array* out_array, const ai_array* in_array, ai_size size, Op op) {
  float* out = static_cast<float*>(out_array->data);
  const float* in = static_cast<const float*>(in_array->data);
  if constexpr (Block > 1) {
    if (nnlib::same_or_apart(out, in, Block)) {
      for (; size >= Block; size -= Block) {
        const ai_size start = size - Block;
        NNLIB_INDEPENDENT
        for (ai_size k = 0; k < Block; ++k) {
          out[start + k] = op(in[start + k], start + k);
        }
      }
    }
  }
  if (size > 0) {
    do {
      --size;
      out[size] = op(in[size], size);
    } while (size > 0);
  }
}

// A function with a form for arrays.
struct Exp {
  static float of(float x) { return Ops::exp(x); }
  static void of_array(float* y, const float* x, ai_size n) { nnlib::exp_f32(y, x, n); }
};
struct Sigmoid {
  static float of(float x) { return Ops::sigmoid(x); }
  static void of_array(float* y, const float* x, ai_size n) { nnlib::sigmoid_f32(y, x, n); }
};
struct Tanh {
  static float of(float x) { return Ops::tanh(x); }
  static void of_array(float* y, const float* x, ai_size n) { nnlib::tanh_f32(y, x, n); }
};

// out[i] = op(in[i], Function::of(in[i])), as map.
template <class Function, class Op>
void map_of(ai_array* out_array, const ai_array* in_array, ai_size size, Op op) {
  if constexpr (nnlib::kHasExactArrays) {
    float* out = static_cast<float*>(out_array->data);
    const float* in = static_cast<const float*>(in_array->data);
    float of_in[kVector];
    if (nnlib::same_or_apart(out, in, kVector)) {
      while (size > 0) {
        const ai_size count = std::min(size, kVector);
        size -= count;
        Function::of_array(of_in, in + size, count);
        for (ai_size k = 0; k < count; ++k) {
          out[size + k] = op(in[size + k], of_in[k]);
        }
      }
      return;
    }
  }
  map<kSingle>(out_array, in_array, size,
               [op](float x, ai_size /*index*/) { return op(x, Function::of(x)); });
}

// The element-wise layer: every element of the input's shape.
void run(const ai_layer& layer, ai_nl_func kernel, const void* params) {
  const ai_tensor& input = nnlib::layer_input(layer);
  const ai_tensor& output = nnlib::layer_output(layer);
  kernel(output.data, input.data, ai_shape_elements(&input.shape), params);
}

const ai_array* parameters(ai_layer* layer) {
  return nnlib::layer_record<ai_layer_nl>(layer).nl_params;
}

void run_with_parameters(ai_layer* layer, ai_nl_func kernel) {
  const ai_array* params = parameters(layer);
  if (params == nullptr) {
    core_fault();
  }
  run(*layer, kernel, params->data);
}

}  // namespace

#define DEFINE_KERNEL(op, block)                                                      \
  void nl_func_##op##_array_f32(ai_array* out, const ai_array* in, ai_size size,      \
                                const void* /*params*/) {                             \
    map<block>(out, in, size, [](float x, ai_size /*index*/) { return Ops::op(x); }); \
  }
#define DEFINE_KERNEL_OF(op, Function, result)                                      \
  void nl_func_##op##_array_f32(ai_array* out, const ai_array* in, ai_size size,    \
                                const void* /*params*/) {                           \
    map_of<Function>(out, in, size, [](float /*x*/, float y) { return (result); }); \
  }
#define DEFINE_PARAMETER_KERNEL(op)                                                         \
  void nl_func_##op##_array_f32(ai_array* out, const ai_array* in, ai_size size,            \
                                const void* params) {                                       \
    const float* p = static_cast<const float*>(params);                                     \
    map<kVector>(out, in, size, [p](float x, ai_size /*index*/) { return Ops::op(x, p); }); \
  }
#define DEFINE_EXP_PARAMETER_KERNEL(op)                                             \
  void nl_func_##op##_array_f32(ai_array* out, const ai_array* in, ai_size size,    \
                                const void* params) {                               \
    const float* p = static_cast<const float*>(params);                             \
    map_of<Exp>(out, in, size, [p](float x, float e) { return Ops::op(x, e, p); }); \
  }
#define DEFINE_FORWARD(op)                          \
  void forward_##op(ai_layer* layer) {              \
    run(*layer, nl_func_##op##_array_f32, nullptr); \
  }
#define DEFINE_PARAMETER_FORWARD(op)                      \
  void forward_##op(ai_layer* layer) {                    \
    run_with_parameters(layer, nl_func_##op##_array_f32); \
  }
#define DEFINE_ARITHMETIC_KERNEL(op) DEFINE_KERNEL(op, kVector)
#define DEFINE_LIBRARY_KERNEL(op) DEFINE_KERNEL(op, kSingle)

AI_NL_ARITHMETIC_OPS(DEFINE_ARITHMETIC_KERNEL)
AI_NL_LIBRARY_OPS(DEFINE_LIBRARY_KERNEL)
AI_NL_PARAMETER_OPS(DEFINE_PARAMETER_KERNEL)
AI_NL_EXP_PARAMETER_OPS(DEFINE_EXP_PARAMETER_KERNEL)
DEFINE_KERNEL_OF(exp, Exp, y)
DEFINE_KERNEL_OF(sigmoid, Sigmoid, y)
DEFINE_KERNEL_OF(soft_plus, Exp, Ops::soft_plus(y))
DEFINE_KERNEL_OF(tanh, Tanh, y)
DEFINE_ARITHMETIC_KERNEL(relu)

AI_NL_ARITHMETIC_OPS(DEFINE_FORWARD)
AI_NL_LIBRARY_OPS(DEFINE_FORWARD)
AI_NL_EXP_OPS(DEFINE_FORWARD)
AI_NL_PARAMETER_OPS(DEFINE_PARAMETER_FORWARD)
AI_NL_EXP_PARAMETER_OPS(DEFINE_PARAMETER_FORWARD)

void nl_func_relu_generic_array_f32(ai_array* out, const ai_array* in, ai_size size,
                                    const void* params) {
  const float* p = static_cast<const float*>(params);
  const float threshold = p[0];
  const float slope = p[1];
  const float max = p[2];
  const auto leaky = [=](float x, ai_size /*index*/) {
    return nnlib::select(threshold > x, (x - threshold) * slope, x);
  };
  if (!(0.0f > max)) {
    map<kVector>(out, in, size, [=](float x, ai_size index) {
      return nnlib::select(x < max, leaky(x, index), max);
    });
  } else if (slope == 0.0f) {
    nl_func_relu_thresholded_array_f32(out, in, size, params);
  } else {
    map<kVector>(out, in, size, leaky);
  }
}

void forward_relu(ai_layer* layer) {
  const ai_array* params = parameters(layer);
  if (params == nullptr) {
    run(*layer, nl_func_relu_array_f32, nullptr);
  } else {
    run(*layer,
        params->size == 1 ? nl_func_relu_thresholded_array_f32 : nl_func_relu_generic_array_f32,
        params->data);
  }
}

void nl_func_prelu_array_f32(ai_array* out, const ai_array* in, ai_size size, const void* params) {
  const float* slopes = static_cast<const float*>(params);
  map<kVector>(out, in, size, [slopes](float x, ai_size i) { return Ops::prelu(x, slopes[i]); });
}

void forward_prelu(ai_layer* layer) {
  const ai_tensor& input = nnlib::layer_input(*layer);
  const ai_tensor& slopes = nnlib::layer_weights(*layer);
  ai_array& in = *input.data;
  ai_array& out = *nnlib::layer_output(*layer).data;
  // The two may be one array: the positions are kept apart from its data pointer.
  float* const from = static_cast<float*>(in.data);
  float* const to = static_cast<float*>(out.data);
  const ai_size size = ai_shape_elements(&input.shape);
  const ai_size block = slopes.data->size;
  for (ai_size at = 0; at < size && block > 0; at += std::min(block, size - at)) {
    in.data = from + at;
    out.data = to + at;
    nl_func_prelu_array_f32(&out, &in, std::min(ai_shape_elements(&slopes.shape), size - at),
                            slopes.data->data);
  }
  in.data = in.data_start;
  out.data = out.data_start;
}
