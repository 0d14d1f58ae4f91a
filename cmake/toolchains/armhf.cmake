# SPDX-License-Identifier: MIT
# 32-bit Arm with floating point.
set(triplet arm-linux-gnueabihf)
set(emulator qemu-arm)
include(${CMAKE_CURRENT_LIST_DIR}/linux-user.cmake)
