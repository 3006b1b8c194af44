#!/usr/bin/env bash
# Builds the release preset and runs the command-line tool's demo: a test
# pattern through every format, PNGs and a contact sheet in ./tqcs-demo.
# Arguments, if any, are passed to tqcs instead (e.g. ./scripts/run.sh info).
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset release >/dev/null
cmake --build --preset release --target tqcs
if [ "$#" -eq 0 ]; then
  set -- demo
fi
exec ./build/release/tools/tqcs "$@"
