# SPDX-License-Identifier: MIT
# The revision that the runtime reports: the checkout's commit, or zeros outside a checkout.
if(NOT DEFINED NNLIB_REVISION)
  find_package(Git QUIET)
  if(Git_FOUND)
    execute_process(COMMAND ${GIT_EXECUTABLE} rev-parse --show-toplevel HEAD
                    WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}
                    OUTPUT_VARIABLE checkout OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    # Not the commit of a checkout that holds this tree as a part.
    if(checkout MATCHES "^${CMAKE_CURRENT_SOURCE_DIR}\n([0-9a-f]+)$")
      set(NNLIB_REVISION ${CMAKE_MATCH_1})
    endif()
  endif()
endif()
string(LENGTH "${NNLIB_REVISION}" length)
if(NOT length EQUAL 40)
  string(REPEAT 0 40 NNLIB_REVISION)
endif()
