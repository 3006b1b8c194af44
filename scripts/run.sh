#!/usr/bin/env bash
# Builds the release preset and runs the command-line tool on its built-in default.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset release >/dev/null
cmake --build --preset release
./build/release/tools/tqcs "$@"
