// SPDX-License-Identifier: MIT
#include "check/report.hpp"

namespace nnlib {

Text& Report::begin() {
  text_.clear();
  if (place_.layer == AI_CHECK_NO_LAYER) {
    text_ << "network: ";
  } else {
    text_ << "layer " << place_.layer;
    if (place_.inner != AI_CHECK_NO_LAYER) {
      text_ << ", inner layer " << place_.inner;
    }
    if (*place_.function != '\0') {
      text_ << ", " << place_.function;
    }
    text_ << ": ";
  }
  sentence_ = text_.length();
  return text_;
}

void Report::end() {
  ++count_;
  if (function_ != nullptr) {
    const ai_check_finding finding = {place_.layer, place_.function, text_.c_str() + sentence_,
                                      text_.c_str()};
    function_(&finding, context_);
  }
}

}  // namespace nnlib
