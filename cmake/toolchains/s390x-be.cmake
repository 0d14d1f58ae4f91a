# SPDX-License-Identifier: MIT
# 64-bit z/Architecture, big-endian.
set(triplet s390x-linux-gnu)
set(emulator qemu-s390x)
include(${CMAKE_CURRENT_LIST_DIR}/linux-user.cmake)
