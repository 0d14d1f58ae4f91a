// SPDX-License-Identifier: MIT
// Any bytes as an ONNX file: a network or a refusal, never a crash.
#include "importer/graph/refusals.hpp"
#include "importer/main/import_model.hpp"
#include "importer/read/onnx.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace nnlib::importer;
  try {
    ImportOptions options;
    options.channels_last_ports = size % 2 == 0;
    build(prepare(read_onnx({data, size}, options.read), options), options);
  } catch (const Refused&) {
  }
  return 0;
}
