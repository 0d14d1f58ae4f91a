// SPDX-License-Identifier: MIT
// The declaration helpers of C and of C++ make the same records; accessors end where these do.
#include "core/ai_declare.h"

#include <gtest/gtest.h>

#include <algorithm>

extern "C" {
extern const ai_tensor* const tensors_in_c[5];  // declare_records.c
extern const ai_network* const network_in_c;
}

namespace {

constexpr float kScale[] = {0.5f, 0.25f};
constexpr int8_t kZeroPoint[] = {-3, 4};
constinit int8_t data[2 * 3 * 5 * 7] = {};

constinit nnlib::intq quantization(kScale, kZeroPoint);
constinit nnlib::tensor numbers({1, 3, 5, 7}, static_cast<float*>(nullptr), nnlib::copied);
constinit nnlib::tensor fraction(AI_ARRAY_FORMAT_Q15, {2, 3, 1, 4}, nullptr);
constinit nnlib::tensor nibbles(AI_ARRAY_FORMAT_U4, {3, 3, 5, 7}, nullptr);
constinit nnlib::tensor integer({2, 3, 5, 7}, data, 0, &quantization);
constinit nnlib::tensor fixed(AI_ARRAY_FORMAT_MAKE_Q(8, 0), {2, 3, 5, 7}, data, nullptr,
                              AI_TENSOR_FLAGS_FIXED);
const ai_tensor* const kTensors[] = {&numbers, &fraction, &nibbles, &integer, &fixed};

void forward(ai_layer*) {}

constinit nnlib::layer_chain chain(nnlib::list(numbers, fraction), nnlib::list(nibbles),
                                   nnlib::list(integer, nnlib::absent));
constinit ai_layer last = nnlib::layer(AI_LAYER_TYPE_NL, forward, chain);
constinit ai_layer first = nnlib::layer(AI_LAYER_TYPE_DENSE, forward, chain, &last);
constinit nnlib::network network(nnlib::list(numbers, fixed), nnlib::list(fraction), first);

// The place of a tensor of either language among the five; 5 for null.
size_t place(const ai_tensor* tensor) {
  for (const auto* tensors : {kTensors, tensors_in_c}) {
    const size_t at = static_cast<size_t>(std::find(tensors, tensors + 5, tensor) - tensors);
    if (at < 5) return at;
  }
  return 5;
}

void expect_same_chain(const ai_tensor_chain& in_c, const ai_tensor_chain& in_cpp) {
  ASSERT_EQ(in_c.size, in_cpp.size);
  for (uint32_t list = 0; list < in_c.size; ++list) {
    ASSERT_EQ(in_c.chain[list].size, in_cpp.chain[list].size);
    for (uint32_t i = 0; i < in_c.chain[list].size; ++i) {
      EXPECT_EQ(place(in_c.chain[list].tensors[i]), place(in_cpp.chain[list].tensors[i]));
    }
    const ai_tensor_list_info* info = in_c.chain[list].info;
    ASSERT_EQ(info != nullptr, in_cpp.chain[list].info != nullptr);
    EXPECT_TRUE(info == nullptr || (info->cursors && info->buffers && info->meta_infos));
  }
}

}  // namespace

TEST(Declare, TensorsAreTheSameInBothLanguages) {
  for (size_t i = 0; i < 5; ++i) {
    const ai_tensor& in_c = *tensors_in_c[i];
    const ai_tensor& in_cpp = *kTensors[i];
    EXPECT_EQ(in_c.flags, in_cpp.flags) << i;
    EXPECT_EQ(in_c.shape.type_size, in_cpp.shape.type_size);
    EXPECT_EQ(in_c.stride.type_size, in_cpp.stride.type_size);
    for (uint32_t d = 0; d < AI_SHAPE_DIMS; ++d) {
      EXPECT_EQ(in_c.shape.data[d], in_cpp.shape.data[d]) << i;
      EXPECT_EQ(in_c.stride.data[d], in_cpp.stride.data[d]) << i;
    }
    EXPECT_EQ(in_c.data->format, in_cpp.data->format);
    EXPECT_EQ(in_c.data->size, in_cpp.data->size);
    EXPECT_EQ(in_c.data->data, in_c.data->data_start);
    EXPECT_EQ(in_c.data->data != nullptr, in_cpp.data->data != nullptr);
    EXPECT_EQ(ai_tensor_intq_size(&in_c), ai_tensor_intq_size(&in_cpp));
    EXPECT_EQ(ai_tensor_scale(&in_c, 1), ai_tensor_scale(&in_cpp, 1));
    EXPECT_EQ(ai_tensor_zeropoint(&in_c, 1), ai_tensor_zeropoint(&in_cpp, 1));
  }
}

