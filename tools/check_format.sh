#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Fails when a source file is not formatted as .clang-format says (generated data do not count), or
# when a file that can hold a comment does not start with its SPDX line.
set -euo pipefail
cd "$(dirname "$0")/.."
git ls-files '*.c' '*.cpp' '*.h' '*.hpp' ':!test/reference/*' ':!examples/weights/*' | xargs clang-format --dry-run -Werror
without=$(git ls-files '*.c' '*.cpp' '*.h' '*.hpp' '*.h.in' '*.py' '*.sh' '*.cmake' '*.ld' '*.def' \
  '*CMakeLists.txt' .ci/run docs/Doxyfile.in |
  while read -r file; do head -2 "$file" | grep -q 'SPDX-License-Identifier: MIT' || echo "$file"; done)
[ -z "$without" ] || { echo "no SPDX line: $without"; exit 1; }
echo "format: clean"
