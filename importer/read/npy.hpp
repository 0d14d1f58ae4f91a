// SPDX-License-Identifier: MIT
// NumPy's array files.
#ifndef NNLIB_IMPORTER_READ_NPY_HPP
#define NNLIB_IMPORTER_READ_NPY_HPP

#include "importer/graph/value.hpp"

namespace nnlib::importer {

// The array of a .npy file as a constant without name. Elements are integers, booleans or floats of
// 32 or 64 bits of either byte order, in C order. Throws std::runtime_error for another file.
Value read_npy(std::span<const uint8_t> file);

// The file of an array, in this machine's byte order.
Bytes npy_file(const Value& array);

}  // namespace nnlib::importer

#endif