// A word without fractional bits is that of an integer unless the declaration says more.
TEST(Declare, FlagsFollowTheFormatOrAreGiven) {
  const uint32_t flags[] = {AI_TENSOR_FLAGS_FLOAT, AI_TENSOR_FLAGS_FIXED, AI_TENSOR_FLAGS_INTEGER,
                            AI_TENSOR_FLAGS_INTEGER, AI_TENSOR_FLAGS_FIXED};
  for (size_t i = 0; i < 5; ++i) EXPECT_EQ(tensors_in_c[i]->flags, flags[i]) << i;
  EXPECT_EQ(integer.array.format, fixed.array.format);
}

TEST(Declare, NetworksAreTheSameInBothLanguages) {
  expect_same_chain(network_in_c->io, network.io);
  const ai_layer* layer = network_in_c->layers;
  for (const ai_layer* same : {&first, &last}) {
    EXPECT_EQ(layer->type, same->type);
    EXPECT_NE(layer->forward, nullptr);
    expect_same_chain(*layer->tensor_chain, chain);
    layer = ai_layer_next(layer);
  }
  EXPECT_EQ(layer, nullptr);
}

// Of records whose memory goes on behind their last entry.
TEST(Tensor, AccessorsEndWithTheirRecords) {
  uint32_t sizes[] = {1, 2, 3, 4, 5};
  const float scales[] = {0.5f, 0.25f, 2.0f};
  const uint8_t zeropoints[] = {7, 200, 9};
  const ai_intq_info info = {scales, zeropoints};
  const ai_intq_info_list two_entries = {2u << 16, &info};
  ai_array array = {AI_ARRAY_FORMAT_U8, 24, nullptr, nullptr};
  ai_tensor tensor = {&two_entries,
                      AI_TENSOR_FLAGS_INTEGER,
                      {AI_DIMS_WORD(AI_SHAPE_TYPE, 4), sizes},
                      {AI_DIMS_WORD(AI_SHAPE_TYPE, 4), sizes},
                      &array};
  EXPECT_EQ(ai_tensor_dim(&tensor, 3), 4u);
  EXPECT_EQ(ai_tensor_dim(&tensor, 4), 0u);
  EXPECT_EQ(ai_tensor_stride(&tensor, 3), 4u);
  EXPECT_EQ(ai_tensor_stride(&tensor, 4), 0u);
  EXPECT_EQ(ai_tensor_scale(&tensor, 1), 0.25f);
  EXPECT_EQ(ai_tensor_scale(&tensor, 2), 0.0f);
  EXPECT_EQ(ai_tensor_zeropoint(&tensor, 1), 200);
  EXPECT_EQ(ai_tensor_zeropoint(&tensor, 2), 0);
  ai_tensor* const entries[] = {&tensor, &tensor};
  const ai_tensor_list lists[] = {{1, entries, nullptr}, {1, entries, nullptr}};
  const ai_tensor_chain one_list = {1, lists};
  EXPECT_EQ(ai_tensor_chain_get(&one_list, 0, 0), &tensor);
  EXPECT_EQ(ai_tensor_chain_get(&one_list, 0, 1), nullptr);
  EXPECT_EQ(ai_tensor_chain_get(&one_list, 1, 0), nullptr);
}
