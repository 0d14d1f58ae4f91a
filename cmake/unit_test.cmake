# SPDX-License-Identifier: MIT
# nnlib_unit_test(name source...): a program of GoogleTest, and its test. All share one precompiled
# header, and none is optimised much: building them took far longer than running them.
function(nnlib_unit_test_options target)
  target_link_libraries(${target} PRIVATE GTest::gtest_main)
  nnlib_options(${target})
  target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O1>)
endfunction()

file(CONFIGURE OUTPUT precompiled.cpp CONTENT "")
add_library(nnlib_precompiled_gtest OBJECT ${CMAKE_CURRENT_BINARY_DIR}/precompiled.cpp)
nnlib_unit_test_options(nnlib_precompiled_gtest)
target_precompile_headers(nnlib_precompiled_gtest PRIVATE <gtest/gtest.h>)

function(nnlib_unit_test name)
  add_executable(${name} ${ARGN})
  nnlib_unit_test_options(${name})
  target_precompile_headers(${name} REUSE_FROM nnlib_precompiled_gtest)
  add_test(NAME ${name} COMMAND ${name})
endfunction()
