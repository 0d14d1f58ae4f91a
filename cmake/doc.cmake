# SPDX-License-Identifier: MIT
# The target doc: HTML of the public headers in doc/html; a warning fails it.
find_program(NNLIB_DOXYGEN doxygen)
find_program(NNLIB_PYTHON NAMES python3)
mark_as_advanced(NNLIB_DOXYGEN NNLIB_PYTHON)
if(PROJECT_IS_TOP_LEVEL AND NNLIB_DOXYGEN AND NNLIB_PYTHON)
  list(JOIN public_directories " " doc_directories)
  configure_file(docs/Doxyfile.in Doxyfile @ONLY)
  add_custom_target(doc COMMAND ${NNLIB_DOXYGEN} ${PROJECT_BINARY_DIR}/Doxyfile
                    WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
endif()
