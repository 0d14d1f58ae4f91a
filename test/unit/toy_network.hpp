// SPDX-License-Identifier: MIT
// A network of two toy layers with both kinds of inputs and outputs, and a caller of it.
#ifndef TEST_UNIT_TOY_NETWORK_HPP
#define TEST_UNIT_TOY_NETWORK_HPP

#include <algorithm>
#include <array>
#include <iterator>
#include <numeric>

#include "core/ai_declare.h"
#include "core/ai_platform_interface.h"

// Inputs a (re-pointed) and b (copied), outputs y (re-pointed) and z (copied). a and y keep an
// offset of one and of two elements. The layers compute y = a + b and z = 3 * y + batches left.
struct ToyNetwork {
  struct Memory {
    float home_a[7] = {};
    int8_t home_b[9] = {};
    uint8_t home_y[14] = {};
    int16_t home_z[6] = {};
    // The caller's, of 2, 3, 6 and 4 batches; re-pointed tensors need room for the offset.
    float a[2 * 6 + 1] = {};
    int8_t b[3 * 8] = {};
    uint8_t y[6 * 12 + 2] = {};
    int16_t z[4 * 6] = {};
  };

  ToyNetwork() {
    std::iota(memory.a, std::end(memory.a), 1.0f);
    std::iota(memory.b, std::end(memory.b), int8_t{30});
    net.magic = AI_NETWORK_MAGIC;
    net.flags = AI_NETWORK_INITIALISED;
    net.batch_count = 7;
    net.batch_index = 9;
    first.network = second.network = &net;
    first.user_data = second.user_data = this;
  }
  uint16_t process() { return ai_platform_network_process(&net, inputs, outputs); }

  static void add(const float* a, const int8_t* b, uint8_t* y) {
    for (int i = 0; i < 12; ++i) y[i] = static_cast<uint8_t>(int(a[i % 6]) + b[i % 8]);
  }
  static void triple(const uint8_t* y, int batches_left, int16_t* z) {
    for (int i = 0; i < 6; ++i) z[i] = static_cast<int16_t>(3 * y[i] + batches_left);
  }

  // What process must leave in output memory.
  static void model(const ai_buffer (&call)[4], uint8_t* y, int16_t* z) {
    const float* a = static_cast<const float*>(call[0].data);
    const int8_t* b = static_cast<const int8_t*>(call[1].data);
    const auto [na, nb, ny, nz] = std::array<int, 4>{call[0].n_batches, call[1].n_batches,
                                                     call[2].n_batches, call[3].n_batches};
    for (int t = 0, batches = std::max({na, nb, ny, nz}); t < batches; ++t) {
      uint8_t* sum = y + t % ny * 12 + 2;
      add(a + t % na * 6 + 1, b + t % nb * 8, sum);
      triple(sum, batches - t, z + t % nz * 6);
    }
  }

  static ToyNetwork& running(const ai_layer* layer) {
    ToyNetwork& toy = *static_cast<ToyNetwork*>(layer->user_data);
    toy.misled += toy.net.current_layer != layer;
    ++toy.runs;
    return toy;
  }
  static void forward_add(ai_layer* layer) {
    ToyNetwork& toy = running(layer);
    add(static_cast<float*>(toy.a.array.data), static_cast<int8_t*>(toy.b.array.data),
        static_cast<uint8_t*>(toy.y.array.data));
  }
  static void forward_triple(ai_layer* layer) {
    ToyNetwork& toy = running(layer);
    triple(static_cast<uint8_t*>(toy.y.array.data),
           layer->network->batch_count - layer->network->batch_index,
           static_cast<int16_t*>(toy.z.array.data));
  }

  static constexpr float kScale[] = {0.5f};
  static constexpr int8_t kZeroPoint[] = {-3};

  Memory memory;
  nnlib::intq<int8_t, 1> scales{kScale, kZeroPoint};
  ai_intq_info_list no_scales{1u << 16, nullptr};
  nnlib::tensor a{AI_ARRAY_FORMAT_FLOAT, {1, 3, 2, 1}, memory.home_a + 1, memory.home_a, nullptr};
  nnlib::tensor b{
      AI_ARRAY_FORMAT_S8 | nnlib::copied, {1, 2, 1, 4}, memory.home_b + 1, memory.home_b, &scales};
  nnlib::tensor y{AI_ARRAY_FORMAT_U8, {1, 2, 3, 2}, memory.home_y + 2, memory.home_y, &no_scales};
  nnlib::tensor z{AI_ARRAY_FORMAT_S16 | nnlib::copied, {1, 1, 2, 3}, memory.home_z};
  nnlib::tensor* tensors[4] = {&a, &b, &y, &z};
  nnlib::layer_chain<2, 1> first_chain{nnlib::list(a, b), nnlib::list(y)};
  nnlib::layer_chain<1, 1> second_chain{nnlib::list(y), nnlib::list(z)};
  ai_layer second = nnlib::layer(AI_LAYER_TYPE_NL, forward_triple, second_chain);
  ai_layer first = nnlib::layer(AI_LAYER_TYPE_ADD, forward_add, first_chain, &second);
  nnlib::network<2, 2> net{nnlib::list(a, b), nnlib::list(y, z), first};
  ai_tensor_list* lists = const_cast<ai_tensor_list*>(net.io.chain);
  ai_tensor_list_info* infos[2] = {const_cast<ai_tensor_list_info*>(lists[0].info),
                                   const_cast<ai_tensor_list_info*>(lists[1].info)};
  ai_buffer buffers[4] = {
      {AI_BUFFER_FORMAT_FLOAT | 0xFE000000u, 2, 1, 2, 3, memory.a, nullptr},
      {AI_BUFFER_FORMAT_S8, 3, 4, 1, 2, memory.b, nullptr},
      {AI_BUFFER_FORMAT_U8, 6, 2, 3, 2, memory.y, nullptr},
      {AI_BUFFER_FORMAT_S16, 4, 3, 2, 1, memory.z, nullptr},
  };
  const ai_buffer* inputs = buffers;
  const ai_buffer* outputs = buffers + 2;
  int runs = 0;    // of layers
  int misled = 0;  // of these, with another current_layer
};

#endif
