# SPDX-License-Identifier: MIT
# Runs PROGRAM and fails unless it exits with STATUS.
execute_process(COMMAND ${PROGRAM} RESULT_VARIABLE status)
if(NOT status STREQUAL STATUS)
  message(FATAL_ERROR "status ${status}, expected ${STATUS}")
endif()
