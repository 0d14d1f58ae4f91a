// SPDX-License-Identifier: MIT
// The conformance program with the network checker in front of every layer and network that a case
// runs: none may have a finding but those that break a rule on purpose.
// Linked with --wrap=ai_layers_forward_layer and --wrap=ai_layers_forward_all.
#include <cstdio>
#include <map>
#include <string>

#include "check/ai_network_check.h"
#include "core/ai_declare.h"
#include "layers/layers.h"
#include "test/test_lcut_main.h"

extern "C" ai_layer* __real_ai_layers_forward_layer(ai_layer* layer);
extern "C" void __real_ai_layers_forward_all(ai_network* network);

namespace {

// Findings of fixtures that break a rule on purpose.
constexpr const char* kOnPurpose[] = {
    "layer 0, forward_hardmax: input 0 has the dimensions (1, 4, 2, 3), (1, 4, 1, 3) are needed",
    "layer 0, forward_hardmax: output 0 has 24 elements, 12 are needed",
    ("layer 0, forward_pad: with 2 rows and 1 columns before the map, reflection leaves "
     "rows 1 to 1 unwritten"),
    // the indices that topK gives, as the output of a network
    "network: output 1 has the format FMT_U32, which no buffer has",
    "network: the network has 0 inputs, at least 1 is needed",
    "network: the network has 0 outputs, at least 1 is needed",
    "network: the network has 0 layers, at least 1 is needed"};

std::map<std::string, int> found;

void collect(const ai_check_finding* finding, void* /*context*/) {
  ++found[finding->text];
}

// As a network whose inputs and outputs are the layer's.
void check_alone(ai_layer& layer) {
  ai_buffer_cursor cursors[16] = {};
  ai_buffer buffers[16] = {};
  ai_buffer_meta_info meta_infos[16] = {};
  const ai_tensor_list_info info = {cursors, buffers, meta_infos};
  ai_tensor_list lists[2] = {layer.tensor_chain->chain[0], layer.tensor_chain->chain[1]};
  lists[0].info = lists[1].info = &info;
  ai_network network = {};
  network.io = {2, lists};
  network.layers = &layer;
  ai_layer* const next = layer.next;
  layer.next = nullptr;
  ai_network_check(&network, collect, nullptr);
  layer.next = next;
}

}  // namespace

extern "C" ai_layer* __wrap_ai_layers_forward_layer(ai_layer* layer) {
  check_alone(*layer);
  return __real_ai_layers_forward_layer(layer);
}

extern "C" void __wrap_ai_layers_forward_all(ai_network* network) {
  ai_network_check(network, collect, nullptr);
  __real_ai_layers_forward_all(network);
}

int main(int argc, char** argv) {
  int wrong = test_lcut_main(argc, argv) != 0 ? 1 : 0;
  for (const char* text : kOnPurpose) {
    if (found.erase(text) == 0) {
      std::printf("not found: %s\n", text);
      wrong = 1;
    }
  }
  for (const auto& [text, times] : found) {
    std::printf("unexpected, %d times: %s\n", times, text.c_str());
    wrong = 1;
  }
  return wrong;
}
