// SPDX-License-Identifier: MIT
// ONNX Einsum of one or two operands: sums, transpositions and a product of matrices.
#ifndef NNLIB_IMPORTER_READ_ONNX_EINSUM_HPP
#define NNLIB_IMPORTER_READ_ONNX_EINSUM_HPP

#include "importer/read/onnx_context.hpp"

namespace nnlib::importer {

void einsum(OnnxContext& c);

}  // namespace nnlib::importer

#endif
