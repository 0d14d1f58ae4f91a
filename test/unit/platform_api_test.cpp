// SPDX-License-Identifier: MIT
// The platform API under hostile input, and batches seen from inside a network.
// Linked with --wrap=core_init and --wrap=ai_check_custom_types, so that they can be made to fail.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "layers/layers.h"
#include "test/unit/toy_network.hpp"

namespace {
bool g_core_starts = true;
bool g_types_match = true;
}  // namespace

extern "C" bool __wrap_core_init() {
  return g_core_starts;
}
extern "C" bool __real_ai_check_custom_types(const uint32_t* signature);
extern "C" bool __wrap_ai_check_custom_types(const uint32_t* signature) {
  return g_types_match && __real_ai_check_custom_types(signature);
}

namespace {

using Toy = ToyNetwork;

template <class T>
std::string bytes(const T& record) {
  return std::string(reinterpret_cast<const char*>(&record), sizeof(record));
}

struct Fault {
  const char* name;
  ai_error error;
  int bound;  // tensors whose buffers come before the failing check
  std::function<void(Toy&)> provoke;
};

// Faults in the order of the checks: of any two, the first one is reported. call() makes the call
// and checks what it returns; nothing else changes but arrays that were bound before the check.
template <class Call>
void expect_refused(const std::vector<Fault>& faults, Call call) {
  for (auto fault = faults.begin(); fault != faults.end(); ++fault) {
    for (auto later = fault; later != faults.end(); ++later) {
      SCOPED_TRACE(fault->name + std::string(" of tensor ") + std::to_string(fault->bound) +
                   ", also: " + later->name);
      Toy toy;
      later->provoke(toy);
      fault->provoke(toy);
      const std::string network = bytes<ai_network>(toy.net);
      const std::string memory = bytes(toy.memory);
      ai_array expected[4];
      for (int k = 0; k < 4; ++k) {
        expected[k] = toy.tensors[k]->array;
        if (k >= fault->bound || static_cast<ai_tensor*>(toy.tensors[k])->data == nullptr ||
            (expected[k].format & nnlib::copied) != 0)
          continue;
        const ptrdiff_t offset =
            static_cast<char*>(expected[k].data) - static_cast<char*>(expected[k].data_start);
        expected[k].data_start = toy.buffers[k].data;
        expected[k].data = static_cast<char*>(toy.buffers[k].data) + offset;
      }
      call(toy, fault->error);
      EXPECT_EQ(ai_platform_network_get_error(&toy.net), fault->error);
      EXPECT_EQ(bytes<ai_network>(toy.net), network);
      EXPECT_EQ(bytes(toy.memory), memory);
      EXPECT_EQ(toy.runs, 0);
      for (int k = 0; k < 4; ++k) EXPECT_EQ(bytes(toy.tensors[k]->array), bytes(expected[k])) << k;
    }
  }
}

void remove_array(Toy& toy, int tensor) {
  static_cast<ai_tensor*>(toy.tensors[tensor])->data = nullptr;
}

// With memory missing, only the checks that do without it are made before that is found.
std::vector<Fault> process_faults(bool memory_missing = false) {
  std::vector<Fault> faults = {
      {"state", 0x3011, 0, [](Toy& toy) { toy.net.flags = 0xFD; }},
      {"no lists", 0x1712, 0, [](Toy& toy) { toy.net.io.size = 0; }},
      {"null inputs", 0x1712, 0, [](Toy& toy) { toy.inputs = nullptr; }},
      {"no inputs", 0x1712, 0, [](Toy& toy) { toy.lists[0].size = 0; }},
      {"null input tensors", 0x1712, 0, [](Toy& toy) { toy.lists[0].tensors = nullptr; }},
      {"null input info", 0x1712, 0, [](Toy& toy) { toy.lists[0].info = nullptr; }},
      {"null input cursors", 0x1712, 0, [](Toy& toy) { toy.infos[0]->cursors = nullptr; }},
  };
  for (int k = 0; k < 4; ++k) {
    if (k == 2) {
      faults.push_back({"null outputs", 0, k, [](Toy& toy) { toy.outputs = nullptr; }});
      faults.push_back({"no output list", 0x1813, k, [](Toy& toy) { toy.net.io.size = 1; }});
      faults.push_back({"no outputs", 0x1813, k, [](Toy& toy) { toy.lists[1].size = 0; }});
      faults.push_back(
          {"null cursors", 0x1713, k, [](Toy& toy) { toy.infos[1]->cursors = nullptr; }});
    }
    const auto add = [&](const char* name, uint32_t code, void (*provoke)(Toy&, int)) {
      faults.push_back({name, code << 8 | (k < 2 ? 0x12u : 0x13u), k,
                        [provoke, k](Toy& toy) { provoke(toy, k); }});
    };
    const auto add_of_array = [&](const char* name, uint32_t code, void (*provoke)(Toy&, int)) {
      if (!memory_missing) add(name, code, provoke);
    };
    // Each of the sizes passes all tests of sizes but its own.
    add_of_array("few elements", 0x18, [](Toy& toy, int i) {
      --toy.tensors[i]->array.size;
      toy.tensors[i]->stride.data[AI_SHAPE_H] = 0;
    });
    add("height", 0x18, [](Toy& toy, int i) { --toy.buffers[i].height; });
    add("width", 0x18, [](Toy& toy, int i) { --toy.buffers[i].width; });
    add("channels", 0x18, [](Toy& toy, int i) { --toy.buffers[i].channels; });
    add_of_array("large batch", 0x18,
                 [](Toy& toy, int i) { ++toy.tensors[i]->stride.data[AI_SHAPE_H]; });
    add_of_array("format", 0x19,
                 [](Toy& toy, int i) { toy.buffers[i].format = AI_BUFFER_FORMAT_Q15; });
    add("null data", 0x17, [](Toy& toy, int i) { toy.buffers[i].data = nullptr; });
    add("no batches", 0x21, [](Toy& toy, int i) { toy.buffers[i].n_batches = 0; });
  }
  for (int k = 0; k < 4 && memory_missing; ++k) {
    const ai_error error = k < 2 ? 0x1712 : 0x1713;
    faults.push_back({"no array", error, 4, [k](Toy& toy) { remove_array(toy, k); }});
    if (k % 2 == 0) continue;
    faults.push_back(
        {"nothing to copy", error, 4, [k](Toy& toy) { toy.tensors[k]->array.data = nullptr; }});
  }
  return faults;
}

TEST(Process, FirstFailedCheckIsReportedAndNothingElseChanges) {
  for (const bool memory_missing : {false, true}) {
    expect_refused(process_faults(memory_missing), [](Toy& toy, ai_error) {
      EXPECT_EQ(toy.process(), 0);
      EXPECT_EQ(toy.net.batch_count + toy.net.batch_index, 0);  // cleared first
      toy.net.batch_count = 7;
      toy.net.batch_index = 9;
    });
  }
}

TEST(Process, InvalidHandleIsLeftAlone) {
  Toy toy;
  toy.net.magic ^= 1;
  const std::string before = bytes<ai_network>(toy.net);
  EXPECT_EQ(toy.process(), 0);
  EXPECT_EQ(ai_platform_network_process(nullptr, toy.inputs, toy.outputs), 0);
  EXPECT_EQ(ai_platform_network_init(&toy.net, nullptr), nullptr);
  EXPECT_FALSE(ai_platform_api_get_network_report(&toy.net, nullptr));
  EXPECT_EQ(ai_platform_network_destroy(&toy.net), &toy.net);
  EXPECT_EQ(ai_platform_network_get_error(&toy.net), 0x1010u);
  EXPECT_EQ(bytes<ai_network>(toy.net), before);
}

// Twice, since the second call starts with arrays that the first one bound. The layers end at null,
// then at a layer that points to itself.
TEST(Process, RunsBatchesOfEachBufferRoundAndRound) {
  Toy toy;
  for (int call = 1; call <= 2; ++call) {
    Toy::Memory expected;
    std::memcpy(&expected, &toy.memory, sizeof(expected));
    Toy::model(toy.buffers, expected.y, expected.z);
    // What the copied arrays held last.
    std::memcpy(expected.home_b + 1, expected.b + 2 * 8, 8);
    std::memcpy(expected.home_z, expected.z + 1 * 6, sizeof(expected.home_z));
    toy.second.next = call == 1 ? nullptr : &toy.second;
    toy.net.error = 0x1712;
    EXPECT_EQ(toy.process(), 6);
    EXPECT_EQ(toy.runs, call * 12);
    EXPECT_EQ(toy.misled, 0);
    EXPECT_EQ(bytes(toy.memory), bytes(expected));
    EXPECT_EQ(toy.net.current_layer, nullptr);
    EXPECT_EQ(toy.net.error, 0x1712u);  // an older error stops nothing and stays
    // Inputs stay at their last batch, outputs move on to the next.
    EXPECT_EQ(toy.a.array.data, toy.memory.a + 6 + 1);
    EXPECT_EQ(toy.a.array.data_start, toy.memory.a + 6);
    EXPECT_EQ(toy.y.array.data, toy.memory.y + 2);
    const ai_buffer_cursor& z = toy.infos[1]->cursors[1];
    EXPECT_EQ(z.cursor, toy.memory.z + 2 * 6);
    EXPECT_EQ(z.end, toy.memory.z + 4 * 6);
    EXPECT_EQ(z.batch_bytes, 12u);
    EXPECT_EQ(z.total_bytes, 48u);
  }
}

TEST(Process, RunsAsManyBatchesAsABufferCanName) {
  Toy toy;
  std::vector<int8_t> b(65535 * 8);
  std::iota(b.begin(), b.end(), int8_t{0});
  std::vector<int16_t> z(60000 * 6), expected(60000 * 6);
  toy.buffers[1].n_batches = 65535;
  toy.buffers[1].data = b.data();
  toy.buffers[3].n_batches = 60000;
  toy.buffers[3].data = z.data();
  EXPECT_EQ(toy.process(), 65535);
  Toy::model(toy.buffers, toy.memory.y, expected.data());
  EXPECT_TRUE(z == expected);
}

TEST(Create, FirstFailureIsReturnedAndHandleCleared) {
  const struct {
    bool core_starts, types_match;
    uint8_t major, minor, micro;
    ai_error error;
  } calls[] = {
      {true, true, 1, 3, 0, 0},        {true, true, 1, 2, 255, 0},
      {true, true, 0, 255, 255, 0},    {true, true, 1, 4, 0, 0x1001},
      {true, true, 255, 0, 0, 0x1001}, {true, true, 1, 3, 1, 0x1001},
      {true, false, 1, 3, 0, 0x1002},  {true, false, 2, 0, 0, 0x1001},
      {false, false, 2, 0, 0, 0x1030},
  };
  for (const auto& c : calls) {
    g_core_starts = c.core_starts;
    g_types_match = c.types_match;
    ai_network network = {}, expected = {};
    expected.magic = AI_NETWORK_MAGIC;
    ai_handle handle = &expected;
    EXPECT_EQ(ai_platform_network_create(&handle, nullptr, &network, c.major, c.minor, c.micro),
              c.error);
    EXPECT_EQ(handle, c.error == 0 ? &network : nullptr);
    EXPECT_EQ(bytes(network), bytes(expected));
  }
  g_core_starts = g_types_match = true;
  EXPECT_EQ(ai_platform_network_create(nullptr, nullptr, nullptr, 1, 3, 0), 0x1010u);
}

TEST(Init, FirstFailedCheckIsReportedAndNothingElseChanges) {
  static ai_network_params params;
  const auto empty = [](ai_buffer& buffer, uint16_t height, uint16_t width, uint32_t channels) {
    buffer = {AI_BUFFER_FORMAT_U8, 1, height, width, channels, nullptr, nullptr};
  };
  const std::vector<Fault> faults = {
      {"no activations", 0x1310, 0, [&](Toy&) { empty(params.activations, 1, 2, 3); }},
      {"2^32 activations", 0x1310, 0, [&](Toy&) { empty(params.activations, 2, 1, 1u << 31); }},
      {"no weights", 0x1210, 0, [&](Toy&) { empty(params.params, 65535, 65535, ~0u); }},
  };
  expect_refused(faults, [](Toy& toy, ai_error) {
    EXPECT_EQ(ai_platform_network_init(&toy.net, &params), nullptr);
    params = {};
  });
  Toy toy;
  EXPECT_EQ(ai_platform_network_init(&toy.net, nullptr), nullptr);
  EXPECT_EQ(ai_platform_network_get_error(&toy.net), 0x1110u);
  // What is empty needs no data.
  empty(params.params, 1, 0, 3);
  empty(params.activations, 4, 5, 0);
  toy.net.flags = 0xF1;
  toy.second.network = nullptr;
  toy.second.next = &toy.second;
  EXPECT_EQ(ai_platform_network_init(&toy.net, &params), &toy.net);
  EXPECT_EQ(toy.net.flags, 0xF3u);
  EXPECT_EQ(toy.net.params.channels, 3u);
  EXPECT_EQ(toy.net.activations.height, 4u);
  EXPECT_EQ(toy.second.network, &toy.net);
}

ai_network_report filled_report() {
  ai_network_report report;
  std::memset(&report, 0x5A, sizeof(report));
  return report;
}

TEST(Report, FirstFailedCheckIsReportedAndNothingElseChanges) {
  const std::vector<Fault> faults = {
      {"no layers", 0x1811, 0, [](Toy& toy) { toy.net.layers = nullptr; }},
      {"no lists", 0x1812, 0, [](Toy& toy) { toy.net.io.size = 0; }},
      {"no inputs", 0x1812, 0, [](Toy& toy) { toy.lists[0].size = 0; }},
      {"no output list", 0x1813, 0, [](Toy& toy) { toy.net.io.size = 1; }},
      {"no outputs", 0x1813, 0, [](Toy& toy) { toy.lists[1].size = 0; }},
      {"input without array", 0x1712, 0, [](Toy& toy) { remove_array(toy, 1); }},
      {"output without array", 0x1713, 0, [](Toy& toy) { remove_array(toy, 2); }},
  };
  expect_refused(faults, [](Toy& toy, ai_error error) {
    ai_network_report report = filled_report();
    ai_network_report expected = filled_report();
    expected.n_nodes = error == 0x1811 ? 0 : 2;
    if (ai_error_type(error) == 0x12) expected.n_inputs = 0;
    if (ai_error_type(error) == 0x13) expected.n_outputs = 0;
    EXPECT_FALSE(ai_platform_api_get_network_report(&toy.net, &report));
    EXPECT_EQ(bytes(report), bytes(expected));
  });
}

TEST(Report, LeavesEmptyQuantizationAndTheFieldsOfOthers) {
  Toy toy;
  ai_network_report report = filled_report();
  const ai_network_report untouched = filled_report();
  ASSERT_TRUE(ai_platform_api_get_network_report(&toy.net, &report));
  EXPECT_EQ(report.inputs[1].meta_info->intq_info, &toy.scales);
  EXPECT_EQ(report.inputs[1].meta_info->flags, 1u);
  EXPECT_EQ(report.outputs[0].meta_info, nullptr);  // its record of scales is empty
  EXPECT_EQ(toy.infos[1]->meta_infos[0].flags, 0u);
  EXPECT_EQ(bytes(report.runtime_version), std::string("\4\1\0\0", 4));
  EXPECT_EQ(bytes(report.api_version), std::string("\1\1\0\0", 4));
  EXPECT_EQ(bytes(report.interface_api_version), std::string("\1\3\0\0", 4));
  EXPECT_EQ(std::memcmp(&report, &untouched, offsetof(ai_network_report, runtime_revision)), 0);
  EXPECT_EQ(report.tool_revision, untouched.tool_revision);
  EXPECT_EQ(bytes(report.tool_version), bytes(untouched.tool_version));
  EXPECT_EQ(bytes(report.tool_api_version), bytes(untouched.tool_api_version));
}

TEST(Errors, FirstOneSticksUntilRead) {
  Toy toy;
  EXPECT_TRUE(ai_platform_network_set_error(&toy.net, 0, 5));  // type 0 is no error yet
  EXPECT_EQ(ai_platform_network_init(&toy.net, nullptr), nullptr);
  toy.outputs = toy.buffers;  // a's geometry is not y's
  EXPECT_EQ(toy.process(), 0);
  EXPECT_FALSE(ai_platform_network_set_error(&toy.net, 1, 2));
  EXPECT_EQ(ai_platform_network_get_error(&toy.net), 0x1110u);
  EXPECT_EQ(ai_platform_network_get_error(&toy.net), 0u);
  toy.net.magic = 0;
  EXPECT_TRUE(ai_platform_network_set_error(&toy.net, 0x30, 0xFFFFFF));  // any record but null
  EXPECT_EQ(toy.net.error, 0xFFFFFF30u);
  EXPECT_FALSE(ai_platform_network_set_error(nullptr, 1, 2));
}

}  // namespace
