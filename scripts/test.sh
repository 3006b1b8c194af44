#!/usr/bin/env bash
# Builds the release and the sanitizer (debug) presets and runs every test in
# both, then the clang 14 build and its tests, the threads test under
# ThreadSanitizer, and a short run of every fuzz target.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/deps.sh
for preset in release debug clang; do
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset" -j 2
done
# ThreadSanitizer: only the threads test (16 threads over every entry point).
cmake --preset tsan >/dev/null
cmake --build --preset tsan
TSAN_OPTIONS="halt_on_error=1" build/tsan/tests/tqcs_drivers_tests --gtest_filter='Threads.*'
# Fuzzing: about a minute in all.
scripts/fuzz.sh 20
