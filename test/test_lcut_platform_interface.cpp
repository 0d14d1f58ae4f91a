// SPDX-License-Identifier: MIT
// Declared tensors: shapes, strides and arrays.
#include "test/fixture.hpp"

namespace {

constexpr nnlib::dims kMap = {1, 1, 6, 4};      // two dimensions: width 6, height 4
constexpr nnlib::dims kKernels = {2, 3, 5, 7};  // four

void check_shape(lcut_case* tc, const ai_tensor& tensor, std::initializer_list<int64_t> expected,
                 Site site = CALLING_SITE) {
  check_equal(tc, expected,
              {ai_tensor_dim(&tensor, 0), ai_tensor_dim(&tensor, 1), ai_tensor_dim(&tensor, 2),
               ai_tensor_dim(&tensor, 3)},
              site);
}

void check_stride(lcut_case* tc, const ai_tensor& tensor, std::initializer_list<int64_t> expected,
                  Site site = CALLING_SITE) {
  check_equal(tc, expected,
              {ai_tensor_stride(&tensor, 0), ai_tensor_stride(&tensor, 1),
               ai_tensor_stride(&tensor, 2), ai_tensor_stride(&tensor, 3)},
              site);
}

// Tensors of three elements, one bound in place and one copied.
template <class T>
void check_static_array(lcut_case* tc, uint32_t format, uint32_t bytes, uint32_t flags,
                        Site site = CALLING_SITE) {
  static constinit T data[3] = {};
  static constinit nnlib::tensor bound({1, 3, 1, 1}, data);
  static constinit nnlib::tensor copied({1, 3, 1, 1}, data, nnlib::copied);
  check_equal(tc, {format, format | 0x20000000, 3, bytes, flags, true, true},
              {ai_tensor_format(&bound), ai_tensor_format(&copied), ai_tensor_size(&bound),
               ai_array_get_byte_size(bound.array.format, bound.array.size), bound.flags,
               ai_tensor_data(&bound) == data, copied.array.data_start == data},
              site);
}

}  // namespace

CASE(tc_shape_2d) {
  static constinit nnlib::tensor map(AI_ARRAY_FORMAT_Q7, kMap, nullptr);
  check_shape(tc, map, {1, 1, 6, 4});
  check_equal(tc, {0x400, 24, 24, 0, 0},
              {map.shape.type_size, ai_shape_elements(&map.shape), ai_tensor_size(&map),
               ai_tensor_dim(&map, 4), ai_tensor_dim(nullptr, 0)});
  constexpr ai_shape empty = {AI_DIMS_WORD(AI_SHAPE_TYPE, 0), nullptr};
  LCUT_INT_EQUAL(tc, 1, ai_shape_elements(&empty));
}

CASE(tc_stride_2d) {
  static constinit nnlib::tensor map_q7(AI_ARRAY_FORMAT_Q7, kMap, nullptr);
  static constinit nnlib::tensor map_q15(AI_ARRAY_FORMAT_Q15, kMap, nullptr);
  check_stride(tc, map_q7, {1, 1, 1, 6});
  check_stride(tc, map_q15, {2, 2, 2, 12});
  check_equal(tc, {0x401, 48}, {map_q7.stride.type_size, ai_tensor_batch_bytes(&map_q15)});
}

