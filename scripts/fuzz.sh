#!/usr/bin/env bash
# Builds the libFuzzer targets (fuzz preset, clang 14) and runs each for the
# given number of seconds (default 60), starting from the seed corpus in
# fuzz/corpus/<target>. New inputs go to build/fuzz/corpus/<target>; a crash
# leaves its input in build/fuzz/artifacts/ and fails the script.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz
for name in dispatch descriptors general; do
  work="build/fuzz/corpus/$name"
  mkdir -p "$work" build/fuzz/artifacts
  echo "fuzzing $name for ${seconds}s"
  "build/fuzz/fuzz/tqcs_fuzz_$name" -max_total_time="$seconds" -print_final_stats=1 \
    -artifact_prefix="build/fuzz/artifacts/$name-" "$work" "fuzz/corpus/$name" 2>&1 |
    grep -E '^(#[0-9]+ *DONE|stat::number_of_executed_units|==[0-9]+==|SUMMARY)' || true
  test "${PIPESTATUS[0]}" -eq 0
done
