#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# check_cores.sh: compiles the kernels for cores with the DSP extension and with vectors as no preset
# does: by Clang, not optimised, and without access to unaligned words.
set -euo pipefail
cd "$(dirname "$0")/.."

m4=(-mcpu=cortex-m4 -mfloat-abi=hard -mfpu=fpv4-sp-d16)
m55=(-mcpu=cortex-m55 -mfloat-abi=hard)
fused=-DNNLIB_FUSED_MULTIPLY_ADD=1

# The headers of the C and C++ libraries, but not of the compiler, as GCC knows them.
headers=()
for folder in $(arm-none-eabi-g++ "${m55[@]}" -E -v -xc++ /dev/null 2>&1 |
                sed -n '/^#include <...> search/,/^End/s/^ //p' | xargs realpath); do
  case $folder in
    */lib/gcc/*) ;;
    *) headers+=(-isystem "$folder") ;;
  esac
done
clang=(clang++ --target=thumb-none-eabi -munaligned-access "${headers[@]}")

compile() {
  printf '%s\0' kernels/*.cpp | xargs -0 -n 1 -P 2 \
    "$@" -std=c++20 -Wall -Wextra -Werror -fno-exceptions -fno-rtti -ffp-contract=off \
    -fomit-frame-pointer -I. -c -o /dev/null
}

compile "${clang[@]}" "${m4[@]}" -O2
compile "${clang[@]}" "${m55[@]}" -Os $fused
compile arm-none-eabi-g++ "${m4[@]}" -O0
compile arm-none-eabi-g++ "${m55[@]}" -O2 -mno-unaligned-access $fused
