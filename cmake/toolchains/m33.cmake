# SPDX-License-Identifier: MIT
# Cortex-M33 with single-precision floating point.
set(cpu "-mcpu=cortex-m33 -mfpu=fpv5-sp-d16 -mfloat-abi=hard")
set(board mps2-an505)
set(machine "mps2-an505")
set(clock 20000000)
include(${CMAKE_CURRENT_LIST_DIR}/bare-metal-arm.cmake)
