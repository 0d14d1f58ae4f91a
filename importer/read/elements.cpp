// SPDX-License-Identifier: MIT
#include "importer/read/elements.hpp"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <limits>
#include <stdexcept>

#include "importer/pass/evaluate.hpp"
#include "importer/read/npy.hpp"

namespace nnlib::importer {
namespace {

bool is_float(Type type) {
  return type == Type::f32 || type == Type::f64;
}

std::pair<double, double> range_of(Type type) {
  const int bits = static_cast<int>(8 * type_bytes(type));
  const bool is_signed = type == Type::s8 || type == Type::s16 || type == Type::s32;
  return is_signed ? std::pair{-std::ldexp(1, bits - 1), std::ldexp(1, bits - 1) - 1}
                   : std::pair{0.0, std::ldexp(1, bits) - 1};
}

// The numbers as elements of the value's type.
Bytes converted(const Value& array, const Value& like) {
  std::vector<double> numbers = to_doubles(array);
  if (!is_float(like.type)) {
    const auto [least, most] = range_of(like.type);
    for (double& x : numbers) {
      if (is_float(array.type) && like.quantization) {
        const Quantization& q = *like.quantization;
        x = std::clamp(std::nearbyint(x / double{q.scales[0]}) + q.zero_points[0], least, most);
      }
      if (!(x >= least && x <= most) || x != std::trunc(x)) {
        throw std::runtime_error("it has numbers that are no " + std::string(type_name(like.type)));
      }
    }
  }
  return *bytes_of({array.shape, std::move(numbers)}, like.type);
}

// Whether the array's last dimensions are the value's with the channels in front of the map.
bool has_channels_first(const Shape& array, const Shape& like) {
  if (like.size() != 4 || array.size() < 3) {
    return false;
  }
  const Shape last(array.end() - 3, array.end());
  return last == Shape{like[3], like[1], like[2]} && last != Shape{like[1], like[2], like[3]};
}

Bytes channels_last(const uint8_t* from, const Shape& like, size_t element) {
  const auto height_width = static_cast<size_t>(like[1] * like[2]);
  const auto channels = static_cast<size_t>(like[3]);
  Bytes out(height_width * channels * element);
  for (size_t c = 0; c < channels; ++c) {
    for (size_t i = 0; i < height_width; ++i) {
      std::copy_n(from + (c * height_width + i) * element, element,
                  out.data() + (i * channels + c) * element);
    }
  }
  return out;
}

}  // namespace

std::vector<Bytes> element_sets(std::span<const uint8_t> file, bool npy, const Value& like) {
  Value array{"", like.type, {}, {}, nullptr};
  Bytes bytes;
  if (npy) {
    array = read_npy(file);
    bytes = array.type == like.type ? *array.data : converted(array, like);
  } else {
    bytes.assign(file.begin(), file.end());
  }
  const size_t element = type_bytes(like.type);
  const size_t set = static_cast<size_t>(like.elements()) * element;
  if (set == 0 || bytes.empty() || bytes.size() % set != 0) {
    throw std::runtime_error("it has " + std::to_string(bytes.size() / element) +
                             " elements instead of " + std::to_string(like.elements()));
  }
  const bool turned = has_channels_first(array.shape, like.shape);
  std::vector<Bytes> sets;
  for (size_t at = 0; at < bytes.size(); at += set) {
    const uint8_t* from = bytes.data() + at;
    sets.push_back(turned ? channels_last(from, like.shape, element) : Bytes(from, from + set));
  }
  return sets;
}

std::vector<Bytes> read_element_sets(const std::string& path, const Value& like) {
  std::ifstream file(path, std::ios::binary);
  const Bytes bytes(std::istreambuf_iterator<char>(file), {});
  if (!file) {
    throw std::runtime_error("cannot read " + path);
  }
  try {
    return element_sets(bytes, path.ends_with(".npy"), like);
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(path + ": " + error.what());
  }
}

}  // namespace nnlib::importer
