#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# soak.sh [SECONDS [FUZZER...]]: runs fuzz targets for an hour each, or as long as given, two at a
# time. Their corpora grow in build/soak, where a later run goes on; so are logs and findings.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-3600}
fuzzers=("${@:2}")
[ ${#fuzzers[@]} -gt 0 ] || fuzzers=(network_fuzzer check_fuzzer onnx_fuzzer tflite_fuzzer)
declare -A options=(
  [network_fuzzer]="-max_len=256 -len_control=0 test/fuzz/corpus/network_fuzzer"
  [check_fuzzer]="-max_len=64 -len_control=0"
  [onnx_fuzzer]="-max_len=4096 -rss_limit_mb=1024 test/importer/models"
  [tflite_fuzzer]="-max_len=25 -len_control=0 -rss_limit_mb=1024")

cmake --preset clang >/dev/null
cmake --build --preset clang --target "${fuzzers[@]}" -j2 >/dev/null

soak() {
  local folder=build/soak/$1
  mkdir -p "$folder/corpus"
  # shellcheck disable=SC2086
  "$(find build/clang/test/fuzz -name "$1" -type f)" -max_total_time="$seconds" -timeout=120 -seed=1 \
    -print_final_stats=1 -artifact_prefix="$folder/" "$folder/corpus" ${options[$1]} \
    >"$folder/log.txt" 2>&1 || echo "$1: finding, see $folder/log.txt"
  echo "$1: $(grep -E 'DONE|stat::number_of_executed_units' "$folder/log.txt" | tr '\n' ' ')"
}

running=0
for fuzzer in "${fuzzers[@]}"; do
  if [ $((running++)) -ge 2 ]; then
    wait -n
  fi
  soak "$fuzzer" &
done
wait
