// SPDX-License-Identifier: MIT
// The command line. Exit status: 0, 1 for a model that is refused, 2 for wrong use.
#include <algorithm>
#include <iostream>

#include "importer/graph/refusals.hpp"
#include "importer/main/command.hpp"

using namespace nnlib::importer;

namespace {

constexpr void (*kCommands[])(CLI::App&) = {add_convert, add_quantize, add_report,
                                            add_check,   add_run,      add_print};

bool is_command(const CLI::App& app, const std::string& word) {
  const auto commands = app.get_subcommands([](const CLI::App*) { return true; });
  return word == "-h" || word == "--help" ||
         std::any_of(commands.begin(), commands.end(),
                     [&](const CLI::App* command) { return command->get_name() == word; });
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("From a trained model to C source on nnlib", "nnlib-import");
  for (const auto add : kCommands) {
    add(app);
  }
  app.require_subcommand(1);
  std::vector<std::string> arguments(argv + 1, argv + argc);
  if (!arguments.empty() && !is_command(app, arguments[0])) {
    arguments.insert(arguments.begin(), "convert");
  }
  std::reverse(arguments.begin(), arguments.end());
  try {
    app.parse(std::move(arguments));
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  } catch (const Refused& refused) {
    std::cerr << refused.what() << "\n";
    return 1;
  } catch (const std::exception& fault) {
    std::cerr << fault.what() << "\n";
    return 2;
  }
  return 0;
}
