# SPDX-License-Identifier: MIT
# Cortex-M7 with double-precision floating point.
set(cpu "-mcpu=cortex-m7 -mfpu=fpv5-d16 -mfloat-abi=hard")
set(board mps2)
set(machine "mps2-an500")
set(clock 25000000)
include(${CMAKE_CURRENT_LIST_DIR}/bare-metal-arm.cmake)
