// SPDX-License-Identifier: MIT
// A line on a terminal that says what is being done, gone when it is done.
#ifndef NNLIB_IMPORTER_MAIN_PROGRESS_HPP
#define NNLIB_IMPORTER_MAIN_PROGRESS_HPP

#include <string>

namespace nnlib::importer {

// Writes to standard error, and only where that is a terminal.
class Progress {
 public:
  Progress();
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void say(const std::string& what);
  // `done` of `all`.
  void say(const std::string& what, size_t done, size_t all);
  void clear();

 private:
  bool on_;
  std::string shown_;
};

}  // namespace nnlib::importer

#endif
