// SPDX-License-Identifier: MIT
// TFLite files: FlatBuffers with one graph of NHWC operators.
#ifndef NNLIB_IMPORTER_READ_TFLITE_HPP
#define NNLIB_IMPORTER_READ_TFLITE_HPP

#include "importer/graph/graph.hpp"

namespace nnlib::importer {

struct TfliteOptions {
  // An LSTM's clipping of its cell state has no counterpart: left out instead of refused.
  bool ignore_cell_clip = false;
};

// Whether the bytes claim to be a TFLite file.
bool is_tflite(std::span<const uint8_t> file);

// Throws Refused when the file is not sound. Operators that are not known become Op::unknown.
Graph read_tflite(std::span<const uint8_t> file, const TfliteOptions& options = {});

}  // namespace nnlib::importer

#endif
