// SPDX-License-Identifier: MIT
// What the commands have in common: the model and how it is read, files, progress.
#ifndef NNLIB_IMPORTER_MAIN_COMMAND_HPP
#define NNLIB_IMPORTER_MAIN_COMMAND_HPP

#include <CLI/CLI.hpp>
#include <filesystem>

#include "importer/main/import_model.hpp"
#include "importer/main/progress.hpp"

namespace nnlib::importer {

// The model and its options, as the command line has them.
struct ModelArguments {
  std::string path;
  ImportOptions options;
  std::string io = "nhwc";
  std::string io_type = "model";
  std::vector<std::string> freeze;
  std::vector<std::string> input_dims;
};

void add_model_options(CLI::App& command, ModelArguments& arguments);

// Puts the words of the command line into the options. Throws CLI::ValidationError.
void settle(ModelArguments& arguments);

// The name for files and functions.
std::string name_of(const ModelArguments& arguments);

// The graph ready to be lowered. Throws Refused.
Graph prepared_graph(const ModelArguments& arguments, Progress& progress);
Imported import_model(const ModelArguments& arguments, Progress& progress);

// Throw std::runtime_error with the file's name.
Bytes read_file(const std::string& path);
void write_file(const std::filesystem::path& path, std::string_view bytes);

// The commands. What they do runs when the command line is parsed.
void add_convert(CLI::App& app);
void add_check(CLI::App& app);
void add_report(CLI::App& app);
void add_run(CLI::App& app);
void add_print(CLI::App& app);
void add_quantize(CLI::App& app);

}  // namespace nnlib::importer

#endif
