// SPDX-License-Identifier: MIT
// What a network is run on.
#ifndef NNLIB_IMPORTER_MAIN_INPUTS_HPP
#define NNLIB_IMPORTER_MAIN_INPUTS_HPP

#include "importer/graph/graph.hpp"

namespace nnlib::importer {

// The bytes of every input, for one run after the other.
using InputSets = std::vector<std::vector<Bytes>>;

// From a file for each input of the graph, .npy or raw elements, which an option names. Throws
// CLI::ValidationError for another number of files, std::runtime_error for files that do not fit.
InputSets read_inputs(const Graph& graph, const std::vector<std::string>& files,
                      const char* option);

// One run: bytes of all values, floats between -1 and 1.
InputSets noise(const Graph& graph);

}  // namespace nnlib::importer

#endif
