// SPDX-License-Identifier: MIT
// Why a model cannot be taken: all reasons, not the first one.
#ifndef NNLIB_IMPORTER_GRAPH_REFUSALS_HPP
#define NNLIB_IMPORTER_GRAPH_REFUSALS_HPP

#include <stdexcept>
#include <string>
#include <vector>

#include "importer/graph/graph.hpp"

namespace nnlib::importer {

struct Refusal {
  std::string node;     // name in the model; empty when the whole file is meant
  std::string op;       // the model's word for the operator
  std::string reason;   // "mode cubic is not available"
  std::string way_out;  // "nearest and linear are"; may be empty
};

class Refusals {
 public:
  void add(const Node& node, std::string reason, std::string way_out = {}) {
    all_.push_back({node.name, node.origin, std::move(reason), std::move(way_out)});
  }
  void add(Refusal refusal) { all_.push_back(std::move(refusal)); }

  bool empty() const { return all_.empty(); }
  const std::vector<Refusal>& all() const { return all_; }
  // A line each: Resize 'up3': mode cubic is not available; nearest and linear are
  std::string message() const;

 private:
  std::vector<Refusal> all_;
};

// Ends an import; what() is the message of the refusals.
class Refused : public std::runtime_error {
 public:
  explicit Refused(const Refusals& refusals) : std::runtime_error(refusals.message()) {}
  // The file as a whole.
  explicit Refused(const std::string& reason) : std::runtime_error(reason) {}
};

}  // namespace nnlib::importer

#endif
