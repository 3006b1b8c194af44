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

# pkg-config, from the moved prefix: its flags alone give a host that starts
export PKG_CONFIG_PATH=$lib/pkgconfig
test "$(cd "$(pkg-config --variable=libdir TQColorSpace)" && pwd -P)" = "$(cd "$lib" && pwd -P)" ||
  fail "pkg-config does not follow the moved prefix"
cc -std=c99 -pedantic -Wall -Werror "$source_dir/tests/install/consumer/main.c" -o "$scratch/pc_c" \
  $(pkg-config --cflags --libs TQColorSpace)
c++ -std=c++17 -Wall -Werror "$source_dir/tests/install/consumer/main.cpp" -o "$scratch/pc_cxx" \
  $(pkg-config --cflags --libs TQColorSpace)
"$scratch/pc_c" || fail "a host built with pkg-config's flags does not start"
"$scratch/pc_cxx" || fail "a C++ host built with pkg-config's flags does not start"

# The README's C host, as printed there: a pure blue pixel pair, B,G,R bytes,
# through both calls of the snippet must come out as YUYV (luma first) of blue.
awk '/^A C host converts through the typed tables/ { found = 1 }
     found && /^```c$/ { inside = 1; next }
     inside && /^```$/ { exit }
     inside' "$source_dir/README.md" >"$scratch/snippet.c"
grep -q TCS_GetAPIStuPtr "$scratch/snippet.c" || fail "no C host snippet found in README.md"
{
  grep '^#include' "$scratch/snippet.c"
  echo '#include <stdint.h>'
  echo 'int main(void) {'
  echo '  uint8_t src[6] = {255, 0, 0, 255, 0, 0}, dst[4] = {0};'
  echo '  const int64_t srcPitch = 6, dstPitch = 4;'
  echo '  const int32_t width = 2, height = 1;'
  grep -v '^#include' "$scratch/snippet.c"
  echo '  return dst[0] < 30 && dst[2] < 30 && dst[1] > 200 && dst[3] > 100 && dst[3] < 140 ? 0 : 1;'
  echo '}'
} >"$scratch/readme_host.c"
cc -std=c99 -pedantic -Wall -Werror "$scratch/readme_host.c" -o "$scratch/readme_host" \
  $(pkg-config --cflags --libs TQColorSpace)
"$scratch/readme_host" || fail "the README's C host does not convert as its comments say"
echo "install check passed"
