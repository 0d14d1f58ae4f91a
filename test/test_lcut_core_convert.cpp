// SPDX-License-Identifier: MIT
// Conversion layers between float, 8-bit integers and fixed point.
#include "core/core_convert.h"
#include "test/fixture.hpp"
#include "test/reference/core_convert.h"

namespace {

constexpr ai_array_format kQ6_1 = AI_ARRAY_FORMAT_MAKE_Q(8, 1);
constexpr ai_array_format kQ3_4 = AI_ARRAY_FORMAT_MAKE_Q(8, 4);
constexpr ai_array_format kQ2_5 = AI_ARRAY_FORMAT_MAKE_Q(8, 5);
constexpr ai_array_format kQ4_11 = AI_ARRAY_FORMAT_MAKE_Q(16, 11);

constinit nnlib::intq int8_to_float_in_quant(int8_to_float_scale, int8_zeropoint);
constinit nnlib::intq uint8_to_float_in_quant(uint8_to_float_scale, uint8_zeropoint);
constinit nnlib::intq float_to_int8_out_quant(float_to_int8_scale, int8_zeropoint);
constinit nnlib::intq float_to_uint8_out_quant(float_to_uint8_scale, uint8_zeropoint);

// A conversion layer with its tensors; the input is a copy, since some conversions rescale it.
template <class In, class Out, size_t Count>
struct Conversion {
  constexpr Conversion(ai_layer_forward forward, const In (&data)[Count],
                       ai_array_format in_format = nnlib::format_of<In>,
                       ai_array_format out_format = nnlib::format_of<Out>,
                       const ai_intq_info_list* in_quant = nullptr,
                       const ai_intq_info_list* out_quant = nullptr)
      : in(in_format, {1, Count, 1, 1}, in_data, in_quant),
        out(out_format, out_quant),
        layer_chain(nnlib::list(in), nnlib::list(out)),
        layer(nnlib::layer(AI_LAYER_TYPE_NL, forward, layer_chain)) {
    for (size_t i = 0; i < Count; ++i) {
      in_data[i] = data[i];
    }
  }

  In in_data[Count] = {};
  nnlib::tensor in;
  output_tensor<Out, 1, Count, 1, 1> out;
  nnlib::layer_chain<1, 1> layer_chain;
  ai_layer layer;
};

// Every output element exactly, and what is left of the input.
template <class In, class Out, size_t Count>
void check(lcut_case* tc, Conversion<In, Out, Count>& fixture, const Out (&out_reference)[Count],
           const In (&in_after)[Count], Site site = CALLING_SITE) {
  ai_layers_forward_layer(&fixture.layer);
  check_near_int(tc, fixture.out.storage, out_reference, 0, site);
  check_near(tc, fixture.in_data, in_after, 0.0f, 1.0f, site);
}

}  // namespace

CASE(tc_int8_to_float_conformance) {
  static constinit Conversion<int8_t, float, 4> int8_to_float(
      node_convert, int8_to_float_in_data, AI_ARRAY_FORMAT_S8, AI_ARRAY_FORMAT_FLOAT,
      &int8_to_float_in_quant);
  check_layer(tc, int8_to_float.layer, int8_to_float_out_reference, kTwoEpsilon);
}

CASE(tc_uint8_to_float_conformance) {
  static constinit Conversion<uint8_t, float, 4> uint8_to_float(
      node_convert, uint8_to_float_in_data, AI_ARRAY_FORMAT_U8, AI_ARRAY_FORMAT_FLOAT,
      &uint8_to_float_in_quant);
  check_layer(tc, uint8_to_float.layer, uint8_to_float_out_reference, kTwoEpsilon);
}

CASE(tc_float_to_int8_conformance) {
  static constinit Conversion<float, int8_t, 5> float_to_int8(
      node_convert, float_to_int8_in_data, AI_ARRAY_FORMAT_FLOAT, AI_ARRAY_FORMAT_S8, nullptr,
      &float_to_int8_out_quant);
  check(tc, float_to_int8, float_to_int8_out_reference, float_to_int8_in_data);
}

CASE(tc_float_to_uint8_conformance) {
  static constinit Conversion<float, uint8_t, 5> float_to_uint8(
      node_convert, float_to_uint8_in_data, AI_ARRAY_FORMAT_FLOAT, AI_ARRAY_FORMAT_U8, nullptr,
      &float_to_uint8_out_quant);
  check(tc, float_to_uint8, float_to_uint8_out_reference, float_to_uint8_in_data);
}

