// SPDX-License-Identifier: MIT
// Of every layer function of the checker's table the fuzz target makes networks without a fault,
// and these run.
#include <gtest/gtest.h>

#include "test/fuzz/random_network.hpp"

namespace {

constexpr int kNetworks = 20;  // of each function
constexpr int kTries = 4000;

TEST(RandomNetwork, EveryLayerFunctionRuns) {
  const nnlib::LayerRules rules = nnlib::layer_rules();
  std::minstd_rand random(7);
  for (const nnlib::LayerRule* rule = rules.rows; rule != rules.rows + rules.count; ++rule) {
    ASSERT_NE(rule->forward, nullptr) << rule->name;
    ASSERT_TRUE(LayerMaker::knows(*rule)) << rule->name;
    const bool refused = std::string_view(rule->name) == "_forward_gru_after";
    int sound = 0;
    for (int tries = 0; tries < (refused ? kNetworks : kTries) && sound < kNetworks; ++tries) {
      uint8_t bytes[200];
      for (uint8_t& byte : bytes) {
        byte = static_cast<uint8_t>(random() >> 8);
      }
      RandomNetwork network(Choices(bytes, sizeof(bytes)), rule);
      if (network.sound()) {
        EXPECT_TRUE(network.run()) << rule->name;
        ++sound;
      }
    }
    EXPECT_EQ(sound, refused ? 0 : kNetworks) << rule->name;
  }
}

}  // namespace
