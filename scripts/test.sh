#!/usr/bin/env bash
# Builds the release preset and the sanitizer (debug) preset and runs every test in both.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/deps.sh
for preset in release debug; do
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset" -j 2
done