CASE(tc_q2_5_to_float_conformance) {
  static constinit Conversion<int8_t, float, 4> q2_5_to_float(node_convert, q2_5_to_float_in_data,
                                                              kQ2_5);
  check_layer(tc, q2_5_to_float.layer, q2_5_to_float_out_reference, kFloatEpsilon);
}

CASE(tc_float_to_q2_5_conformance) {
  static constinit Conversion<float, int8_t, 4> float_to_q2_5(node_convert, float_to_q2_5_in_data,
                                                              AI_ARRAY_FORMAT_FLOAT, kQ2_5);
  check(tc, float_to_q2_5, float_to_q2_5_out_reference, float_to_q2_5_in_after);
}

CASE(tc_q4_11_to_float_conformance) {
  static constinit Conversion<int16_t, float, 4> q4_11_to_float(node_convert,
                                                                q4_11_to_float_in_data, kQ4_11);
  check_layer(tc, q4_11_to_float.layer, q4_11_to_float_out_reference, kFloatEpsilon);
}

CASE(tc_float_to_q4_11_conformance) {
  static constinit Conversion<float, int16_t, 4> float_to_q4_11(
      node_convert, float_to_q4_11_in_data, AI_ARRAY_FORMAT_FLOAT, kQ4_11);
  check(tc, float_to_q4_11, float_to_q4_11_out_reference, float_to_q4_11_in_after);
}

CASE(tc_q4_11_to_q2_5_conformance) {
  static constinit Conversion<int16_t, int8_t, 4> q4_11_to_q2_5(
      node_convert_fixed, q4_11_to_q2_5_in_data, kQ4_11, kQ2_5);
  check(tc, q4_11_to_q2_5, q4_11_to_q2_5_out_reference, q4_11_to_q2_5_in_after);
}

CASE(tc_q2_5_to_q4_11_conformance) {
  static constinit Conversion<int8_t, int16_t, 4> q2_5_to_q4_11(
      node_convert_fixed, q2_5_to_q4_11_in_data, kQ2_5, kQ4_11);
  check(tc, q2_5_to_q4_11, q2_5_to_q4_11_out_reference, q2_5_to_q4_11_in_after);
}

CASE(tc_q4_11_to_q6_1_conformance) {
  static constinit Conversion<int16_t, int8_t, 4> q4_11_to_q6_1(
      node_convert_fixed, q4_11_to_q6_1_in_data, kQ4_11, kQ6_1);
  check(tc, q4_11_to_q6_1, q4_11_to_q6_1_out_reference, q4_11_to_q6_1_in_after);
}

CASE(tc_q6_1_to_q3_4_conformance) {
  static constinit Conversion<int8_t, int8_t, 4> q6_1_to_q3_4(node_convert_fixed,
                                                              q6_1_to_q3_4_in_data, kQ6_1, kQ3_4);
  check(tc, q6_1_to_q3_4, q6_1_to_q3_4_out_reference, q6_1_to_q3_4_in_after);
}

CASE(tc_uint8_to_int8_conformance) {
  static constinit Conversion<uint8_t, int8_t, 10> uint8_to_int8(node_convert_integer,
                                                                 uint8_to_int8_in_data);
  check(tc, uint8_to_int8, uint8_to_int8_out_reference, uint8_to_int8_in_data);
}

CASE(tc_int8_to_uint8_conformance) {
  static constinit Conversion<int8_t, uint8_t, 10> int8_to_uint8(node_convert_integer,
                                                                 int8_to_uint8_in_data);
  check(tc, int8_to_uint8, int8_to_uint8_out_reference, int8_to_uint8_in_data);
}

SUITE(test_lcut_core_convert, "test_lcut_core_convert test unit",
      ENTRY(tc_int8_to_float_conformance), ENTRY(tc_uint8_to_float_conformance),
      ENTRY(tc_float_to_int8_conformance), ENTRY(tc_float_to_uint8_conformance),
      ENTRY(tc_q2_5_to_float_conformance), ENTRY(tc_float_to_q2_5_conformance),
      ENTRY(tc_q4_11_to_float_conformance), ENTRY(tc_float_to_q4_11_conformance),
      ENTRY(tc_q4_11_to_q2_5_conformance), ENTRY(tc_q2_5_to_q4_11_conformance),
      ENTRY(tc_q4_11_to_q6_1_conformance), ENTRY(tc_q6_1_to_q3_4_conformance),
      ENTRY(tc_uint8_to_int8_conformance), ENTRY(tc_int8_to_uint8_conformance))
