# SPDX-License-Identifier: MIT
# nnlib::conformance: the suites that NNLIB_SUITES names and their runner, test_lcut_main, for a
# program of the test directory or with a main of one's own. Built only when something uses it.
set(tests ${CMAKE_CURRENT_SOURCE_DIR}/test)
file(STRINGS ${tests}/suites.def all_suites REGEX "^SUITE")
list(TRANSFORM all_suites REPLACE "SUITE\\((.*)\\)" "\\1")
if(left_out_types)  # suites that go through integer layers of all types
  list(REMOVE_ITEM all_suites test_lcut_core_convert test_lcut_conv_integer test_lcut_pool_integer
       test_lcut_nl_integer test_lcut_eltwise_integer)
endif()
set(NNLIB_SUITES "${all_suites}" CACHE STRING "Suites of the conformance program")
foreach(suite ${NNLIB_SUITES})
  if(NOT suite IN_LIST all_suites)
    message(FATAL_ERROR "NNLIB_SUITES: no suite ${suite}; there are ${all_suites}")
  endif()
endforeach()

file(GLOB sources CONFIGURE_DEPENDS ${tests}/test_lcut_*.cpp)
list(REMOVE_ITEM sources ${tests}/test_lcut_main.cpp)
add_library(nnlib_suites STATIC EXCLUDE_FROM_ALL ${sources})
target_link_libraries(nnlib_suites PUBLIC nnlib lcut)
nnlib_options(nnlib_suites)

# Adds the runner of the named suites to a target; they run in their own order.
function(nnlib_add_suites target)
  set(lines "")
  foreach(suite ${all_suites})
    if(suite IN_LIST ARGN)
      string(APPEND lines "SUITE(${suite})\n")
    endif()
  endforeach()
  set(selected ${CMAKE_CURRENT_BINARY_DIR}/${target}.def)
  file(CONFIGURE OUTPUT ${selected} CONTENT "${lines}")
  target_sources(${target} PRIVATE ${tests}/suites.cpp ${tests}/test_lcut_main.cpp)
  target_compile_definitions(${target} PRIVATE NNLIB_SUITES_FILE="${selected}")
  target_link_libraries(${target} PUBLIC nnlib_suites)
  nnlib_options(${target})
endfunction()

add_library(nnlib_conformance STATIC EXCLUDE_FROM_ALL)
add_library(nnlib::conformance ALIAS nnlib_conformance)
nnlib_add_suites(nnlib_conformance ${NNLIB_SUITES})
