// SPDX-License-Identifier: MIT
// Which values can be made where a concatenation needs them.
#ifndef NNLIB_IMPORTER_LOWER_PARTS_HPP
#define NNLIB_IMPORTER_LOWER_PARTS_HPP

#include <map>
#include <optional>

#include "importer/graph/graph.hpp"

namespace nnlib::importer {

// Values that share the memory of others. Offsets are multiples of the alignment.
struct Sharing {
  bool concatenations = false;  // inputs are made in place
  bool slices = false;          // runs of elements stay in place
  uint32_t alignment = 4;
};

// A place inside of another value's.
struct Part {
  ValueId whole;
  uint64_t offset;  // bytes
};

// The inputs of concatenations along their outermost dimension that a node can write straight into
// the output. A value that goes into several is a part of one.
std::map<ValueId, Part> parts_of_concatenations(const Graph& graph, const Sharing& sharing);

// Where the slice lies in its input, in bytes, if it is one run of elements.
std::optional<uint64_t> run_of_slice(const Graph& graph, const Node& node);

}  // namespace nnlib::importer

#endif
