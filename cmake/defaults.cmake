# SPDX-License-Identifier: MIT
# What follows from the target when nothing else is asked for: port and programs_run_here.

# The processor, as the compiler knows it: names in toolchain files differ.
function(nnlib_bare_metal_port result)
  set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)  # nothing may link without start-up code
  foreach(port cortex-m riscv)
    set(source ${CMAKE_CURRENT_BINARY_DIR}/is_${port}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "#if !(@${port}_macros@)\n#error other\n#endif\n" @ONLY)
    try_compile(is_${port} ${CMAKE_CURRENT_BINARY_DIR}/port SOURCES ${source})
    if(is_${port})
      set(${result} ${port} PARENT_SCOPE)
      return()
    endif()
  endforeach()
  set(${result} none PARENT_SCOPE)
endfunction()

set(cortex-m_macros "defined(__ARM_ARCH_PROFILE) && __ARM_ARCH_PROFILE == 'M'")
set(riscv_macros "defined(__riscv_xlen) && __riscv_xlen == 32")
if(DEFINED NNLIB_PORT)
  set(port ${NNLIB_PORT})
elseif(WIN32)
  set(port windows)
elseif(UNIX)
  set(port posix)
else()
  nnlib_bare_metal_port(port)
endif()

# A bare machine runs programs when the toolchain file brings start-up code or an emulator.
if(CMAKE_SYSTEM_NAME STREQUAL Generic AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
  set(programs_run_here OFF)
else()
  set(programs_run_here ${PROJECT_IS_TOP_LEVEL})
endif()
