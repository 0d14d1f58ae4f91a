// SPDX-License-Identifier: MIT
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "importer/pass/evaluate.hpp"
#include "importer/read/npy.hpp"
#include "importer/read/onnx_tensor.hpp"
#include "importer/read/options.hpp"

namespace nnlib::importer {
namespace {

std::vector<double> numbers_of(const std::string& text) {
  std::vector<double> numbers;
  const char* at = text.data();
  const char* const end = at + text.size();
  while (true) {
    double number = 0;
    const auto [next, error] = std::from_chars(at, end, number);
    if (error != std::errc() || (next != end && *next != ',')) {
      throw std::runtime_error("'" + text + "' is neither a file nor numbers");
    }
    numbers.push_back(number);
    if (next == end) {
      return numbers;
    }
    at = next + 1;
  }
}

// The one open dimension follows from the number of elements.
void settle(Shape& shape, int64_t count) {
  int64_t known = 1;
  int64_t* open = nullptr;
  for (int64_t& size : shape) {
    if (size < 0 && open == nullptr) {
      open = &size;
    } else {
      known *= size < 0 ? 1 : size;
      size = size < 0 ? 1 : size;
    }
  }
  if (open != nullptr) {
    *open = known == 0 ? 0 : count / known;
  }
}

}  // namespace

Value frozen_value(const std::string& text, Type type, Shape shape) {
  std::error_code ignored;
  if (std::filesystem::is_regular_file(text, ignored)) {
    std::ifstream file(text, std::ios::binary);
    Bytes bytes(std::istreambuf_iterator<char>(file), {});
    if (text.ends_with(".pb")) {
      return value_of(
          parse_onnx_tensor({reinterpret_cast<const char*>(bytes.data()), bytes.size()}));
    }
    if (text.ends_with(".npy")) {
      Value array = read_npy(bytes);
      array.data = array.type == type ? array.data : bytes_of(array_of(array), type);
      array.type = type;
      return array;
    }
    settle(shape, static_cast<int64_t>(bytes.size() / type_bytes(type)));
    if (bytes.size() != static_cast<size_t>(element_count(shape)) * type_bytes(type)) {
      throw std::runtime_error(text + " does not have the input's size");
    }
    return {"", type, std::move(shape), {}, std::make_shared<const Bytes>(std::move(bytes))};
  }
  std::vector<double> numbers = numbers_of(text);
  settle(shape, static_cast<int64_t>(numbers.size()));
  const auto count = static_cast<size_t>(element_count(shape));
  if (numbers.size() == 1) {
    numbers.resize(count, numbers[0]);
  }
  if (numbers.size() != count) {
    throw std::runtime_error("'" + text + "' does not have as many numbers as the input");
  }
  const HostArray array{shape, std::move(numbers)};
  return {"", type, std::move(shape), {}, bytes_of(array, type)};
}

}  // namespace nnlib::importer
