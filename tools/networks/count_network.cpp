// SPDX-License-Identifier: MIT
// Runs a network between region_begin and region_end, then each of its layers alone. Prints a line
// for each: place and function, multiply-accumulates, 1.
#include <cstdio>

#include "core/ai_network.h"
#include "layers/layers.h"
#include "network.h"
#include "profile/ai_layer_work.h"
#include "tools/instructions/region.hpp"

extern "C" {
// The first layer that runs tells the network.
void __real_ai_layers_forward_all(ai_network* network);
void __wrap_ai_layers_forward_all(ai_network* network);
}

namespace {

int8_t input[NETWORK_INPUT_ELEMENTS];
int8_t output[NETWORK_OUTPUT_ELEMENTS];
ai_network* running;

void print(unsigned place, const char* function, uint64_t macs) {
  std::printf("%u %s;%lu;1\n", place, function, static_cast<unsigned long>(macs));
}

}  // namespace

void __wrap_ai_layers_forward_all(ai_network* network) {
  running = network;
  __real_ai_layers_forward_all(network);
}

int main() {
  uint32_t state = 1;
  for (int8_t& element : input) {
    state = state * 1664525 + 1013904223;
    element = static_cast<int8_t>(state >> 24);
  }
  if (network_init() != 0) {
    return 1;
  }
  region_begin();
  const uint32_t error = network_run(input, output);
  region_end();
  uint64_t all = 0;
  for (ai_layer* layer = running->layers; layer != nullptr; layer = ai_layer_next(layer)) {
    all += ai_layer_multiply_accumulates(layer);
  }
  print(0, "network", all);
  unsigned place = 0;
  for (ai_layer* layer = running->layers; layer != nullptr;) {
    const ai_layer& ran = *layer;
    region_begin();
    layer = ai_layers_forward_layer(layer);
    region_end();
    print(++place, ai_layer_type_name(ran.type), ai_layer_multiply_accumulates(&ran));
  }
  return error != 0;
}
