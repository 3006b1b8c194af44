#!/usr/bin/env bash
# The DLLs export exactly the names the ELF libraries export (the root
# pointer, the C functions, the coefficient tables; no C++ names, no DllMain)
# and import only Windows' own DLLs and their siblings: the C++ runtime is
# linked into each of them.
#
# usage: check_exports.sh ELF_BUILD_DIR OBJDUMP DLL...
set -euo pipefail
elf_dir=$1
objdump=$2
shift 2

exports() {
  "$objdump" -p "$1" | sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' |
    awk '/^[[:space:]]*\[ *[0-9]+\]/ { print $NF }' | sort
}

status=0
for dll in "$@"; do
  name=$(basename "$dll" .dll)
  so=$(find "$elf_dir" -name "lib$name.so" -print -quit 2>/dev/null || true)
  if [ -z "$so" ]; then
    echo "no ELF build of $name in $elf_dir (build the release preset first): not compared"
    exit 77
  fi
  want=$(nm -D --defined-only "$so" | awk '{ print $3 }' | sort)
  got=$(exports "$dll")
  if [ "$want" != "$got" ]; then
    echo "$name.dll exports differ from lib$name.so (< ELF, > DLL):"
    diff <(echo "$want") <(echo "$got") | grep '^[<>]' || true
    status=1
  fi
  unexpected=$("$objdump" -p "$dll" | awk '/DLL Name:/ { print $3 }' |
    grep -viE '^(kernel32|msvcrt|TQCPUBase|TQMemProc)\.dll$' || true)
  if [ -n "$unexpected" ]; then
    echo "$name.dll imports $(echo "$unexpected" | tr '\n' ' ')"
    status=1
  fi
  echo "$name.dll: $(echo "$got" | wc -l) exports"
done
exit $status
