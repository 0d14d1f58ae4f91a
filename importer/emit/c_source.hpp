// SPDX-License-Identifier: MIT
// A network's records as C11 source.
#ifndef NNLIB_IMPORTER_EMIT_C_SOURCE_HPP
#define NNLIB_IMPORTER_EMIT_C_SOURCE_HPP

#include "importer/run/memory.hpp"

namespace nnlib::importer {

struct SourceOptions {
  std::string name = "network";    // of files and functions: a C identifier
  std::string section;             // of the arena; empty: the default one
  bool arena_from_caller = false;  // name_init takes the arena
  bool separate_weights = false;   // constants in files of their own
};

struct SourceFile {
  std::string name;
  std::string text;
};

// name.c and name.h, with separate weights also name_weights.c and name_weights.h. The same
// network always gives the same bytes.
std::vector<SourceFile> emit_c(const Network& network, const MemoryMap& memory,
                               const SourceOptions& options);

// `text` as a C identifier: other characters become underscores.
std::string c_identifier(const std::string& text);

}  // namespace nnlib::importer

#endif
