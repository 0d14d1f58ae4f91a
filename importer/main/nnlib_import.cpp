// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>
#include <iterator>

#include "importer/graph/refusals.hpp"
#include "importer/graph/text.hpp"
#include "importer/main/import_model.hpp"

using namespace nnlib::importer;

namespace {

Bytes read_file(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw std::runtime_error("cannot read " + path);
  }
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

}  // namespace

int main(int argc, char** argv) {
  const Bytes model = read_file(argv[1]);
  ImportOptions options;
  try {
    Graph g = prepare(read_model(model, options), options);
    if (argc == 2) std::cout << print_graph(g, 8);
    Imported imported = build(g, options);
    std::cout << "arena " << imported.memory.plan.bytes << " bound " << imported.memory.plan.bound
              << " with scratch " << imported.memory.plan.bound_with_scratch << "\n";
    if (argc > 3) {
      Runner runner(*imported.network, imported.memory);
      auto out = runner.run({read_file(argv[2])});
      std::ofstream(argv[3], std::ios::binary).write((const char*)out[0].data(), out[0].size());
    }
  } catch (const Refused& e) {
    std::cerr << e.what() << "\n";
    return 1;
  }
}
