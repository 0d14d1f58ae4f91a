# SPDX-License-Identifier: MIT
# Cortex-M4 with single-precision floating point.
set(cpu "-mcpu=cortex-m4 -mfpu=fpv4-sp-d16 -mfloat-abi=hard")
set(board mps2)
set(machine "mps2-an386")
set(clock 25000000)
include(${CMAKE_CURRENT_LIST_DIR}/bare-metal-arm.cmake)
