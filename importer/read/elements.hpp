// SPDX-License-Identifier: MIT
// Files with the elements of a tensor: .npy, or raw in this machine's byte order.
#ifndef NNLIB_IMPORTER_READ_ELEMENTS_HPP
#define NNLIB_IMPORTER_READ_ELEMENTS_HPP

#include "importer/graph/value.hpp"

namespace nnlib::importer {

// The elements for a value, as many sets one after the other as there are. Floats for a quantized
// value are quantized, to nearest even; other numbers have to fit the value's type. A .npy of maps
// [C, H, W] for a value [H, W, C] is brought into the value's order, where the sizes tell them
// apart. Throws std::runtime_error, without the file's name.
std::vector<Bytes> element_sets(std::span<const uint8_t> file, bool npy, const Value& like);

// The same from the file at the path. Throws std::runtime_error with its name.
std::vector<Bytes> read_element_sets(const std::string& path, const Value& like);

}  // namespace nnlib::importer

#endif
