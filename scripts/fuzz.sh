#!/usr/bin/env bash
# Builds the libFuzzer targets (fuzz preset, clang 14) and runs each for the
# given number of seconds (default 60) from the seed corpus in
# fuzz/corpus/<target>. New inputs go to build/fuzz/corpus/<target>; a crash
# leaves its input in build/fuzz/artifacts/ and fails the run.
set -euo pipefail
cd "$(dirname "$0")/.."
TQCS_FUZZ_SECONDS="${1:-60}" cmake --workflow --preset fuzz
