#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs the libraries and uses them from a stranger's project in each supported way:
# find_package, add_subdirectory and pkg-config.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake -S "$root" -B "$work/nnlib" -DCMAKE_BUILD_TYPE=Release -DNNLIB_BUILD_TESTS=OFF \
      -DCMAKE_INSTALL_PREFIX="$work/prefix" >/dev/null
cmake --build "$work/nnlib" -j2 --target install >/dev/null

cmake -S "$root/test/consumer" -B "$work/package" -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/package" >/dev/null
"$work/package/consumer"

cmake -S "$root/test/consumer" -B "$work/subdirectory" -DNNLIB_SOURCE_DIR="$root" >/dev/null
cmake --build "$work/subdirectory" -j2 >/dev/null
"$work/subdirectory/consumer"

export PKG_CONFIG_PATH=$work/prefix/lib/pkgconfig:$work/prefix/lib/$(gcc -print-multiarch)/pkgconfig
read -ra flags <<<"$(pkg-config --cflags --libs nnlib lcut)"
gcc -std=c11 "$root/test/consumer/main.c" "${flags[@]}" -o "$work/consumer"
"$work/consumer"
echo "package: find_package, add_subdirectory and pkg-config work"
