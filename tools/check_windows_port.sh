#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Cross-compiles the libraries and the conformance program for Windows, without optimisation: it does
# not run here.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake -S "$root" -B "$work" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_SYSTEM_NAME=Windows \
      -DCMAKE_C_COMPILER=x86_64-w64-mingw32-gcc -DCMAKE_CXX_COMPILER=x86_64-w64-mingw32-g++ >/dev/null
cmake --build "$work" -j2 --target lcut_unit_tests >/dev/null
echo "windows: the conformance program links"
