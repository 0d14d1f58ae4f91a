# SPDX-License-Identifier: MIT
# Cortex-M0 as the part is: 256 KiB flash, 16 KiB RAM.
set(cpu "-mcpu=cortex-m0")
set(board microbit)
set(machine "microbit")
set(NNLIB_SMALL_TARGET ON)  # the examples fit, the conformance program does not
set(clock 16000000)
include(${CMAKE_CURRENT_LIST_DIR}/bare-metal-arm.cmake)
