#!/usr/bin/env bash
# Everything CI runs, as CMake workflows (configure, build, test) with
# warnings as errors: release, the sanitizer build (AddressSanitizer and
# UndefinedBehaviorSanitizer), clang 14, the Windows DLLs under Wine, the
# threads test under ThreadSanitizer and a short run of every fuzz target.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/deps.sh
workflows=(ci-release ci-debug ci-clang ci-windows ci-tsan ci-fuzz)
if ! command -v x86_64-w64-mingw32-g++-posix >/dev/null 2>&1; then
  echo "x86_64-w64-mingw32-g++-posix is not installed: Windows build skipped"
  workflows=("${workflows[@]/ci-windows/}")
fi
for workflow in "${workflows[@]}"; do
  [ -n "$workflow" ] || continue
  echo "=== workflow $workflow"
  cmake --workflow --preset "$workflow"
done
