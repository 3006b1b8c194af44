#!/usr/bin/env bash
# Installs the build into a scratch prefix, moves the prefix elsewhere (the
# install must be relocatable), then builds a C99 and a C++ host against it
# through find_package and through pkg-config and runs them with no
# LD_LIBRARY_PATH: the hosts' rpath and the libraries' own $ORIGIN run path
# must be enough.
set -euo pipefail
build_dir=$1
source_dir=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cmake --install "$build_dir" --prefix "$scratch/staged" >/dev/null
mv "$scratch/staged" "$scratch/opt-tq"
prefix=$scratch/opt-tq
lib=$prefix/lib
unset LD_LIBRARY_PATH

fail() { echo "install check: $*"; exit 1; }
for name in TQColorSpace TQCPUBase TQMemProc; do
  test -f "$lib/lib$name.so.1.0.0" || fail "missing lib/lib$name.so.1.0.0"
  test "$(readlink "$lib/lib$name.so.1")" = "lib$name.so.1.0.0" || fail "lib$name.so.1 link"
  test "$(readlink "$lib/lib$name.so")" = "lib$name.so.1" || fail "lib$name.so link"
  readelf -d "$lib/lib$name.so" | grep -q "SONAME.*\[lib$name.so.1\]" || fail "soname of $name"
  readelf -d "$lib/lib$name.so" | grep -q 'R.*PATH.*\[\$ORIGIN\]' || fail "run path of $name"
done
readelf -d "$prefix/bin/tqcs" | grep -q 'R.*PATH.*\[\$ORIGIN/../lib\]' || fail "run path of tqcs"
"$prefix/bin/tqcs" info | grep -q "load state: *loaded" || fail "installed tqcs does not load"
# Only public symbols are exported: no C++ names, not even the unique symbols
# of inline functions.
for name in TQColorSpace TQCPUBase TQMemProc; do
  if nm -D --defined-only "$lib/lib$name.so" | grep -q ' _Z'; then
    fail "lib$name.so exports C++ symbols"
  fi
done

# find_package
cmake -S "$source_dir/tests/install/consumer" -B "$scratch/consumer" -G Ninja \
  -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$scratch/consumer" >/dev/null
"$scratch/consumer/consumer"
"$scratch/consumer/consumer_cxx"

# pkg-config, from the moved prefix
export PKG_CONFIG_PATH=$lib/pkgconfig
test "$(cd "$(pkg-config --variable=libdir TQColorSpace)" && pwd -P)" = "$(cd "$lib" && pwd -P)" ||
  fail "pkg-config does not follow the moved prefix"
cc -std=c99 -pedantic -Wall -Werror "$source_dir/tests/install/consumer/main.c" -o "$scratch/pc_c" \
  $(pkg-config --cflags --libs TQColorSpace) -Wl,-rpath,"$lib"
c++ -std=c++17 -Wall -Werror "$source_dir/tests/install/consumer/main.cpp" -o "$scratch/pc_cxx" \
  $(pkg-config --cflags --libs TQColorSpace) -Wl,-rpath,"$lib"
"$scratch/pc_c"
"$scratch/pc_cxx"
echo "install check passed"
