# SPDX-License-Identifier: MIT
# Runs PROGRAM and fails unless it succeeds and prints exactly the file EXPECTED.
execute_process(COMMAND ${PROGRAM} OUTPUT_VARIABLE printed RESULT_VARIABLE status)
file(READ ${EXPECTED} expected)
string(REPLACE "\r\n" "\n" printed "${printed}")
if(NOT status EQUAL 0 OR NOT printed STREQUAL expected)
  message(FATAL_ERROR "status ${status}, printed:\n${printed}\nexpected:\n${expected}")
endif()
