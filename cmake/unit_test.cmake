# SPDX-License-Identifier: MIT
# nnlib_unit_test(name source...): a program of GoogleTest, and its test. All share one precompiled
# header: most of a test's compilation went into GoogleTest's.
file(CONFIGURE OUTPUT precompiled.cpp CONTENT "")
add_library(nnlib_precompiled_gtest OBJECT ${CMAKE_CURRENT_BINARY_DIR}/precompiled.cpp)
target_link_libraries(nnlib_precompiled_gtest PRIVATE GTest::gtest_main)
nnlib_options(nnlib_precompiled_gtest)
target_precompile_headers(nnlib_precompiled_gtest PRIVATE <gtest/gtest.h>)

function(nnlib_unit_test name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE GTest::gtest_main)
  nnlib_options(${name})
  target_precompile_headers(${name} REUSE_FROM nnlib_precompiled_gtest)
  add_test(NAME ${name} COMMAND ${name})
endfunction()
