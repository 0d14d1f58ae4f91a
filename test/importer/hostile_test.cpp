// SPDX-License-Identifier: MIT
// The importer's own models, cut off at every byte and with bytes changed: a network or a refusal.
#include <gtest/gtest.h>

#include <sys/resource.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "importer/graph/refusals.hpp"
#include "importer/main/import_model.hpp"

// There when the importer is built with AddressSanitizer, which keeps what is freed for a while.
extern "C" __attribute__((weak)) void __asan_init();

namespace nnlib::importer {
namespace {

std::vector<Bytes> models() {
  std::vector<Bytes> files;
  for (const auto& entry : std::filesystem::directory_iterator(NNLIB_TEST_MODELS)) {
    if (entry.path().extension() == ".onnx" || entry.path().extension() == ".tflite") {
      std::ifstream file(entry.path(), std::ios::binary);
      files.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
  }
  return files;
}

bool taken(std::span<const uint8_t> file) {
  try {
    import_model(file, {});
    return true;
  } catch (const Refused&) {
    return false;
  }
}

TEST(Hostile, EveryModelIsTakenAndCutOffNowhere) {
  size_t count = 0;
  for (const Bytes& file : models()) {
    ++count;
    EXPECT_TRUE(taken(file));
    // Of large files, at some.
    const size_t step = file.size() < 5000 ? 1 : 37;
    for (size_t size = file.size() - 1; size >= step; size -= step) {
      // A copy: what is read behind the end is found.
      EXPECT_FALSE(taken(Bytes(file.begin(), file.begin() + static_cast<ptrdiff_t>(size)))) << size;
    }
  }
  EXPECT_GE(count, 20u);
}

TEST(Hostile, ChangedBytesCostNoMemoryAndNoTime) {
  uint32_t random = 7;
  const auto next = [&random](size_t n) {
    random = random * 1664525u + 1013904223u;
    return static_cast<size_t>((uint64_t{random} * n) >> 32);
  };
  for (const Bytes& file : models()) {
    for (int i = 0; i < 25; ++i) {
      Bytes changed = file;
      changed[next(file.size())] ^= static_cast<uint8_t>(1u << next(8));
      changed[next(std::min<size_t>(file.size(), 600))] = static_cast<uint8_t>(next(256));
      taken(changed);
    }
  }
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  EXPECT_TRUE(__asan_init != nullptr || usage.ru_maxrss < 512 * 1024) << usage.ru_maxrss << " KiB";
}

}  // namespace
}  // namespace nnlib::importer
