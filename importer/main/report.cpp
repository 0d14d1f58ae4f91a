// SPDX-License-Identifier: MIT
// nnlib-import report: what the network takes and does.
#include "importer/report/report.hpp"

#include <iostream>

#include "importer/main/command.hpp"

namespace nnlib::importer {
namespace {

struct ReportArguments {
  ModelArguments model;
  std::string profile;
  std::string output;
  std::string format;
};

// "html" for a file of that name.
std::string format_of(const ReportArguments& a) {
  if (!a.format.empty()) {
    return a.format;
  }
  const std::string ending = std::filesystem::path(a.output).extension().string();
  return ending == ".json" || ending == ".html" ? ending.substr(1) : "text";
}

void report(ReportArguments& a) {
  settle(a.model);
  Progress progress;
  const Imported imported = import_model(a.model, progress);
  Report result = make_report(*imported.network, imported.memory, name_of(a.model));
  if (!a.profile.empty()) {
    const Bytes json = read_file(a.profile);
    add_profile(result, std::string(json.begin(), json.end()));
  }
  const std::string format = format_of(a);
  const std::string text = format == "json"   ? report_json(result)
                           : format == "html" ? report_html(result)
                                              : report_text(result);
  progress.clear();
  if (a.output.empty()) {
    std::cout << text;
  } else {
    write_file(a.output, text);
  }
}

}  // namespace

void add_report(CLI::App& app) {
  CLI::App* command = app.add_subcommand("report", "print what the network takes and does");
  const auto a = std::make_shared<ReportArguments>();
  add_model_options(*command, a->model);
  command->add_option("-o,--output", a->output, "file instead of standard output");
  command->add_option("--format", a->format, "text unless the file's name ends otherwise")
      ->check(CLI::IsMember({"text", "json", "html"}));
  command
      ->add_option("--profile", a->profile,
                   "measured times: what ai_profile_print_json has printed")
      ->check(CLI::ExistingFile);
  command->callback([a] { report(*a); });
}

}  // namespace nnlib::importer
