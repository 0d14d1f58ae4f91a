// SPDX-License-Identifier: MIT
// Findings on their way to the caller.
#ifndef NNLIB_CHECK_REPORT_HPP
#define NNLIB_CHECK_REPORT_HPP

#include "check/ai_network_check.h"
#include "check/text.hpp"

namespace nnlib {

// Where the findings that follow belong.
struct Place {
  uint32_t layer = AI_CHECK_NO_LAYER;
  uint32_t inner = AI_CHECK_NO_LAYER;  // the place inside a time-distributed layer, if any
  const char* function = "";
};

class Report {
 public:
  Report(ai_check_report function, void* context) : function_(function), context_(context) {}
  Report(const Report&) = delete;
  Report& operator=(const Report&) = delete;

  uint32_t count() const { return count_; }
  const Place& place() const { return place_; }
  void enter(const Place& place) { place_ = place; }

  Text& begin();
  void end();

 private:
  ai_check_report function_;
  void* context_;
  uint32_t count_ = 0;
  Place place_;
  Text text_;
  size_t sentence_ = 0;
};

// One finding, written with << and reported at the end of the statement.
class Finding {
 public:
  explicit Finding(Report& report) : report_(report), text_(report.begin()) {}
  ~Finding() { report_.end(); }
  Finding(const Finding&) = delete;
  Finding& operator=(const Finding&) = delete;

  template <class Part>
  Finding& operator<<(const Part& part) {
    text_ << part;
    return *this;
  }

 private:
  Report& report_;
  Text& text_;
};

}  // namespace nnlib

#endif