CASE(tc_shape_nd) {
  static constexpr ai_intq_info_list intq = {};
  static constinit nnlib::tensor kernels(AI_ARRAY_FORMAT_FLOAT, kKernels, nullptr, &intq);
  static constinit nnlib::tensor clone(AI_ARRAY_FORMAT_Q15, kMap, nullptr);
  clone.shape.type_size = AI_DIMS_WORD(0x55, 2);
  core_tensor_clone(&clone, &kernels);
  check_shape(tc, clone, {2, 3, 5, 7});
  check_stride(tc, clone, {4, 8, 24, 120});
  check_equal(tc, {AI_DIMS_WORD(0x55, 4), kernels.flags}, {clone.shape.type_size, clone.flags});
  LCUT_TRUE(tc, clone.shape.data != kernels.shape.data && clone.data == &kernels.array);
  LCUT_TRUE(tc, clone.klass == &intq);
  // Of two dimensions and of none: the values behind stay.
  static constinit nnlib::tensor map(AI_ARRAY_FORMAT_Q7, kMap, nullptr);
  for (const uint32_t dimensions : {2u, 0u}) {
    map.shape.type_size = AI_DIMS_WORD(AI_SHAPE_TYPE, dimensions);
    map.stride.type_size = AI_DIMS_WORD(AI_STRIDE_TYPE, dimensions);
    core_tensor_clone(&clone, &map);
    check_equal(tc, {AI_DIMS_WORD(0x55, dimensions), AI_DIMS_WORD(AI_STRIDE_TYPE, dimensions)},
                {clone.shape.type_size, clone.stride.type_size});
    check_equal(
        tc, {1, 1, 5, 7},
        {clone.shape.data[0], clone.shape.data[1], clone.shape.data[2], clone.shape.data[3]});
  }
}

CASE(tc_stride_nd) {
  static constinit nnlib::tensor channels(AI_ARRAY_FORMAT_Q15, {1, 8, 1, 1}, nullptr);
  static constinit nnlib::tensor kernels(AI_ARRAY_FORMAT_S32, kKernels, nullptr);
  check_stride(tc, channels, {2, 2, 16, 16});
  check_stride(tc, kernels, {4, 8, 24, 120});
  core_shape_to_stride(&channels.stride, &kernels.shape);  // copies: these are no byte strides
  check_stride(tc, channels, {2, 3, 5, 7});
  LCUT_INT_EQUAL(tc, 0x401, channels.stride.type_size);
}

CASE(tc_static_array_float) {
  check_static_array<float>(tc, AI_ARRAY_FORMAT_FLOAT, 12, 0x01000001);
  // A view that starts past its buffer, and its clone.
  static constinit float buffer[8] = {};
  static constinit nnlib::tensor view(AI_ARRAY_FORMAT_FLOAT, {1, 3, 1, 1}, buffer + 5, buffer,
                                      nullptr);
  ai_array clone = {};
  core_array_clone(&clone, &view.array);
  LCUT_TRUE(tc, clone.data == buffer + 5 && clone.data_start == buffer && clone.size == 3);
}

CASE(tc_static_array_u8) {
  check_static_array<uint8_t>(tc, AI_ARRAY_FORMAT_U8, 3, 0x0100000F);
  static constexpr float scales[] = {0.5f, 0.25f};
  static constexpr uint8_t zeropoints[] = {3, 200};
  static constinit nnlib::intq intq(scales, zeropoints);
  static constinit nnlib::tensor tensor(AI_ARRAY_FORMAT_U8, {1, 2, 1, 1}, nullptr, &intq);
  check_equal(tc, {2, 200}, {ai_tensor_intq_size(&tensor), ai_tensor_zeropoint(&tensor, 1)});
  LCUT_FLOAT_EQUAL(tc, 0.25f, ai_tensor_scale(&tensor, 1));
  tensor.array.format = AI_ARRAY_FORMAT_S8;
  LCUT_INT_EQUAL(tc, -56, ai_tensor_zeropoint(&tensor, 1));
}

CASE(tc_static_array_s16) {
  check_static_array<int16_t>(tc, AI_ARRAY_FORMAT_S16, 6, 0x0100000F);
  static constinit nnlib::tensor fixed(AI_ARRAY_FORMAT_Q15, {1, 3, 1, 1}, nullptr);
  LCUT_INT_EQUAL(tc, 0x0100000A, fixed.flags);
}

CASE(tc_static_array_s32) {
  check_static_array<int32_t>(tc, AI_ARRAY_FORMAT_S32, 12, 0x0100000F);
}

SUITE(test_lcut_platform_interface, "test_lcut_platform_interface test unit", ENTRY(tc_shape_2d),
      ENTRY(tc_stride_2d), ENTRY(tc_shape_nd), ENTRY(tc_stride_nd), ENTRY(tc_static_array_float),
      ENTRY(tc_static_array_u8), ENTRY(tc_static_array_s16), ENTRY(tc_static_array_s32))
