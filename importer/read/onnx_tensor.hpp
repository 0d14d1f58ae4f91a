// SPDX-License-Identifier: MIT
#ifndef NNLIB_IMPORTER_READ_ONNX_TENSOR_HPP
#define NNLIB_IMPORTER_READ_ONNX_TENSOR_HPP

#include "importer/graph/graph.hpp"
#include "importer/read/onnx_file.hpp"

namespace nnlib::importer {

// A constant. Double precision is narrowed to single: the network computes in nothing else.
Value value_of(const OnnxTensor& tensor);

}  // namespace nnlib::importer

#endif
