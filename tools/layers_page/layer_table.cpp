// SPDX-License-Identifier: MIT
// Prints the checker's table of layer functions, a row a line, fields separated by tabs. Links none
// of the functions: the last field tells how many of the program's rows hold an address.
#include <cstdio>

#include "check/layer_rule.hpp"
#include "layers/layers.h"

int main() {
  static constexpr const char* kInPlace[] = {"no", "yes", "yes, or above", "over C", "no tensors"};
  const nnlib::LayerRules rules = nnlib::layer_rules();
  for (uint32_t i = 0; i < rules.count; ++i) {
    const nnlib::LayerRule& rule = rules.rows[i];
    std::printf("%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\t%s\t%d\n", rule.name, rule.record,
                ai_layer_type_name(rule.types[0]), ai_layer_type_name(rule.types[1]), rule.inputs,
                rule.outputs, rule.weights, rule.depthwise != nullptr ? rule.depthwise : "",
                rule.scratch, kInPlace[static_cast<int>(rule.in_place)], rule.forward != nullptr);
  }
}
