// SPDX-License-Identifier: MIT
// Integer pooling layers.
#include "layers_quantized/layers_pool_quarn_integer.h"
#include "test/integer_fixture.hpp"
#include "test/reference/pool_integer.h"

namespace {

struct Options {
  ai_layer_forward forward;
  nnlib::dims in, out;
  uint32_t size[2], stride[2];  // x, y
  uint32_t pad[2];              // top, left
};

// A pool layer over the data of a stem, and its reference.
#define DATA(stem, format)                                                           \
  stem##_in_data_##format, stem##_pscale_in_##format, stem##_pzeropoint_in_##format, \
      stem##_pscale_out_##format, stem##_pzeropoint_out_##format, stem##_out_reference_##format

template <class T, size_t Elements>
struct Pool {
  constexpr Pool(const Options& o, const T* in_data, const float (&in_scale)[1],
                 const T (&in_zeropoint)[1], const float (&out_scale)[1],
                 const T (&out_zeropoint)[1], const T (&)[Elements])
      : in_intq(in_scale, in_zeropoint),
        out_intq(out_scale, out_zeropoint),
        in(o.in, in_data, 0, &in_intq),
        out(o.out, out_data, 0, &out_intq),
        layer_chain(nnlib::list(in), nnlib::list(out)),
        pad{o.pad[0], o.pad[1], pad_after(o.in.h, o.size[1], o.stride[1], o.pad[0], o.out.h),
            pad_after(o.in.w, o.size[0], o.stride[0], o.pad[1], o.out.w)},
        layer{nnlib::layer(AI_LAYER_TYPE_POOL, o.forward, layer_chain),
              {o.size[0], o.size[1]},
              {o.stride[0], o.stride[1]},
              {AI_DIMS_WORD(AI_SHAPE_TYPE, AI_SHAPE_DIMS), pad},
              0} {}

  nnlib::intq<T, 1> in_intq, out_intq;
  T out_data[Elements] = {};
  nnlib::tensor in, out;
  nnlib::layer_chain<1, 1> layer_chain;
  uint32_t pad[AI_SHAPE_DIMS];
  ai_layer_pool layer;
};

constexpr Options kMaxUint8 = {
    forward_mp_integer, {1, 3, 6, 5}, {1, 3, 3, 4}, {3, 2}, {2, 1}, {0, 1}};
CASE(tc_max_pool_conformance_uint8) {
  static constinit Pool max_pool(kMaxUint8, DATA(max_pool, uint8));
  check_exact_layer(tc, max_pool.layer, max_pool_out_reference_uint8);
}

constexpr Options kAverageUint8 = {
    forward_ap_integer, {1, 5, 5, 4}, {1, 5, 3, 5}, {2, 3}, {2, 1}, {2, 1}};
CASE(tc_ave_pool_conformance_uint8) {
  static constinit Pool ave_pool(kAverageUint8, DATA(ave_pool, uint8));
  check_exact_layer(tc, ave_pool.layer, ave_pool_out_reference_uint8);
}

constexpr Options kMaxInt8 = {
    forward_mp_integer, {1, 2, 4, 6}, {1, 2, 3, 3}, {2, 3}, {1, 2}, {1, 0}};
CASE(tc_max_pool_conformance_int8) {
  static constinit Pool max_pool(kMaxInt8, DATA(max_pool, int8));
  check_exact_layer(tc, max_pool.layer, max_pool_out_reference_int8);
}

constexpr Options kAverageInt8 = {
    forward_ap_integer, {1, 3, 7, 5}, {1, 3, 3, 3}, {3, 2}, {3, 2}, {1, 2}};
CASE(tc_ave_pool_conformance_int8) {
  static constinit Pool ave_pool(kAverageInt8, DATA(ave_pool, int8));
  check_exact_layer(tc, ave_pool.layer, ave_pool_out_reference_int8);
}

}  // namespace

SUITE(test_lcut_pool_integer, "test_lcut_pool_integer test unit",
      ENTRY(tc_max_pool_conformance_uint8), ENTRY(tc_ave_pool_conformance_uint8),
      ENTRY(tc_max_pool_conformance_int8), ENTRY(tc_ave_pool_conformance_int8))
