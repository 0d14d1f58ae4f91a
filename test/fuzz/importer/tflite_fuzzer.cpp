// SPDX-License-Identifier: MIT
// A TFLite file with bytes changed: refused, or a network that runs. The input's first byte chooses
// the file; then comes a list of changes, three bytes each: the place, and what its byte becomes.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "importer/graph/refusals.hpp"
#include "importer/main/import_model.hpp"
#include "test/importer/tflite_model.hpp"

namespace {

using namespace nnlib::importer;

// Convolution with relu, max pooling, reshape, dense, softmax, in int8.
Bytes model_file() {
  static constexpr int8_t kernel[2 * 3 * 3] = {1, -2, 3, 4, -5, 6, 7, 8, -9, 2, -3, 5, 1, 1, 4, 6};
  static constexpr int8_t dense[3 * 8] = {9, -8, 7, -6, 5, -4, 3, -2, 1, 2, -3, 4, 5};
  TfliteModel m;
  const int in = m.input<int8_t>({1, 5, 5, 1}, {0.5f}, {-3});
  const int map = m.tensor<int8_t>({1, 5, 5, 2}, {0.25f}, {-128});
  const int pooled = m.tensor<int8_t>({1, 2, 2, 2}, {0.25f}, {-128});
  const int flat = m.tensor<int8_t>({1, 8}, {0.25f}, {-128});
  const int scores = m.tensor<int8_t>({1, 3}, {0.75f}, {4});
  tfl::Conv2DT conv;
  conv.stride_w = conv.stride_h = conv.activation = 1;
  m.add(3, {in, m.constant<int8_t>({2, 3, 3, 1}, kernel, {0.5f, 0.25f}), m.integers({7, -9})},
        {map}, tfl::Options_Conv2D, conv);
  tfl::Pool2DT pool;
  pool.padding = 1;
  pool.stride_w = pool.stride_h = pool.filter_width = pool.filter_height = 2;
  m.add(17, {map}, {pooled}, tfl::Options_Pool2D, pool);
  m.add(22, {pooled, m.integers({1, 8})}, {flat});
  m.add(9, {flat, m.constant<int8_t>({3, 8}, dense, {0.125f}), m.integers({1, 2, -3})}, {scores},
        tfl::Options_FullyConnected, tfl::FullyConnectedT{});
  tfl::SoftmaxT softmax;
  softmax.beta = 1;
  m.add(25, {scores}, {m.output<int8_t>({1, 3}, {1.0f / 256}, {-128})}, tfl::Options_Softmax,
        softmax);
  return m.bytes();
}

// The file above and the importer's own models.
std::vector<Bytes> originals() {
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::directory_iterator(NNLIB_TEST_MODELS)) {
    if (entry.path().extension() == ".tflite") {
      paths.push_back(entry.path());
    }
  }
  std::sort(paths.begin(), paths.end());
  std::vector<Bytes> files = {model_file()};
  for (const auto& path : paths) {
    std::ifstream file(path, std::ios::binary);
    files.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  return files;
}

void run(Imported& imported) {
  // A network of millions of multiplications says nothing that a small one does not.
  uint64_t macs = 0;
  for (const Layer& layer : imported.network->layers) {
    macs += layer.macs;
  }
  if (imported.memory.plan.bytes > 1000000 || macs > 1000000) {
    return;
  }
  std::vector<Bytes> inputs;
  for (const Port& port : imported.network->inputs) {
    inputs.emplace_back(port_bytes(port));
  }
  Runner(*imported.network, imported.memory).run(inputs);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::vector<Bytes> files = originals();
  Bytes file = files[size == 0 ? 0 : data[0] % files.size()];
  for (size_t at = 1; at + 3 <= size; at += 3) {
    file[(data[at] | size_t{data[at + 1]} << 8) % file.size()] = data[at + 2];
  }
  try {
    Imported imported = import_model(file, {});
    run(imported);
  } catch (const Refused&) {
    if (size < 4) {
      __builtin_trap();  // the file as it is must be taken
    }
  }
  return 0;
}
