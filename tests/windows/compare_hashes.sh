#!/usr/bin/env bash
# Runs the result-hash program of an ELF build and of the Windows build (under
# Wine) at processor levels 0, 1, 2 and 4 and requires the same line for every
# driver and kernel slot. A level above this processor's is left out.
#
# usage: compare_hashes.sh ELF_PROGRAM WINDOWS_PROGRAM WINE_RUNNER
set -euo pipefail
elf=$1
windows=$2
runner=$3
if [ ! -x "$elf" ]; then
  echo "no ELF build of tqcs_result_hashes at $elf (build the release preset first): not compared"
  exit 77
fi
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

compared=0
for level in 0 1 2 4; do
  set +e
  TCB_CPU_LEVEL=$level "$elf" >"$scratch/elf"
  rc=$?
  set -e
  if [ $rc -eq 77 ]; then
    echo "level $level: above this processor's, not compared"
    continue
  fi
  [ $rc -eq 0 ] || { echo "level $level: the ELF program failed ($rc)"; exit 1; }
  set +e
  TCB_CPU_LEVEL=$level "$runner" "$windows" | tr -d '\r' >"$scratch/windows"
  rc=${PIPESTATUS[0]}
  set -e
  [ $rc -ne 77 ] || exit 77  # no Wine: the runner has said so
  [ $rc -eq 0 ] || { echo "level $level: the Windows program failed ($rc)"; exit 1; }
  if ! diff "$scratch/elf" "$scratch/windows" >"$scratch/diff"; then
    echo "level $level: results differ (< ELF, > Windows):"
    grep '^[<>]' "$scratch/diff" | head -40
    exit 1
  fi
  echo "level $level: $(grep -c '^driver' "$scratch/elf") driver and" \
    "$(grep -c '^kernel' "$scratch/elf") kernel slots identical"
  compared=$((compared + 1))
done
[ $compared -gt 0 ] || { echo "no level compared"; exit 1; }
