// SPDX-License-Identifier: MIT
// Integer dense and convolution layers, alone, with a function and with pooling.
#include "layers_quantized/layers_conv2d_quarn_integer.h"
#include "layers_quantized/layers_nl_quarn_integer.h"
#include "layers_quantized/layers_pool_quarn_integer.h"
#include "layers_quantized/layers_quarn_integer.h"
#include "test/integer_fixture.hpp"
#include "test/reference/conv_integer.h"

namespace {

struct Size {
  uint32_t w, h;
};
struct Map {
  uint32_t c, w, h;
  constexpr uint32_t elements() const { return c * w * h; }
};

// What a case is made of besides its data.
struct Shape {
  Map in;
  Size kernel = {1, 1};
  Map out;  // of the convolution
  Size stride = {1, 1};
  Size pad = {0, 0};  // left, top
  bool depthwise = false;
  Map pooled = {0, 0, 0};  // of a fused layer: the layer's output
  bool dense = false;

  constexpr bool fused() const { return pooled.c != 0; }
  constexpr nnlib::dims weights() const {
    return dense       ? nnlib::dims{in.c, out.c, 1, 1}
           : depthwise ? nnlib::dims{in.c, kernel.w, kernel.h, 1}
                       : nnlib::dims{in.c, kernel.w, kernel.h, out.c};
  }
};

constexpr nnlib::dims dims_of(const Map& map) {
  return {1, map.c, map.w, map.h};
}

// The arrays of a stem, in the order of Tensors' constructor.
#define DATA(stem, format)                                                                     \
  stem##_in_data_##format, stem##_weight_data_##format, stem##_bias_data_##format,             \
      stem##_out_reference_##format, stem##_pscale_in_##format, stem##_pzeropoint_in_##format, \
      stem##_pscale_weights_##format, stem##_pzeropoint_weights_##format,                      \
      stem##_pscale_out_##format, stem##_pzeropoint_out_##format

// The scratch of all cases: rubbish, then whatever the case before left. Memory is scarce on a
// board.
struct alignas(4) ScratchBytes : rubbish_storage<uint8_t, 512> {};
constinit ScratchBytes scratch_bytes;
constinit rubbish_storage<uint8_t, 128> map_bytes;

// A layer's tensors. A fused layer's rows of the map come before its kernel's scratch.
template <class T, class W, size_t Outputs, size_t Entries>
struct Tensors {
  template <size_t Inputs, size_t Weights, size_t Biases>
  constexpr Tensors(const Shape& s, const T (&in_data)[Inputs], const W (&weight_data)[Weights],
                    const int32_t (&bias_data)[Biases], const T (&)[Outputs],
                    const float (&in_scale)[1], const T (&in_zeropoint)[1],
                    const float (&weight_scales)[Entries], const W (&weight_zeropoints)[Entries],
                    const float (&out_scale)[1], const T (&out_zeropoint)[1])
      : in_intq(in_scale, in_zeropoint),
        weights_intq(weight_scales, weight_zeropoints),
        out_intq(out_scale, out_zeropoint),
        in(dims_of(s.in), in_data, 0, &in_intq),
        weights(s.weights(), weight_data, 0, &weights_intq),
        bias({1, s.out.c, 1, 1}, bias_data),
        out(dims_of(s.fused() ? s.pooled : s.out), out_data, 0, &out_intq),
        scratch({1, sizeof(scratch_bytes.storage), 1, 1}, scratch_bytes.storage),
        map(nnlib::format_of<T>, {1, s.out.c, s.out.w, s.fused() ? 3 : s.out.h}, map_bytes.storage,
            &out_intq),
        chain(nnlib::list(in), nnlib::list(out), nnlib::list(weights, bias),
              nnlib::list(s.fused() ? map : scratch, s.fused() ? scratch : map)),
        pad{s.pad.h, s.pad.w, pad_after(s.in.h, s.kernel.h, s.stride.h, s.pad.h, s.out.h),
            pad_after(s.in.w, s.kernel.w, s.stride.w, s.pad.w, s.out.w)} {
    if (Inputs != s.in.elements() || Weights != s.weights().elements() || Biases != s.out.c) {
      core_fault();  // shape and data disagree: no constant
    }
    for (T& element : out_data) {
      element = static_cast<T>(0xA5);
    }
  }
  constexpr ai_layer_conv2d layer(const Shape& s, ai_nl_func function = nullptr,
                                  const ai_array* params = nullptr) {
    const ai_layer_forward forward =
        s.fused() ? forward_conv2d_nl_pool_integer : forward_conv2d_integer;
    return {nnlib::layer(AI_LAYER_TYPE_CONV2D, forward, chain),
            s.depthwise ? s.in.c : 1,
            params,
            function,
            {s.stride.w, s.stride.h},
            {1, 1},
            {AI_DIMS_WORD(AI_SHAPE_TYPE, AI_SHAPE_DIMS), pad}};
  }

