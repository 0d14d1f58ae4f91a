# SPDX-License-Identifier: MIT
# Cortex-M55 with floating point and vector extension.
set(cpu "-mcpu=cortex-m55 -mfloat-abi=hard")
set(board mps3-an547)
set(machine "mps3-an547")
set(clock 32000000)
include(${CMAKE_CURRENT_LIST_DIR}/bare-metal-arm.cmake)
