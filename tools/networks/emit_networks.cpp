// SPDX-License-Identifier: MIT
// emit_networks FOLDER: the networks of architectures.hpp as C, as nnlib-import writes them. Prints
// a line for each: name, bytes of its arena, of activations that live at once, the same with
// scratch.
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "importer/emit/c_source.hpp"
#include "importer/main/import_model.hpp"
#include "tools/networks/architectures.hpp"

int main(int argc, char** argv) {
  using namespace nnlib::importer;
  if (argc != 2) {
    return 1;
  }
  const std::filesystem::path folder = argv[1];
  std::filesystem::create_directories(folder);
  for (Architecture& known : architectures()) {
    ImportOptions options;
    const Imported imported = build(prepare(std::move(known.graph), options), options);
    SourceOptions source;
    source.name = "network";
    std::filesystem::create_directories(folder / known.name);
    for (const SourceFile& file : emit_c(*imported.network, imported.memory, source)) {
      std::ofstream(folder / known.name / file.name, std::ios::binary) << file.text;
    }
    const Plan& plan = imported.memory.plan;
    std::printf("%s;%u;%u;%u\n", known.name.c_str(), static_cast<unsigned>(plan.bytes),
                static_cast<unsigned>(plan.bound), static_cast<unsigned>(plan.bound_with_scratch));
  }
  return 0;
}
