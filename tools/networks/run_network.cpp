// SPDX-License-Identifier: MIT
// An application of an imported network with nothing else in it, to measure what the network takes.
#include "network.h"

namespace {

int8_t input[NETWORK_INPUT_ELEMENTS];
int8_t output[NETWORK_OUTPUT_ELEMENTS];

}  // namespace

int main() {
  return network_init() == 0 && network_run(input, output) == 0 ? output[0] == 127 : 2;
}
