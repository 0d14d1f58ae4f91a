// SPDX-License-Identifier: MIT
#include "importer/graph/operators.hpp"

#include <algorithm>
#include <iterator>

namespace nnlib::importer {
namespace {

constexpr std::string_view kNames[] = {
#define NNLIB_IMPORTER_NAME_(name) #name,
    NNLIB_IMPORTER_OPERATORS(NNLIB_IMPORTER_NAME_)
#undef NNLIB_IMPORTER_NAME_
};

}  // namespace

std::string_view op_name(Op op) {
  return kNames[static_cast<size_t>(op)];
}

std::optional<Op> op_of_name(std::string_view name) {
  const auto* found = std::find(std::begin(kNames), std::end(kNames), name);
  if (found == std::end(kNames)) {
    return std::nullopt;
  }
  return static_cast<Op>(found - std::begin(kNames));
}

}  // namespace nnlib::importer
