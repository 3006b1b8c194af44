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

# Runs a C snippet of the README as printed there: the first ```c block after
# the paragraph that starts with $1, inside main() between the declarations
# ($3, one line each) and the test of its results ($4, main's return value).
# $2 names a call the snippet must make.
readme_host() {
  local name=$1 marker=$2 call=$3 declarations=$4 check=$5
  awk -v marker="$marker" 'index($0, marker) == 1 { found = 1 }
       found && /^```c$/ { inside = 1; next }
       inside && /^```$/ { exit }
       inside' "$source_dir/README.md" >"$scratch/$name.snippet"
  grep -q "$call" "$scratch/$name.snippet" || fail "no $name snippet found in README.md"
  {
    grep '^#include' "$scratch/$name.snippet"
    echo '#include <stdint.h>'
    echo 'int main(void) {'
    printf '%s\n' "$declarations"
    grep -v '^#include' "$scratch/$name.snippet" | sed 's/^/  /'
    echo "  return $check ? 0 : 1;"
    echo '}'
  } >"$scratch/$name.c"
  cc -std=c99 -pedantic -Wall -Werror "$scratch/$name.c" -o "$scratch/$name" \
    $(pkg-config --cflags --libs TQColorSpace)
  "$scratch/$name" || fail "the README's $name does not convert as its comments say"
}

# A pure blue pixel pair, B,G,R bytes, through both calls of the snippet must
# come out as YUYV (luma first) of blue.
readme_host "C host" "A C host converts through the typed tables" TCS_GetAPIStuPtr \
  '  uint8_t src[6] = {255, 0, 0, 255, 0, 0}, dst[4] = {0};
  const int64_t srcPitch = 6, dstPitch = 4;
  const int32_t width = 2, height = 1;' \
  'dst[0] < 30 && dst[2] < 30 && dst[1] > 200 && dst[3] > 100 && dst[3] < 140'

# One V210 group of six pixels whose samples are their own index (U0 Y0 V0 Y1
# U1 Y2 V1 Y3 U2 Y4 V2 Y5) must come out as 10-bit planar samples (value << 6).
readme_host "deep-colour host" "Deep colour, semi-planar and progressive 4:2:0" \
  TCS_ColorConvFrameEx \
  '  uint8_t v210[16] = {0};
  uint16_t ys[6], us[3], vs[3];
  uint8_t *y = (uint8_t *)ys, *u = (uint8_t *)us, *v = (uint8_t *)vs;
  const uint32_t words[4] = {0 | 1 << 10 | 2 << 20, 3 | 4 << 10 | 5 << 20,
                             6 | 7 << 10 | 8 << 20, 9 | 10 << 10 | 11 << 20};
  for (int i = 0; i < 16; ++i) v210[i] = (uint8_t)(words[i / 4] >> (8 * (i % 4)));
  const int64_t v210Pitch = 16, yPitch = 12, uPitch = 6, vPitch = 6;
  const int32_t width = 6, height = 1;' \
  'ys[0] == 1 << 6 && us[0] == 0 && vs[0] == 2 << 6 && ys[5] == 11 << 6 && us[2] == 8 << 6'
echo "install check passed"
