#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Fails when a source file is not formatted as .clang-format says; generated vectors do not count.
set -euo pipefail
cd "$(dirname "$0")/.."
git ls-files '*.c' '*.cpp' '*.h' '*.hpp' ':!test/reference/*' | xargs clang-format --dry-run -Werror
echo "format: clean"