  nnlib::intq<T, 1> in_intq;
  nnlib::intq<W, Entries> weights_intq;
  nnlib::intq<T, 1> out_intq;
  nnlib::tensor in, weights, bias, out, scratch, map;
  nnlib::layer_chain<1, 1, 2, 2> chain;
  uint32_t pad[AI_SHAPE_DIMS];
  T out_data[Outputs] = {};
};

// A convolution of the named data and shape within one step of its reference.
#define CHECK_CONVOLUTION(stem, format, ...)                                              \
  static constexpr Shape shape = {__VA_ARGS__};                                           \
  static constinit Tensors stem(shape, DATA(stem, format));                               \
  static constinit ai_layer_conv2d stem##_layer = stem.layer(shape);                      \
  lcut_true(tc, ai_conv2d_integer_scratch_size(&stem##_layer) <= stem.scratch.array.size, \
            __LINE__, __func__, __FILE__);                                                \
  check_integer_layer(tc, stem##_layer, stem##_out_reference_##format, 1)

// A dense layer of in_count inputs and out_count outputs, with scratch or without.
#define CHECK_DENSE(stem, format, in_count, out_count, with_scratch)                               \
  static constexpr Shape shape = {                                                                 \
      .in = {in_count, 1, 1}, .out = {out_count, 1, 1}, .dense = true};                            \
  static constinit Tensors stem(shape, DATA(stem, format));                                        \
  static constinit nnlib::layer_chain<1, 1, 2, 1> stem##_layer_chain(                              \
      nnlib::list(stem.in), nnlib::list(stem.out), nnlib::list(stem.weights, stem.bias),           \
      nnlib::list(with_scratch ? &stem.scratch : nnlib::absent));                                  \
  static constinit ai_layer stem##_layer =                                                         \
      nnlib::layer(AI_LAYER_TYPE_DENSE, forward_dense_integer, stem##_layer_chain);                \
  lcut_true(tc, ai_dense_integer_scratch_size(&stem##_layer) <= stem.scratch.array.size, __LINE__, \
            __func__, __FILE__);                                                                   \
  check_integer_layer(tc, stem##_layer, stem##_out_reference_##format, 1)

CASE(tc_dense_conformance_uint8) {
  CHECK_DENSE(dense, uint8, 7, 3, true);
}
CASE(tc_dense_conformance_uint8_CH) {
  CHECK_DENSE(dense, uint8_CH, 9, 5, true);
}
CASE(tc_dense_noscratch_conformance_uint8) {
  CHECK_DENSE(dense_noscratch, uint8, 6, 3, false);
}
CASE(tc_dense_conformance_int8sym) {
  CHECK_DENSE(dense, int8sym, 18, 4, true);
}
CASE(tc_dense_noscratch_conformance_int8sym) {
  CHECK_DENSE(dense_noscratch, int8sym, 11, 2, false);
}
CASE(tc_dense_conformance_int8_int8sym) {
  CHECK_DENSE(dense, int8_int8sym, 10, 3, true);
}
CASE(tc_dense_conformance_int8_int8sym_CH) {
  CHECK_DENSE(dense, int8_int8sym_CH, 13, 4, true);
}
CASE(tc_dense_noscratch_conformance_int8_int8sym) {
  CHECK_DENSE(dense_noscratch, int8_int8sym, 7, 5, false);
}

CASE(tc_conv2D_1x1_conformance_uint8) {
  CHECK_CONVOLUTION(conv1x1, uint8, .in = {4, 3, 2}, .out = {2, 3, 2});
}
CASE(tc_conv2D_1x1_odd_ch_in_uint8) {
  CHECK_CONVOLUTION(conv1x1_odd_ch_in, uint8, .in = {5, 3, 3}, .out = {2, 3, 3});
}
CASE(tc_conv2D_1x1_odd_ch_inout_uint8) {
  CHECK_CONVOLUTION(conv1x1_odd_ch_inout, uint8, .in = {7, 2, 3}, .out = {3, 2, 3});
}
CASE(tc_conv2D_1x1_conformance_int8sym) {
  CHECK_CONVOLUTION(conv1x1, int8sym, .in = {4, 1, 1}, .out = {2, 1, 1});
  const uint8_t expected[] = {255, 10};
  check_near_int(tc, conv1x1.out_data, expected, 1);
}
CASE(tc_conv2D_1x1_conformance_int8_int8sym) {
  CHECK_CONVOLUTION(conv1x1, int8_int8sym, .in = {8, 3, 2}, .out = {2, 3, 2});
}
CASE(tc_conv2D_1x1_odd_ch_in_int8_int8sym) {
  CHECK_CONVOLUTION(conv1x1_odd_ch_in, int8_int8sym, .in = {9, 3, 3}, .out = {4, 3, 3});
}
CASE(tc_conv2D_1x1_conformance_int8_int8sym_CH) {
  CHECK_CONVOLUTION(conv1x1, int8_int8sym_CH, .in = {6, 5, 1}, .out = {5, 5, 1});
}

CASE(tc_conv2D_RGB_conformance_uint8) {
  CHECK_CONVOLUTION(conv_rgb, uint8, .in = {3, 5, 5}, .kernel = {3, 3}, .out = {4, 3, 3},
                    .stride = {2, 2}, .pad = {1, 1});
}
CASE(tc_conv2D_RGB_conformance_int8sym) {
  CHECK_CONVOLUTION(conv_rgb, int8sym, .in = {3, 5, 5}, .kernel = {2, 2}, .out = {3, 4, 4});
}
CASE(tc_conv2D_RGB_conformance_int8_int8sym) {
  CHECK_CONVOLUTION(conv_rgb, int8_int8sym, .in = {3, 4, 4}, .kernel = {3, 3}, .out = {2, 4, 4},
                    .pad = {1, 1});
}
CASE(tc_conv2D_RGB_conformance_int8_int8sym_CH) {
  CHECK_CONVOLUTION(conv_rgb, int8_int8sym_CH, .in = {3, 5, 5}, .kernel = {3, 3}, .out = {5, 2, 2},
                    .stride = {2, 2});
}

CASE(tc_conv2D_Basic_conformance_int8_int8sym_CH) {
  CHECK_CONVOLUTION(conv_basic, int8_int8sym_CH, .in = {2, 5, 4}, .kernel = {3, 2},
                    .out = {3, 3, 3}, .stride = {2, 1}, .pad = {1, 0});
}
CASE(tc_conv2D_k_conformance_uint8) {
  CHECK_CONVOLUTION(conv_k, uint8, .in = {2, 4, 5}, .kernel = {2, 3}, .out = {3, 3, 3});
}

CASE(tc_conv_dw_conformance_uint8) {
  CHECK_CONVOLUTION(conv_dw, uint8, .in = {3, 4, 3}, .kernel = {3, 2}, .out = {3, 2, 2},
                    .depthwise = true);
}
CASE(tc_conv_dw_group_conformance_uint8) {
  CHECK_CONVOLUTION(conv_dw_group, uint8, .in = {9, 5, 4}, .kernel = {3, 3}, .out = {9, 3, 4},
                    .stride = {2, 1}, .pad = {1, 1}, .depthwise = true);
}
CASE(tc_conv_dw_conformance_int8sym) {
  CHECK_CONVOLUTION(conv_dw, int8sym, .in = {2, 3, 4}, .kernel = {2, 3}, .out = {2, 2, 2},
                    .depthwise = true);
}
CASE(tc_conv_dw_group_conformance_int8sym) {
  CHECK_CONVOLUTION(conv_dw_group, int8sym, .in = {9, 4, 5}, .kernel = {3, 2}, .out = {9, 2, 3},
                    .stride = {1, 2}, .pad = {0, 1}, .depthwise = true);
}
CASE(tc_conv_dw_conformance_int8_int8sym) {
  CHECK_CONVOLUTION(conv_dw, int8_int8sym, .in = {3, 4, 4}, .kernel = {3, 3}, .out = {3, 2, 2},
                    .depthwise = true);
}
CASE(tc_conv_dw_conformance_int8_int8sym_CH) {
  CHECK_CONVOLUTION(conv_dw, int8_int8sym_CH, .in = {6, 4, 3}, .kernel = {2, 2}, .out = {6, 4, 2},
                    .pad = {1, 0}, .depthwise = true);
}
CASE(tc_conv_dw_group_conformance_int8_int8sym) {
  CHECK_CONVOLUTION(conv_dw_group, int8_int8sym, .in = {8, 3, 5}, .kernel = {2, 3},
                    .out = {8, 2, 3}, .stride = {1, 2}, .pad = {0, 1}, .depthwise = true);
}
CASE(tc_conv_dw_group4_conformance_int8_int8sym) {
  CHECK_CONVOLUTION(conv_dw_group4, int8_int8sym, .in = {4, 4, 3}, .kernel = {3, 3},
                    .out = {4, 5, 3}, .pad = {2, 1}, .depthwise = true);
}

CASE(tc_conv2D_pad_conformance_uint8) {
  CHECK_CONVOLUTION(conv_pad, uint8, .in = {2, 4, 3}, .kernel = {3, 2}, .out = {3, 6, 4},
                    .pad = {2, 1});
}
CASE(tc_conv2D_pad_conformance_int8sym) {
  CHECK_CONVOLUTION(conv_pad, int8sym, .in = {3, 3, 4}, .kernel = {2, 3}, .out = {2, 4, 4},
                    .pad = {1, 1});
}
CASE(tc_conv2D_pad_conformance_int8_int8sym) {
  CHECK_CONVOLUTION(conv_pad, int8_int8sym, .in = {4, 3, 3}, .kernel = {3, 3}, .out = {3, 3, 5},
                    .pad = {1, 2});
}
CASE(tc_conv2D_stride_conformance_uint8) {
  CHECK_CONVOLUTION(conv_stride, uint8, .in = {2, 7, 4}, .kernel = {3, 2}, .out = {3, 3, 3},
                    .stride = {2, 1});
}
CASE(tc_conv2D_stride_conformance_int8sym) {
  CHECK_CONVOLUTION(conv_stride, int8sym, .in = {3, 5, 7}, .kernel = {2, 2}, .out = {2, 2, 3},
                    .stride = {3, 2});
}
CASE(tc_conv2D_stride_conformance_int8_int8sym) {
  CHECK_CONVOLUTION(conv_stride, int8_int8sym, .in = {1, 6, 5}, .kernel = {2, 3}, .out = {4, 3, 2},
                    .stride = {2, 2});
}

// Relu at the output's zero point, by way of the second scratch tensor.
CASE(tc_conv2D_nl_stride_conformance_uint8) {
  static constexpr Shape shape = {
      .in = {2, 6, 5}, .kernel = {2, 2}, .out = {3, 3, 4}, .stride = {2, 1}};
  static constinit Tensors conv_nl_stride(shape, DATA(conv_nl_stride, uint8));
  static constinit nnlib::tensor params({1, 1, 1, 1}, conv_nl_stride_pzeropoint_out_uint8);
  static constinit ai_layer_conv2d conv_nl_stride_layer =
      conv_nl_stride.layer(shape, nl_func_relu_array_integer, &params.array);
  check_integer_layer(tc, conv_nl_stride_layer, conv_nl_stride_out_reference_uint8, 1);
}

// Padding, relu at `least`, pooling without padding.
template <auto* kPool, auto& kTensors, auto& kReference>
void check_fused(lcut_case* tc, const Shape& shape, uint8_t least, Size pool, Size stride) {
  static uint32_t no_pad[AI_SHAPE_DIMS] = {};
  const nnlib::tensor params({1, 1, 1, 1}, &least);
  ai_layer_conv2d_nl_pool layer = {kTensors.layer(shape, nl_func_relu_array_integer, &params.array),
                                   {pool.w, pool.h},
                                   {stride.w, stride.h},
                                   {AI_DIMS_WORD(AI_SHAPE_TYPE, AI_SHAPE_DIMS), no_pad},
                                   kPool};
  lcut_true(tc, ai_conv2d_nl_pool_integer_scratch_size(&layer) <= kTensors.scratch.array.size,
            __LINE__, __func__, __FILE__);
  check_integer_layer(tc, layer.base, kReference, 1);
}

constexpr Shape kFusedUint8 = {
    .in = {2, 6, 6}, .kernel = {3, 2}, .out = {3, 6, 6}, .pad = {1, 1}, .pooled = {3, 2, 3}};
constinit Tensors conv_fused_uint8(kFusedUint8, DATA(conv_fused, uint8));
CASE(tc_conv2D_fused_conformance_uint8) {
  check_fused<pool_func_mp_array_integer, conv_fused_uint8, conv_fused_out_reference_uint8>(
      tc, kFusedUint8, 190, {3, 2}, {2, 2});
}

constexpr Shape kFusedInt8 = {
    .in = {2, 5, 7}, .kernel = {2, 3}, .out = {2, 4, 7}, .pad = {0, 1}, .pooled = {2, 2, 2}};
constinit Tensors conv_fused_int8(kFusedInt8, DATA(conv_fused, int8));
CASE(tc_conv2D_fused_conformance_int8) {
  check_fused<pool_func_ap_array_integer, conv_fused_int8, conv_fused_out_reference_int8>(
      tc, kFusedInt8, static_cast<uint8_t>(-30), {3, 2}, {1, 3});
}

CASE(tc_conv2D_unit_scale_uint8) {
  CHECK_CONVOLUTION(conv_unit_scale, uint8, .in = {4, 3, 2}, .kernel = {2, 1}, .out = {2, 2, 2});
}
CASE(tc_conv2d_saturate) {
  CHECK_CONVOLUTION(conv_saturate, uint8, .in = {3, 3, 2}, .kernel = {2, 2}, .out = {2, 2, 1});
}

}  // namespace

SUITE(test_lcut_conv_integer, "test_lcut_conv_integer test unit", ENTRY(tc_dense_conformance_uint8),
      ENTRY(tc_dense_conformance_uint8_CH), ENTRY(tc_dense_noscratch_conformance_uint8),
      ENTRY(tc_dense_conformance_int8sym), ENTRY(tc_dense_noscratch_conformance_int8sym),
      ENTRY(tc_dense_conformance_int8_int8sym), ENTRY(tc_dense_conformance_int8_int8sym_CH),
      ENTRY(tc_dense_noscratch_conformance_int8_int8sym), ENTRY(tc_conv2D_1x1_conformance_uint8),
      ENTRY(tc_conv2D_1x1_odd_ch_in_uint8), ENTRY(tc_conv2D_1x1_odd_ch_inout_uint8),
      ENTRY(tc_conv2D_1x1_conformance_int8sym), ENTRY(tc_conv2D_1x1_conformance_int8_int8sym),
      ENTRY(tc_conv2D_1x1_odd_ch_in_int8_int8sym), ENTRY(tc_conv2D_RGB_conformance_uint8),
      ENTRY(tc_conv2D_RGB_conformance_int8sym), ENTRY(tc_conv2D_RGB_conformance_int8_int8sym),
      ENTRY(tc_conv2D_RGB_conformance_int8_int8sym_CH),
      ENTRY(tc_conv2D_1x1_conformance_int8_int8sym_CH),
      ENTRY(tc_conv2D_Basic_conformance_int8_int8sym_CH), ENTRY(tc_conv2D_k_conformance_uint8),
      ENTRY(tc_conv_dw_conformance_uint8), ENTRY(tc_conv_dw_group_conformance_uint8),
      ENTRY(tc_conv_dw_conformance_int8sym), ENTRY(tc_conv_dw_group_conformance_int8sym),
      ENTRY(tc_conv_dw_conformance_int8_int8sym), ENTRY(tc_conv_dw_conformance_int8_int8sym_CH),
      ENTRY(tc_conv_dw_group_conformance_int8_int8sym),
      ENTRY(tc_conv_dw_group4_conformance_int8_int8sym), ENTRY(tc_conv2D_pad_conformance_uint8),
      ENTRY(tc_conv2D_pad_conformance_int8sym), ENTRY(tc_conv2D_pad_conformance_int8_int8sym),
      ENTRY(tc_conv2D_stride_conformance_uint8), ENTRY(tc_conv2D_stride_conformance_int8sym),
      ENTRY(tc_conv2D_stride_conformance_int8_int8sym),
      ENTRY(tc_conv2D_nl_stride_conformance_uint8), ENTRY(tc_conv2D_fused_conformance_uint8),
      ENTRY(tc_conv2D_fused_conformance_int8), ENTRY(tc_conv2D_unit_scale_uint8),
      ENTRY(tc_conv2d_saturate))
