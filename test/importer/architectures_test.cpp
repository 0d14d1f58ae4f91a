// SPDX-License-Identifier: MIT
// Memory of well-known small networks, rebuilt with random weights.
#include <gtest/gtest.h>

#include "importer/main/import_model.hpp"
#include "tools/networks/architectures.hpp"

namespace nnlib::importer {
namespace {

// The plan reaches the most that lives at once, scratch included, within 2 %. The network runs.
TEST(Architecture, Arena) {
  for (Architecture& known : architectures()) {
    SCOPED_TRACE(known.name);
    Imported imported = build(prepare(known.graph, {}), {});
    const Plan& plan = imported.memory.plan;
    EXPECT_EQ(plan.bound, known.bound);
    EXPECT_LE(plan.bytes, plan.bound_with_scratch + plan.bound_with_scratch / 50);
    Bytes input(port_bytes(imported.network->inputs[0]));
    for (size_t i = 0; i < input.size(); ++i) {
      input[i] = static_cast<uint8_t>(i * 37);
    }
    const Bytes output = Runner(*imported.network, imported.memory).run({input})[0];
    EXPECT_NE(output, Bytes(output.size(), output[0]));
  }
}

}  // namespace
}  // namespace nnlib::importer
