#!/usr/bin/env bash
# Installs the build into a scratch prefix, then builds and runs a C host
# against it through find_package, and checks the pkg-config file.
set -euo pipefail
build_dir=$1
source_dir=$2
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build_dir" --prefix "$prefix" >/dev/null
for lib in libTQColorSpace.so libTQCPUBase.so libTQMemProc.so; do
  test -f "$prefix/lib/$lib" || { echo "missing lib/$lib"; exit 1; }
done
# Only public symbols are exported.
if nm -D --defined-only "$prefix/lib/libTQColorSpace.so" | grep -q ' T _ZN'; then
  echo "internal C++ symbols are exported"; exit 1
fi
cmake -S "$source_dir/tests/install/consumer" -B "$prefix/consumer" -G Ninja \
  -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$prefix/consumer" >/dev/null
LD_LIBRARY_PATH="$prefix/lib" "$prefix/consumer/consumer"
PKG_CONFIG_PATH="$prefix/lib/pkgconfig" pkg-config --libs TQColorSpace | grep -q -- -lTQColorSpace
echo "install check passed"
