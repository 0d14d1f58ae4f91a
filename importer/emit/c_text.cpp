// SPDX-License-Identifier: MIT
#include "importer/emit/c_text.hpp"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <stdexcept>

#include "importer/lower/layer_builder.hpp"

namespace nnlib::importer {
namespace {

struct FormatRow {
  ai_array_format format;
  const char* name;
  const char* type;
};
constexpr FormatRow kFormats[] = {
    {AI_ARRAY_FORMAT_FLOAT, "AI_ARRAY_FORMAT_FLOAT", "float"},
    {AI_ARRAY_FORMAT_U8, "AI_ARRAY_FORMAT_U8", "uint8_t"},
    {AI_ARRAY_FORMAT_S8, "AI_ARRAY_FORMAT_S8", "int8_t"},
    {AI_ARRAY_FORMAT_U16, "AI_ARRAY_FORMAT_U16", "uint16_t"},
    {AI_ARRAY_FORMAT_S16, "AI_ARRAY_FORMAT_S16", "int16_t"},
    {AI_ARRAY_FORMAT_U32, "AI_ARRAY_FORMAT_U32", "uint32_t"},
    {AI_ARRAY_FORMAT_S32, "AI_ARRAY_FORMAT_S32", "int32_t"},
};

const FormatRow& row_of(ai_array_format format) {
  for (const FormatRow& row : kFormats) {
    if (row.format == ai_fmt_set_fbits(ai_fmt_get_code(format), 0)) {
      return row;
    }
  }
  throw std::logic_error("a format without a C type");
}

template <class T>
std::vector<std::string> integers(const Bytes& bytes) {
  std::vector<std::string> out;
  for (size_t i = 0; i + sizeof(T) <= bytes.size(); i += sizeof(T)) {
    T value;
    std::memcpy(&value, bytes.data() + i, sizeof(T));
    // The least int32 has no constant of its own type.
    const bool least = std::is_same_v<T, int32_t> && static_cast<int64_t>(value) == INT32_MIN;
    out.push_back(least ? "INT32_MIN"
                        : std::to_string(value) + (std::is_same_v<T, uint32_t> ? "u" : ""));
  }
  return out;
}

std::vector<std::string> floats(const Bytes& bytes) {
  std::vector<std::string> out;
  for (size_t i = 0; i + sizeof(float) <= bytes.size(); i += sizeof(float)) {
    float value;
    std::memcpy(&value, bytes.data() + i, sizeof(float));
    out.push_back(c_float(value));
  }
  return out;
}

}  // namespace

std::string c_type(ai_array_format format) {
  return row_of(format).type;
}

std::string c_format(ai_array_format format) {
  const int32_t fraction_bits = ai_fmt_get_fbits(format);
  std::string name = row_of(format).name;
  if (fraction_bits != 0) {
    name = "AI_ARRAY_FORMAT_MAKE_Q(" + std::to_string(ai_fmt_get_bits(format)) + ", " +
           std::to_string(fraction_bits) + ")";
  }
  return (format & AI_FORMAT_FLAG_COPY) != 0 ? name + " | AI_FORMAT_FLAG_COPY" : name;
}

std::vector<std::string> c_elements(ai_array_format format, const Bytes& bytes) {
  switch (ai_fmt_get_code(format)) {
    case AI_ARRAY_FORMAT_FLOAT:
      return floats(bytes);
    case AI_ARRAY_FORMAT_U8:
      return integers<uint8_t>(bytes);
    case AI_ARRAY_FORMAT_S8:
      return integers<int8_t>(bytes);
    case AI_ARRAY_FORMAT_U16:
      return integers<uint16_t>(bytes);
    case AI_ARRAY_FORMAT_S16:
      return integers<int16_t>(bytes);
    case AI_ARRAY_FORMAT_U32:
      return integers<uint32_t>(bytes);
    default:
      return integers<int32_t>(bytes);
  }
}

std::string wrapped(const std::vector<std::string>& items, const std::string& indent) {
  constexpr size_t kLongest = 100;
  std::string out;
  size_t column = kLongest;
  for (size_t i = 0; i < items.size(); ++i) {
    const std::string item = items[i] + (i + 1 < items.size() ? "," : "");
    if (column + 1 + item.size() > kLongest) {
      out += (i == 0 ? "" : "\n") + indent + item;
      column = indent.size() + item.size();
    } else {
      out += " " + item;
      column += 1 + item.size();
    }
  }
  return out;
}

std::string comment_text(const std::string& text, size_t longest) {
  std::string out;
  for (const char c : text) {
    const bool ends = c == '/' && !out.empty() && out.back() == '*';
    const bool begins = c == '*' && !out.empty() && out.back() == '/';
    out += std::isprint(static_cast<unsigned char>(c)) && !ends && !begins && c != '\\' ? c : '_';
  }
  return out.size() <= longest ? out : out.substr(0, longest - 3) + "...";
}

std::string upper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) {
    return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  });
  return text;
}

}  // namespace nnlib::importer
