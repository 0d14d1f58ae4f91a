# SPDX-License-Identifier: MIT
# NNLIB_BUILD_IMPORTER: build nnlib-import, a tool for this machine; unless given, where the packages
# that it is built from are installed and this is no part of another project.
set(NNLIB_IMPORTER_PACKAGES OFF)
if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_CROSSCOMPILING)
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
if(NOT DEFINED NNLIB_BUILD_IMPORTER)
  set(NNLIB_BUILD_IMPORTER ${NNLIB_IMPORTER_PACKAGES})
endif()
