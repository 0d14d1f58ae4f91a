// SPDX-License-Identifier: MIT
#include "importer/main/progress.hpp"

#include <unistd.h>

#include <cstdio>

namespace nnlib::importer {

Progress::Progress() : on_(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
  clear();
}

void Progress::say(const std::string& what) {
  if (on_ && what != shown_) {
    std::fprintf(stderr, "\r\033[K%s", what.c_str());
    shown_ = what;
  }
}

void Progress::say(const std::string& what, size_t done, size_t all) {
  say(what + " " + std::to_string(all == 0 ? 100 : 100 * done / all) + " %");
}

void Progress::clear() {
  if (!shown_.empty()) {
    std::fputs("\r\033[K", stderr);
    shown_.clear();
  }
}

}  // namespace nnlib::importer
