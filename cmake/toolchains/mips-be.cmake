# SPDX-License-Identifier: MIT
# 32-bit MIPS, big-endian.
set(triplet mips-linux-gnu)
set(emulator qemu-mips)
include(${CMAKE_CURRENT_LIST_DIR}/linux-user.cmake)
