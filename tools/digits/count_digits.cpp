// SPDX-License-Identifier: MIT
// Runs a network on the first test images between region_begin and region_end, for an emulator that
// counts instructions there. Prints: inference, digits, images.
#include <cstdio>

#include "digits.h"
#include "test_half.h"
#include "tools/instructions/region.hpp"

namespace {

constexpr int kImages = 16;
float g_images[kImages][DIGITS_INPUT_ELEMENTS];
float g_scores[DIGITS_OUTPUT_ELEMENTS];

}  // namespace

int main() {
  for (int n = 0; n < kImages; ++n) {
    for (int i = 0; i < DIGITS_INPUT_ELEMENTS; ++i) {
      g_images[n][i] = static_cast<float>(test_images[n * DIGITS_INPUT_ELEMENTS + i]) / 16.0F;
    }
  }
  uint32_t error = digits_init();
  region_begin();
  for (const auto& image : g_images) {
    error |= digits_run(image, g_scores);
  }
  region_end();
  std::printf("inference;digits;%d\n", kImages);
  return error != 0 || test_labels[0] > 9;
}
