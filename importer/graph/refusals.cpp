// SPDX-License-Identifier: MIT
#include "importer/graph/refusals.hpp"

namespace nnlib::importer {

std::string Refusals::message() const {
  std::string lines;
  for (const Refusal& refusal : all_) {
    if (!lines.empty()) {
      lines += '\n';
    }
    lines += refusal.op;
    if (!refusal.node.empty()) {
      lines += " '" + refusal.node + "'";
    }
    if (!refusal.op.empty() || !refusal.node.empty()) {
      lines += ": ";
    }
    lines += refusal.reason;
    if (!refusal.way_out.empty()) {
      lines += "; " + refusal.way_out;
    }
  }
  return lines;
}

}  // namespace nnlib::importer
