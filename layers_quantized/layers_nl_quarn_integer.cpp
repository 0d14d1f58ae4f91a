// SPDX-License-Identifier: MIT
#include "layers_quantized/layers_nl_quarn_integer.h"

#include "kernels/byte_functions.hpp"
#include "layers/layer_tensors.hpp"
#include "layers_quantized/quantized_types.hpp"

namespace {

// T for int8 or uint8 elements, as the format says.
template <template <class> class Function>
void apply(ai_array* out, const ai_array* in, ai_size size, const void* params) {
  if (params == nullptr) {
    core_fault();
  }
  nnlib::for_elements(ai_fmt_is_signed(in->format), [=](auto element) {
    using T = decltype(element);
    Function<T>::apply(static_cast<T*>(out->data), static_cast<const T*>(in->data), size,
                       static_cast<const T*>(params));
  });
}

template <class T>
struct Relu {
  static void apply(T* out, const T* in, ai_size size, const T* params) {
    nnlib::raise_bytes(in, size, params[0], out);
  }
};

template <class T>
struct Clip {
  static void apply(T* out, const T* in, ai_size size, const T* params) {
    nnlib::clip_bytes(in, size, params[0], params[1], out);
  }
};

template <class T>
struct Table {
  static void apply(T* out, const T* in, ai_size size, const T* params) {
    nnlib::look_up_bytes(in, params, size, out);
  }
};

void forward(ai_layer* layer, ai_nl_func function) {
  const ai_tensor& input = nnlib::layer_input(*layer);
  const ai_array* params = nnlib::layer_record<ai_layer_nl>(layer).nl_params;
  function(nnlib::layer_output(*layer).data, input.data, ai_shape_elements(&input.shape),
           params != nullptr ? params->data : nullptr);
}

}  // namespace

void nl_func_relu_array_integer(ai_array* out, const ai_array* in, ai_size size,
                                const void* params) {
  apply<Relu>(out, in, size, params);
}

void nl_func_clip_array_integer(ai_array* out, const ai_array* in, ai_size size,
                                const void* params) {
  apply<Clip>(out, in, size, params);
}

void nl_func_array_integer(ai_array* out, const ai_array* in, ai_size size, const void* params) {
  apply<Table>(out, in, size, params);
}

void forward_relu_integer(ai_layer* layer) {
  forward(layer, nl_func_relu_array_integer);
}

void forward_clip_integer(ai_layer* layer) {
  forward(layer, nl_func_clip_array_integer);
}

void forward_nl_integer(ai_layer* layer) {
  forward(layer, nl_func_array_integer);
}
