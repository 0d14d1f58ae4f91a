# SPDX-License-Identifier: MIT
# Compiler settings of our own targets; users of the libraries inherit none of them.

# Assertions and reports name files relative to the repository.
set(nnlib_path_map -fmacro-prefix-map=${CMAKE_CURRENT_SOURCE_DIR}/=)

# For a build without a build type that does not choose its optimisation either.
if(NOT "${CMAKE_C_FLAGS} ${CMAKE_CXX_FLAGS}" MATCHES "(^| )-O")
  set(nnlib_optimisation $<$<CONFIG:>:-O2>)
endif()

function(nnlib_options target)
  target_compile_features(${target} PRIVATE cxx_std_20 c_std_11)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
  # A product and a sum never fuse: results are the same bits with and without fused
  # multiply-add hardware.
  # Clang's pass-failed: loops that may become vectors need not. psabi: notes on old compilers.
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -ffp-contract=off
                                           $<$<CXX_COMPILER_ID:Clang>:-Wno-pass-failed>
                                           $<$<CXX_COMPILER_ID:GNU>:-Wno-psabi>
                                           ${nnlib_optimisation} ${nnlib_path_map})
  if(NNLIB_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# What ends up in a product: neither exceptions nor RTTI, and every function droppable.
function(nnlib_runtime_options target)
  nnlib_options(${target})
  target_compile_options(${target} PRIVATE
    -Wconversion -Wsign-conversion -ffunction-sections -fdata-sections
    $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti -fno-threadsafe-statics>)
endfunction()
