// SPDX-License-Identifier: MIT
#include "importer/read/npy.hpp"

#include <algorithm>
#include <bit>
#include <charconv>
#include <stdexcept>

namespace nnlib::importer {
namespace {

[[noreturn]] void refuse(const std::string& why) {
  throw std::runtime_error("not a .npy file that can be read: " + why);
}

// What stands behind 'key': in the header's dictionary.
std::string_view entry(std::string_view header, const std::string& key) {
  const size_t at = header.find("'" + key + "':");
  if (at == std::string_view::npos) {
    refuse("its header has no " + key);
  }
  std::string_view rest = header.substr(at + key.size() + 3);
  rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
  return rest;
}

constexpr char kOwnOrder = std::endian::native == std::endian::little ? '<' : '>';

constexpr std::pair<std::string_view, Type> kTypes[] = {
    {"f4", Type::f32}, {"f8", Type::f64}, {"u1", Type::u8},     {"i1", Type::s8},
    {"u2", Type::u16}, {"i2", Type::s16}, {"u4", Type::u32},    {"i4", Type::s32},
    {"u8", Type::u64}, {"i8", Type::s64}, {"b1", Type::boolean}};

Type type_of_description(std::string_view description) {
  for (const auto& [name, type] : kTypes) {
    if (description == name) {
      return type;
    }
  }
  refuse("elements of type " + std::string(description));
}

Shape shape_of_text(std::string_view text) {
  Shape shape;
  const char* at = text.data();
  const char* const end = at + std::min(text.find(')'), text.size());
  while (at < end) {
    int64_t size = 0;
    const auto [next, error] = std::from_chars(at, end, size);
    if (error == std::errc()) {
      shape.push_back(size);
      at = next;
    } else {
      ++at;
    }
  }
  return shape;
}

}  // namespace

Value read_npy(std::span<const uint8_t> file) {
  constexpr std::string_view kMagic = "\x93NUMPY";
  const std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
  if (file.size() < 12 || text.substr(0, kMagic.size()) != kMagic) {
    refuse("it begins with something else");
  }
  const bool long_header = file[6] > 1;
  const size_t start = long_header ? 12 : 10;
  size_t length = file[8] | size_t{file[9]} << 8;
  if (long_header) {
    length |= size_t{file[10]} << 16 | size_t{file[11]} << 24;
  }
  if (length > file.size() - start) {
    refuse("it ends in its header");
  }
  const std::string_view header = text.substr(start, length);
  const std::string_view description = entry(header, "descr");
  if (description.size() < 5 || description[0] != '\'' || description[4] != '\'' ||
      !entry(header, "fortran_order").starts_with("False")) {
    refuse("records, or columns first");
  }
  Value value;
  value.type = type_of_description(description.substr(2, 2));
  value.shape = shape_of_text(entry(header, "shape"));
  const size_t element = type_bytes(value.type);
  Bytes bytes(file.begin() + static_cast<ptrdiff_t>(start + length), file.end());
  const int64_t elements = value.elements();
  if (elements < 0 || bytes.size() != static_cast<size_t>(elements) * element) {
    refuse("its size is not that of its shape");
  }
  if (element > 1 && description[1] != kOwnOrder) {
    for (auto at = bytes.begin(); at != bytes.end(); at += static_cast<ptrdiff_t>(element)) {
      std::reverse(at, at + static_cast<ptrdiff_t>(element));
    }
  }
  value.data = std::make_shared<const Bytes>(std::move(bytes));
  return value;
}

Bytes npy_file(const Value& array) {
  std::string header = "{'descr': '";
  header += type_bytes(array.type) == 1 ? '|' : kOwnOrder;
  header += std::find_if(std::begin(kTypes), std::end(kTypes), [&](const auto& type) {
              return type.second == array.type;
            })->first;
  header += "', 'fortran_order': False, 'shape': (";
  for (const int64_t size : array.shape) {
    header += std::to_string(size) + ",";
  }
  header += "), }";
  constexpr size_t kStart = 10;  // the magic word, the version, the header's length
  constexpr size_t kAlignment = 64;
  header.resize((kStart + header.size()) / kAlignment * kAlignment + kAlignment - kStart, ' ');
  header.back() = '\n';
  std::string start = {'\x93', 'N', 'U', 'M', 'P', 'Y', 1, 0};
  start += static_cast<char>(header.size() & 0xff);
  start += static_cast<char>(header.size() >> 8);
  start += header;
  Bytes file(start.begin(), start.end());
  file.insert(file.end(), array.data->begin(), array.data->end());
  return file;
}

}  // namespace nnlib::importer
