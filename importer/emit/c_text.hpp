// SPDX-License-Identifier: MIT
// Small pieces of C text.
#ifndef NNLIB_IMPORTER_EMIT_C_TEXT_HPP
#define NNLIB_IMPORTER_EMIT_C_TEXT_HPP

#include <string>
#include <vector>

#include "importer/lower/network.hpp"

namespace nnlib::importer {

// "int8_t", "float", ...: the element type of a format, flags ignored.
std::string c_type(ai_array_format format);
// "AI_ARRAY_FORMAT_S8", with " | AI_FORMAT_FLAG_COPY" where it is set.
std::string c_format(ai_array_format format);

// The elements of constant bytes as C constants.
std::vector<std::string> c_elements(ai_array_format format, const Bytes& bytes);

// Items with commas between them, in lines of at most 100 characters that begin with `indent`.
std::string wrapped(const std::vector<std::string>& items, const std::string& indent);

// Text of the model that may stand in a comment, of at most `longest` characters.
std::string comment_text(const std::string& text, size_t longest = 80);

std::string upper(std::string text);

}  // namespace nnlib::importer

#endif
