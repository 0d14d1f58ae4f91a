# SPDX-License-Identifier: MIT
# A toolchain file as a stranger has one, here for a Cortex-M3 with semihosting; it knows nothing of
# this library.
set(CMAKE_SYSTEM_NAME Generic)
set(CMAKE_C_COMPILER arm-none-eabi-gcc)
set(CMAKE_CXX_COMPILER arm-none-eabi-g++)
set(CMAKE_C_FLAGS_INIT "-mcpu=cortex-m3 -mthumb")
set(CMAKE_CXX_FLAGS_INIT "-mcpu=cortex-m3 -mthumb")
set(CMAKE_EXE_LINKER_FLAGS_INIT "--specs=rdimon.specs -Wl,--section-start=.vectors=0")
