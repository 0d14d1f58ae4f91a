// SPDX-License-Identifier: MIT
// Runs a command and keeps its console output and its exit status.
#ifndef TEST_UNIT_RUN_PROGRAM_HPP
#define TEST_UNIT_RUN_PROGRAM_HPP

#include <stdio.h>
#include <sys/wait.h>

#include <string>

struct Outcome {
  std::string output;
  int status;
};

inline Outcome run_program(const std::string& command) {
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return {"no program", -1};
  Outcome outcome;
  for (int c = fgetc(pipe); c != EOF; c = fgetc(pipe)) outcome.output += static_cast<char>(c);
  const int ended = pclose(pipe);
  outcome.status = WIFEXITED(ended) ? WEXITSTATUS(ended) : -1;
  return outcome;
}

#endif
