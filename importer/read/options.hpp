// SPDX-License-Identifier: MIT
// What a user says about a model beyond its file.
#ifndef NNLIB_IMPORTER_READ_OPTIONS_HPP
#define NNLIB_IMPORTER_READ_OPTIONS_HPP

#include <functional>
#include <map>
#include <string>

#include "importer/graph/graph.hpp"

namespace nnlib::importer {

struct ReadOptions {
  // Inputs that are really constants.
  std::map<std::string, Value, std::less<>> freeze;
  // Sizes of open dimensions, by the model's name for them.
  std::map<std::string, int64_t, std::less<>> input_dims;
};

}  // namespace nnlib::importer

#endif
