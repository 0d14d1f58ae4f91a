// SPDX-License-Identifier: MIT
#ifndef NNLIB_IMPORTER_READ_TFLITE_NAMES_HPP
#define NNLIB_IMPORTER_READ_TFLITE_NAMES_HPP

#include <cstdint>
#include <string>

namespace nnlib::importer {

// "CONV_2D"; "operator 999" for a code that has no name.
std::string tflite_operator_name(int32_t code);

}  // namespace nnlib::importer

#endif
