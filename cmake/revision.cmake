# The revision that the runtime reports: the checkout's commit, or zeros outside a checkout.
if(NOT DEFINED NNLIB_REVISION)
  find_package(Git QUIET)
  if(Git_FOUND)
    execute_process(COMMAND ${GIT_EXECUTABLE} rev-parse --verify HEAD
                    WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}
                    OUTPUT_VARIABLE NNLIB_REVISION OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  endif()
endif()
if(NOT NNLIB_REVISION MATCHES "^[0-9a-f]+$")
  string(REPEAT 0 40 NNLIB_REVISION)
endif()
