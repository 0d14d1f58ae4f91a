// SPDX-License-Identifier: MIT
// A network as files: C source and the report beside it.
#ifndef NNLIB_IMPORTER_MAIN_CONVERT_HPP
#define NNLIB_IMPORTER_MAIN_CONVERT_HPP

#include "importer/emit/c_source.hpp"
#include "importer/main/command.hpp"

namespace nnlib::importer {

// What is written, and where.
struct SourceArguments {
  std::string folder = ".";
  std::string name;  // empty: the model's
  std::string section;
  std::string weights = "inside";
  std::string arena = "inside";
};

void add_source_options(CLI::App& command, SourceArguments& arguments);

// Writes name.c, name.h and name_report.{txt,json,html}, and says what the arena takes.
void write_network(const Imported& imported, const ModelArguments& model,
                   const SourceArguments& arguments, Progress& progress);

}  // namespace nnlib::importer

#endif
