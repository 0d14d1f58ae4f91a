# SPDX-License-Identifier: MIT
# What the Cortex-M toolchain files share. The including file sets cpu (compiler options), board
# (linker script), machine (QEMU's machine and options) and clock (Hz).
set(CMAKE_SYSTEM_NAME Generic)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_C_COMPILER arm-none-eabi-gcc)
set(CMAKE_CXX_COMPILER arm-none-eabi-g++)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)  # nothing links without start-up code
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_EXECUTABLE_SUFFIX_C .elf)
set(CMAKE_EXECUTABLE_SUFFIX_CXX .elf)
set(NNLIB_BOARD cortex-m)
set(NNLIB_CLOCK_HZ ${clock} CACHE STRING "")

get_filename_component(root ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
# The compiler's own <stdint.h> does not tell <inttypes.h> of 64-bit types.
set(CMAKE_C_FLAGS_INIT "${cpu} -mthumb -D__int64_t_defined=1")
set(CMAKE_CXX_FLAGS_INIT "${CMAKE_C_FLAGS_INIT}")
set(scripts ${root}/ports/bare_metal/cortex-m)
set(CMAKE_EXE_LINKER_FLAGS_INIT
    "-nostartfiles -L${scripts} -T${scripts}/${board}.ld -Wl,--gc-sections,--fatal-warnings")
separate_arguments(machine)
set(CMAKE_CROSSCOMPILING_EMULATOR ${root}/tools/run_qemu.sh qemu-system-arm -M ${machine} --)
