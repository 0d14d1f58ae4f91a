# SPDX-License-Identifier: MIT
# 64-bit Arm.
set(triplet aarch64-linux-gnu)
set(emulator qemu-aarch64)
include(${CMAKE_CURRENT_LIST_DIR}/linux-user.cmake)
