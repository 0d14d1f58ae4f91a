// SPDX-License-Identifier: MIT
#ifndef NNLIB_IMPORTER_READ_ONNX_HPP
#define NNLIB_IMPORTER_READ_ONNX_HPP

#include <cstdint>
#include <span>

#include "importer/graph/graph.hpp"
#include "importer/read/options.hpp"

namespace nnlib::importer {

// An ONNX model in canonical operators, with everything folded that is known: constants, shapes.
// Spatial operators stand between transpositions, quantized ones between dequantization and
// quantization; passes take both away. Throws Refused with every reason.
Graph read_onnx(std::span<const uint8_t> file, const ReadOptions& options);

}  // namespace nnlib::importer

#endif
