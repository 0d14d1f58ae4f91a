// SPDX-License-Identifier: MIT
// The network checker on records broken at random: it stands them all.
#include <fuzzer/FuzzedDataProvider.h>

#include <vector>

#include "test/check/sample_networks.hpp"

namespace {

// The places of records where numbers and pointers stand.
struct Places {
  std::vector<uint32_t*> numbers;
  std::vector<void**> pointers;

  template <class T>
  void add_pointer(T*& pointer) {
    pointers.push_back(reinterpret_cast<void**>(const_cast<std::remove_const_t<T>**>(&pointer)));
  }
  void add(ai_tensor& tensor) {
    for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) {
      numbers.push_back(&tensor.shape.data[i]);
      numbers.push_back(&tensor.stride.data[i]);
    }
    add_pointer(tensor.klass);
    add_pointer(tensor.data);
    add_pointer(tensor.shape.data);
    add_pointer(tensor.stride.data);
    numbers.push_back(&tensor.data->size);
    numbers.push_back(&tensor.data->format);
    add_pointer(tensor.data->data);
    add_pointer(tensor.data->data_start);
  }
  void add(ai_layer& layer) {
    for (uint32_t list = 0; list < AI_CHAIN_LISTS; ++list) {
      ai_tensor_list& tensors = list_of(layer, list);
      for (uint32_t i = 0; i < tensors.size; ++i) {
        if (tensors.tensors[i] != nullptr) {
          add(*tensors.tensors[i]);
        }
        add_pointer(const_cast<ai_tensor*&>(tensors.tensors[i]));
      }
      add_pointer(tensors.tensors);
    }
    add_pointer(layer.tensor_chain);
    add_pointer(layer.next);
  }
  void add(ai_layer_conv2d& conv) {
    numbers.insert(numbers.end(),
                   {&conv.groups, &conv.filter_stride[0], &conv.filter_stride[1], &conv.dilation[0],
                    &conv.dilation[1], &conv.filter_pad.data[0], &conv.filter_pad.data[3]});
    add_pointer(conv.filter_pad.data);
    add_pointer(conv.nl_params);
    add(conv.base);
  }
};

// Numbers small, huge or one bit off; pointers null.
void break_records(Places& places, FuzzedDataProvider& input) {
  for (uint32_t left = input.ConsumeIntegralInRange(1, 4); left > 0; --left) {
    if (input.ConsumeBool()) {
      *places.pointers[input.ConsumeIntegralInRange<size_t>(0, places.pointers.size() - 1)] =
          nullptr;
    } else {
      uint32_t& number =
          *places.numbers[input.ConsumeIntegralInRange<size_t>(0, places.numbers.size() - 1)];
      number = input.ConsumeBool() ? input.ConsumeIntegral<uint32_t>()
                                   : number ^ (1u << input.ConsumeIntegralInRange(0, 31));
    }
  }
}

template <class Network>
void run(FuzzedDataProvider& input, Places (*places_of)(Network&)) {
  Network sample;
  Places places = places_of(sample);
  break_records(places, input);
  ai_network_check(&sample.network, nullptr, nullptr);
}

Places places_of(FloatNetwork& n) {
  Places places;
  places.add(n.conv);
  places.add(n.pool.base);
  places.add(n.dense);
  return places;
}
Places places_of(IntegerNetwork& n) {
  Places places;
  places.add(n.conv);
  places.add(n.dense);
  places.add(n.relu.base);
  places.add_pointer(n.relu.nl_params);
  places.numbers.push_back(&n.relu_params.size);
  return places;
}
Places places_of(FixedNetwork& n) {
  Places places;
  places.add(n.conv.base);
  places.numbers.insert(places.numbers.end(),
                        {&n.conv.pool_size[0], &n.conv.pool_size[1], &n.conv.pool_stride[0]});
  places.add_pointer(n.conv.pool_pad.data);
  places.add(n.dense);
  return places;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  switch (input.ConsumeIntegralInRange(0, 2)) {
    case 0:
      run<FloatNetwork>(input, places_of);
      break;
    case 1:
      run<IntegerNetwork>(input, places_of);
      break;
    default:
      run<FixedNetwork>(input, places_of);
      break;
  }
  return 0;
}
