# SPDX-License-Identifier: MIT
# Cortex-M3 whose memory protection traps null pointers and stack overflow.
set(cpu "-mcpu=cortex-m3 -DNNLIB_MPU_GUARDS")
set(board mps2)
set(machine "mps2-an385")
set(clock 25000000)
include(${CMAKE_CURRENT_LIST_DIR}/bare-metal-arm.cmake)
