#!/usr/bin/env bash
# Installs the Windows build into a scratch prefix, builds the C and C++ hosts
# of the install test against it with the same toolchain (find_package, the
# import libraries, the exported data through dllimport), and the C host with
# the plain compiler line the README shows, and runs them under
# Wine with the installed DLLs beside them, as a Windows host ships them.
#
# usage: check_install.sh BUILD_DIR SOURCE_DIR RUNNER
set -euo pipefail
build=$1
source=$2
runner=$3
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() { echo "windows install check: $*"; exit 1; }

prefix=$scratch/tq
cmake --install "$build" --prefix "$prefix" >/dev/null
for name in TQColorSpace TQCPUBase TQMemProc; do
  test -f "$prefix/bin/$name.dll" || fail "missing bin/$name.dll"
  test -f "$prefix/lib/$name.lib" || fail "missing lib/$name.lib"
done
test -f "$prefix/include/TQColorSpace/TQColorSpace.h" || fail "missing the public headers"

cmake -S "$source/tests/install/consumer" -B "$scratch/consumer" -G Ninja \
  -DCMAKE_TOOLCHAIN_FILE="$source/cmake/toolchains/mingw-w64-x86_64.cmake" \
  -DTQColorSpace_DIR="$prefix/lib/cmake/TQColorSpace" >/dev/null
cmake --build "$scratch/consumer" >/dev/null
# The README's plain compiler line, through the import library.
x86_64-w64-mingw32-gcc "$source/tests/install/consumer/main.c" -I"$prefix/include" \
  -L"$prefix/lib" -lTQColorSpace -o "$scratch/consumer/plain.exe"
cp "$prefix"/bin/*.dll "$scratch/consumer/"
for host in consumer consumer_cxx plain; do
  set +e
  "$runner" "$scratch/consumer/$host.exe"
  rc=$?
  set -e
  [ $rc -ne 77 ] || exit 77  # no Wine: the runner has said so
  [ $rc -eq 0 ] || fail "$host.exe exited with $rc"
done
echo "windows install check passed"
