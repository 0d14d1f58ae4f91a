#include "layers_quantized/layers_pool_quarn_integer.h"

#include "kernels/ko_pool.h"
#include "layers/layer_tensors.hpp"

namespace {

template <class T>
using PoolKernel = int32_t(const T*, T*, uint16_t, uint16_t, uint16_t, uint16_t, uint16_t, uint16_t,
                           uint16_t, uint16_t, uint16_t, uint16_t, uint16_t, float, T, float, T);
template <class T>
using GlobalPoolKernel = int32_t(const T*, T*, uint16_t, uint16_t, uint16_t, float, T, float, T);

// The kernels of one operation.
struct Kernels {
  PoolKernel<uint8_t>* of_uint8;
  GlobalPoolKernel<uint8_t>* global_of_uint8;
  PoolKernel<int8_t>* of_int8;
  GlobalPoolKernel<int8_t>* global_of_int8;
};
constexpr Kernels kMaximum = {ko_uint8_maxpool, ko_uint8_glomaxpool, ko_int8_maxpool,
                              ko_int8_glomaxpool};
constexpr Kernels kAverage = {ko_uint8_avepool, ko_uint8_gloavepool, ko_int8_avepool,
                              ko_int8_gloavepool};

struct Sizes {
  uint16_t in_width, in_height, channels, pool_width, pool_height, pad_x, pad_y, stride_x, stride_y,
      out_width, out_height;

  bool global() const {
    return pool_width == in_width && pool_height == in_height && pad_x == 0 && pad_y == 0 &&
           out_width == 1 && out_height == 1;
  }
};

struct Quantization {
  float in_scale;
  int32_t in_zeropoint;
  float out_scale;
  int32_t out_zeropoint;
};

template <class T>
void pool(PoolKernel<T>* kernel, GlobalPoolKernel<T>* global_kernel, const ai_array& in,
          const ai_array& out, const Sizes& s, const Quantization& q) {
  const T* from = static_cast<const T*>(in.data);
  T* to = static_cast<T*>(out.data);
  const T in_zeropoint = static_cast<T>(q.in_zeropoint);
  const T out_zeropoint = static_cast<T>(q.out_zeropoint);
  if (s.global()) {
    global_kernel(from, to, s.in_width, s.in_height, s.channels, q.in_scale, in_zeropoint,
                  q.out_scale, out_zeropoint);
  } else {
    kernel(from, to, s.in_width, s.in_height, s.channels, s.pool_width, s.pool_height, s.pad_x,
           s.pad_y, s.stride_x, s.stride_y, s.out_width, s.out_height, q.in_scale, in_zeropoint,
           q.out_scale, out_zeropoint);
  }
}

void pool(const Kernels& kernels, const ai_array& in, const ai_array& out, const Sizes& sizes,
          const Quantization& q) {
  if (ai_fmt_is_signed(in.format)) {
    pool(kernels.of_int8, kernels.global_of_int8, in, out, sizes, q);
  } else {
    pool(kernels.of_uint8, kernels.global_of_uint8, in, out, sizes, q);
  }
}

uint16_t u16(uint32_t size) {
  return static_cast<uint16_t>(size);
}

void pool_layer(const Kernels& kernels, ai_layer* layer) {
  const ai_layer_pool& record = nnlib::layer_record<ai_layer_pool>(layer);
  const ai_tensor& input = nnlib::layer_input(*layer);
  const ai_tensor& output = nnlib::layer_output(*layer);
  const nnlib::MapDims in = nnlib::map_dims(input);
  const nnlib::MapDims out = nnlib::map_dims(output);
  const uint32_t* pad = record.pool_pad.data;
  const Sizes sizes = {u16(in.width),
                       u16(in.height),
                       u16(in.channels),
                       u16(record.pool_size[0]),
                       u16(record.pool_size[1]),
                       u16(pad[1]),
                       u16(pad[0]),
                       u16(record.pool_stride[0]),
                       u16(record.pool_stride[1]),
                       u16(out.width),
                       u16(out.height)};
  pool(kernels, *input.data, *output.data, sizes,
       {ai_tensor_scale(&input, 0), ai_tensor_zeropoint(&input, 0), ai_tensor_scale(&output, 0),
        ai_tensor_zeropoint(&output, 0)});
}

constexpr Quantization kUnchanged = {1.0f, 0, 1.0f, 0};

}  // namespace

void forward_mp_integer(ai_layer* layer) {
  pool_layer(kMaximum, layer);
}

void forward_ap_integer(ai_layer* layer) {
  pool_layer(kAverage, layer);
}

void pool_func_mp_array_integer(ai_array* in, uint16_t in_w, uint16_t in_h, uint16_t channels,
                                uint16_t pool_w, uint16_t pool_h, uint16_t pad_x, uint16_t pad_y,
                                uint16_t stride_x, uint16_t stride_y, uint16_t out_w,
                                uint16_t out_h, ai_array* out) {
  pool(kMaximum, *in, *out,
       {in_w, in_h, channels, pool_w, pool_h, pad_x, pad_y, stride_x, stride_y, out_w, out_h},
       kUnchanged);
}

void pool_func_ap_array_integer(ai_array* in, uint16_t in_w, uint16_t in_h, uint16_t channels,
                                uint16_t pool_w, uint16_t pool_h, uint16_t pad_x, uint16_t pad_y,
                                uint16_t stride_x, uint16_t stride_y, uint16_t out_w,
                                uint16_t out_h, ai_array* out) {
  pool(kAverage, *in, *out,
       {in_w, in_h, channels, pool_w, pool_h, pad_x, pad_y, stride_x, stride_y, out_w, out_h},
       kUnchanged);
}
