#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Uses the libraries from a stranger's project in C in each supported way, on this machine and, with
# a toolchain file that knows nothing of them, on an emulated Cortex-M3: add_subdirectory,
# find_package and pkg-config; and nnlib_import() of the package, with the importer of the release
# build.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# use NAME COMMAND... -- OPTIONS...: builds the stranger's project with CMake's options and runs it
# with the command before it.
use() {
  local name=$1 command=()
  shift
  while [ "$1" != -- ]; do command+=("$1"); shift; done
  shift
  cmake -S "$root/test/consumer" -B "$work/$name" "$@" >"$work/log" || { cat "$work/log"; return 1; }
  cmake --build "$work/$name" -j2 >"$work/log" || { cat "$work/log"; return 1; }
  "${command[@]}" "$work/$name/consumer" >"$work/log" || { cat "$work/log"; return 1; }
  echo "package: $name"
}

# in_both_ways NAME COMMAND... -- OPTIONS...: the same from the source tree, and from what that build
# installs.
in_both_ways() {
  local name=$1
  shift
  use "$name-subdirectory" "$@" -DNNLIB_SOURCE_DIR="$root"
  # No build type was given.
  grep -q -- '-O[23]' "$work/$name-subdirectory/nnlib/CMakeFiles/nnlib.dir/flags.make"
  cmake --install "$work/$name-subdirectory" --prefix "$work/$name" >/dev/null
  use "$name-package" "$@" -DCMAKE_PREFIX_PATH="$work/$name"
}

in_both_ways host --
on_arm=(qemu-system-arm -M mps2-an385 -nographic -semihosting-config enable=on,target=native -kernel)
in_both_ways arm "${on_arm[@]}" -- --toolchain "$root/test/consumer/arm-none-eabi.cmake"
grep -q 'NNLIB_PORT:STRING=cortex-m$' "$work/arm-subdirectory/CMakeCache.txt"

# Two suites, named out of order, in the stranger's own program.
cmake "$work/arm-subdirectory" -DWITH_CONFORMANCE=ON \
      -DNNLIB_SUITES="test_lcut_sm_fixed;test_lcut_gru" >/dev/null
cmake --build "$work/arm-subdirectory" -j2 --target conformance >"$work/log" 2>&1
"${on_arm[@]}" "$work/arm-subdirectory/conformance" >"$work/log"
[ "$(grep -o 'Suite.*<test_lcut_[a-z_]*' "$work/log" | sed 's/.*<test_lcut_//')" = $'gru\nsm_fixed' ]
grep -q 'Total Cases: 11' "$work/log"
echo "package: conformance suites in a program of its own"

# A network imported by the tool that the release build installs, from its CMake function.
models=$root/test/importer/models
cmake --install "$root/build/release" --prefix "$work/tools" >/dev/null
use import -- -DCMAKE_PREFIX_PATH="$work/tools" -DNETWORK="$models/cnn.onnx"
"$work/import/network" "$models/data/cnn_onnx.input0.bin" "$models/data/cnn_onnx.output0.bin"
echo "package: a network imported while the project is built"

mv "$work/host" "$work/moved"
PKG_CONFIG_PATH=$(dirname "$(find "$work/moved" -name nnlib.pc)")
export PKG_CONFIG_PATH
read -ra flags <<<"$(pkg-config --cflags --libs nnlib_check nnlib lcut)"
gcc -std=c11 "$root/test/consumer/main.c" "${flags[@]}" -o "$work/consumer"
"$work/consumer" >/dev/null
test -f "$work/moved/share/doc/nnlib/LICENSE"
echo "package: pkg-config, after a move"
