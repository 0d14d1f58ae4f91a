# SPDX-License-Identifier: MIT
# Cortex-M0 with more memory than any part has.
set(cpu "-mcpu=cortex-m0")
set(board microbit-big)
set(machine "microbit -global nrf51-soc.flash-size=0x400000 -global nrf51-soc.sram-size=0x80000")
set(clock 16000000)
include(${CMAKE_CURRENT_LIST_DIR}/bare-metal-arm.cmake)
