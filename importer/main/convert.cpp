// SPDX-License-Identifier: MIT
#include "importer/main/convert.hpp"

#include <iostream>

#include "importer/report/report.hpp"

namespace nnlib::importer {

void add_source_options(CLI::App& command, SourceArguments& a) {
  command.add_option("-o,--output", a.folder, "folder");
  command.add_option("--name", a.name, "of files and functions");
  command.add_option("--section", a.section, "of the arena");
  command.add_option("--weights", a.weights, "in a file of their own or not")
      ->check(CLI::IsMember({"inside", "separate"}));
  command.add_option("--arena", a.arena, "in the source or given to the init function")
      ->check(CLI::IsMember({"inside", "caller"}));
}

void write_network(const Imported& imported, const ModelArguments& model, const SourceArguments& a,
                   Progress& progress) {
  progress.say("writing " + a.folder);
  SourceOptions options;
  options.name = a.name.empty() ? name_of(model) : c_identifier(a.name);
  options.section = a.section;
  options.separate_weights = a.weights == "separate";
  options.arena_from_caller = a.arena == "caller";
  const std::filesystem::path folder = a.folder;
  std::filesystem::create_directories(folder);
  for (const SourceFile& file : emit_c(*imported.network, imported.memory, options)) {
    write_file(folder / file.name, file.text);
  }
  const Report report = make_report(*imported.network, imported.memory, options.name);
  write_file(folder / (options.name + "_report.txt"), report_text(report));
  write_file(folder / (options.name + "_report.json"), report_json(report));
  write_file(folder / (options.name + "_report.html"), report_html(report));
  progress.clear();
  std::cout << options.name << ": arena " << report.arena_bytes << " bytes, activations at least "
            << report.bound << ", with scratch " << report.bound_with_scratch;
  if (report.heap_bytes != 0) {
    std::cout << "; heap " << report.heap_bytes;
  }
  std::cout << "\n";
}

void add_convert(CLI::App& app) {
  struct Arguments {
    ModelArguments model;
    SourceArguments source;
  };
  CLI::App* command = app.add_subcommand("convert", "write C source and a report (the default)");
  const auto a = std::make_shared<Arguments>();
  add_model_options(*command, a->model);
  add_source_options(*command, a->source);
  command->callback([a] {
    settle(a->model);
    Progress progress;
    const Imported imported = import_model(a->model, progress);
    write_network(imported, a->model, a->source, progress);
  });
}

}  // namespace nnlib::importer
