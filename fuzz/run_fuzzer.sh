#!/usr/bin/env bash
# Runs one libFuzzer target for TQCS_FUZZ_SECONDS (default 20) from the seed
# corpus, keeping new inputs in WORK and a crash's input under ARTIFACT_PREFIX.
#
# usage: run_fuzzer.sh FUZZER SEED_CORPUS WORK ARTIFACT_PREFIX
set -euo pipefail
fuzzer=$1
seeds=$2
work=$3
artifacts=$4
mkdir -p "$work" "$(dirname "$artifacts")"
seconds=${TQCS_FUZZ_SECONDS:-20}
echo "fuzzing $(basename "$fuzzer") for ${seconds}s"
"$fuzzer" -max_total_time="$seconds" -print_final_stats=1 -artifact_prefix="$artifacts" \
  "$work" "$seeds" 2>&1 |
  grep -E '^(#[0-9]+ *DONE|stat::number_of_executed_units|==[0-9]+==|SUMMARY)' || true
exit "${PIPESTATUS[0]}"
