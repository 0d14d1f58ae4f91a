# SPDX-License-Identifier: MIT
# Whether what the importer is built from is here. It is a tool for the machine that builds it.
set(NNLIB_IMPORTER_PACKAGES OFF)
if(NOT CMAKE_CROSSCOMPILING)
  find_package(FlatBuffers CONFIG QUIET)
  find_package(CLI11 CONFIG QUIET)
  find_package(nlohmann_json CONFIG QUIET)
  find_package(Protobuf QUIET)
  find_path(NNLIB_ONNX_INCLUDE onnx/onnx_pb.h)
  find_program(NNLIB_FLATC flatc)
  mark_as_advanced(NNLIB_ONNX_INCLUDE NNLIB_FLATC)
  if(FlatBuffers_FOUND AND NNLIB_FLATC AND CLI11_FOUND AND nlohmann_json_FOUND AND
     Protobuf_FOUND AND NNLIB_ONNX_INCLUDE)
    set(NNLIB_IMPORTER_PACKAGES ON)
  endif()
endif()
