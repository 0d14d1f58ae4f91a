# SPDX-License-Identifier: MIT
# RISC-V RV32IMAC without an operating system, on picolibc. Debian has no C++ library for it: the
# header-only part of the Arm package's serves, and the C driver links. The stack is the 32 KiB above
# the heap.
set(CMAKE_SYSTEM_NAME Generic)
set(CMAKE_SYSTEM_PROCESSOR riscv32)
set(CMAKE_C_COMPILER riscv64-unknown-elf-gcc)
set(CMAKE_CXX_COMPILER riscv64-unknown-elf-gcc)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_EXECUTABLE_SUFFIX_C .elf)
set(CMAKE_EXECUTABLE_SUFFIX_CXX .elf)
set(NNLIB_BOARD riscv)
set(NNLIB_CLOCK_HZ 10000000 CACHE STRING "")

get_filename_component(root ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
set(cpu "-march=rv32imac -mabi=ilp32")
set(headers /usr/include/newlib/c++/12.2.1)
set(CMAKE_C_FLAGS_INIT "--specs=picolibc.specs ${cpu}")
set(CMAKE_CXX_FLAGS_INIT
    "--specs=picolibcpp.specs ${cpu} -isystem ${headers} -isystem ${headers}/arm-none-eabi/thumb/v7-m/nofp")
set(CMAKE_EXE_LINKER_FLAGS_INIT "--oslib=semihost --crt0=semihost -Wl,--gc-sections\
 -Wl,--defsym=__flash=0x80000000,--defsym=__flash_size=0x400000\
 -Wl,--defsym=__ram=0x80400000,--defsym=__ram_size=0x400000,--defsym=__heap_end=0x807f8000\
 -Wl,--no-warn-rwx-segments")
set(CMAKE_CROSSCOMPILING_EMULATOR ${root}/tools/run_qemu.sh qemu-system-riscv32 -M virt -bios none --)
