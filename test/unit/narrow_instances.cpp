// SPDX-License-Identifier: MIT
// Linked with tests that compare bits where the build fuses: on x86 only wide vectors do, and by
// the number of columns. They stay off.
#include <gtest/gtest.h>

#include "kernels/vector.hpp"

namespace {

class NarrowInstances : public testing::Environment {
  void SetUp() override { nnlib::vector_allow_wide(false); }
};

[[maybe_unused]] const auto* const narrow_instances =
    testing::AddGlobalTestEnvironment(new NarrowInstances);

}  // namespace
