#!/usr/bin/env bash
# End-to-end checks of the installed tqcs: installs the build into a scratch
# prefix and runs bin/tqcs from there, with no LD_LIBRARY_PATH.
#
# Error bounds (largest difference of an 8-bit sample):
#   exact (0): RGB24 <-> RGB32 repacking, same-format copies, field split then
#     compose, a flip applied twice, any thread count.
#   1: a grey picture through the 4:2:x layouts: its chroma is neutral, so the
#     only loss is the rounding of Y (half a step) on the way in.
#   2: full-range YUV 4:4:4 and back: Y, U and V are each rounded once (half a
#     step); the largest coefficient back to RGB (1.86, HD Cb to B) makes that
#     0.5 + 1.86 x 0.5 = 1.43 before the final rounding.
#   5: limited-range Y4M 4:4:4 and back: each of Y, U and V is rounded three
#     times (RGB to YUV, compress to 16-235/240, expand) and the range steps are
#     255/219 and 255/224 wide, about 1.6 in all; 1.6 + 1.86 x 1.6 = 4.6.
set -euo pipefail
build_dir=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cmake --install "$build_dir" --prefix "$scratch/prefix" >/dev/null
unset LD_LIBRARY_PATH
tqcs=$scratch/prefix/bin/tqcs
work=$scratch/work
mkdir "$work"
cd "$work"
failures=0
fail() {
  echo "FAIL: $*"
  failures=$((failures + 1))
}
same() { cmp -s "$1" "$2" || fail "$3: $1 and $2 differ"; }
within() { # A B BOUND WHAT [compare options]
  local a=$1 b=$2 bound=$3 what=$4
  shift 4
  "$tqcs" compare "$a" "$b" --max "$bound" "$@" >compare.log || {
    cat compare.log
    fail "$what: difference above $bound"
  }
}

# ---- demo and help ----------------------------------------------------------------
"$tqcs" demo --out demo --size 128x72 >demo.log || fail "demo"
for f in pattern contact-sheet yuv420p gray hsv alpha; do
  test -s "demo/$f.png" || fail "demo wrote no $f.png"
done
grep -q "^yuv420p " demo.log || fail "demo prints no row for yuv420p"
"$tqcs" --help | grep -q "yuv444packed" || fail "--help lists no formats"
"$tqcs" convert --help | grep -q -- "--fields split" || fail "convert --help"
"$tqcs" info | grep -q "kernel tier" || fail "info"
TCB_CPU_LEVEL=4 "$tqcs" info | grep -q "kernel tier: *sse41" || fail "info at level 4"

# ---- exact round trips -----------------------------------------------------------------
raw=(--size 128x72)
"$tqcs" convert demo/pattern.png p.rgb --to rgb24
"$tqcs" convert p.rgb p.bgra --from rgb24 "${raw[@]}" --to bgra
"$tqcs" convert p.bgra p2.rgb --from bgra "${raw[@]}" --to rgb24
same p.rgb p2.rgb "rgb24 -> bgra -> rgb24"
for fmt in bgra rgba yuva bgr24 rgb24 yuv444packed yuyv422 uyvy422 yuv422p yuv420p yuv444p alpha; do
  "$tqcs" convert demo/pattern.png "p.$fmt" --to "$fmt" --range full
  "$tqcs" convert "p.$fmt" "copy.$fmt" --from "$fmt" "${raw[@]}"
  same "p.$fmt" "copy.$fmt" "$fmt copy"
  case $fmt in alpha | yuv444p) continue ;; esac
  "$tqcs" convert "p.$fmt" "fld.$fmt" --from "$fmt" "${raw[@]}" --fields split
  "$tqcs" convert "fld.$fmt" "back.$fmt" --from "$fmt" "${raw[@]}" --fields compose
  same "p.$fmt" "back.$fmt" "$fmt split then compose"
done
"$tqcs" convert p.rgb flip1.rgb --from rgb24 "${raw[@]}" --flip
"$tqcs" convert flip1.rgb flip2.rgb --from rgb24 "${raw[@]}" --flip
same p.rgb flip2.rgb "flip twice"
cmp -s p.rgb flip1.rgb && fail "flip changed nothing"

# Several frames: identical bytes for every thread count, frames in order.
cat p.yuv420p copy.yuv420p p.yuv420p p.yuv420p p.yuv420p >five.yuv
"$tqcs" convert five.yuv five.y4m --from yuv420p "${raw[@]}"
test "$(grep -c FRAME five.y4m)" = 5 || fail "five frames expected in five.y4m"
for n in 1 2 3; do
  "$tqcs" convert five.y4m "five-$n.bgra" --to bgra --threads "$n"
done
same five-1.bgra five-2.bgra "--threads 1 and 2"
same five-1.bgra five-3.bgra "--threads 1 and 3"
"$tqcs" convert five.y4m five-again.yuv --to yuv420p
same five.yuv five-again.yuv "raw -> y4m -> raw, full range kept"

# ---- close round trips --------------------------------------------------------------------
"$tqcs" convert demo/pattern.png p24.png --to rgb24
for fmt in yuva yuv444packed yuv444p; do
  "$tqcs" convert "p.$fmt" "back-$fmt.png" --from "$fmt" "${raw[@]}" --to rgb24
  within p24.png "back-$fmt.png" 2 "full-range $fmt round trip"
done
"$tqcs" convert demo/pattern.png p444.y4m --to yuv444p
head -1 p444.y4m | grep -q "C444 XCOLORRANGE=LIMITED" || fail "Y4M header: $(head -1 p444.y4m)"
"$tqcs" convert p444.y4m back444.png
within p24.png back444.png 5 "limited Y4M 4:4:4 round trip"
"$tqcs" convert demo/pattern.png grey.png --to gray
for fmt in yuyv422 uyvy422 yuv422p yuv420p; do
  "$tqcs" convert grey.png "grey.$fmt" --to "$fmt"
  "$tqcs" convert "grey.$fmt" "grey-$fmt.png" --from "$fmt" "${raw[@]}" --to rgb24
  "$tqcs" convert grey.png grey24.png --to rgb24
  within grey24.png "grey-$fmt.png" 1 "grey through $fmt"
done

# ---- bad input: one line naming the problem, status 1, no output left ------------------------
head -c 1000 p.rgb >short.rgb
printf 'YUV4MPEG2 W16' >trunc-header.y4m
printf 'YUV4MPEG2 W16 Hx\n' >bad-header.y4m
printf 'YUV4MPEG2 W16 H8 C444\nFRAME\nabc' >trunc-frame.y4m
printf 'YUV4MPEG2 W16 H8 C444\nFRAMX\n' >bad-frame.y4m
printf 'not a png at all' >bad.png
{ head -c $(($(stat -c %s five.y4m) - 100)) five.y4m; } >cut.y4m
expect_error() { # MESSAGE ARGS...
  local message=$1
  shift
  mkdir -p out && rm -rf out/* out/.[!.]* 2>/dev/null || true
  local status=0
  "$tqcs" "$@" 2>err.log >/dev/null || status=$?
  if [ "$status" -ne 1 ]; then fail "status $status for: $*"; fi
  if [ "$(wc -l <err.log)" -ne 1 ] || ! grep -q -- "$message" err.log; then
    fail "expected one line with '$message' for: $* (got: $(cat err.log))"
  fi
  if [ -n "$(ls -A out)" ]; then fail "output left behind for: $*: $(ls -A out)"; fi
}
expect_error "unknown format name 'rgb48'" convert p.rgb out/x.rgb --from rgb48 "${raw[@]}"
expect_error "bad size '128'" convert p.rgb out/x.rgb --from rgb24 --size 128
expect_error "short.rgb: size 128x72 rgb24 (27648 bytes a frame) does not match the file (1000 bytes)" \
  convert short.rgb out/x.rgb --from rgb24 "${raw[@]}"
expect_error "trunc-header.y4m: truncated Y4M header" convert trunc-header.y4m out/x.png
expect_error "bad-header.y4m: malformed Y4M header: bad Hx" convert bad-header.y4m out/x.png
expect_error "trunc-frame.y4m: truncated Y4M frame 1" convert trunc-frame.y4m out/x.png
expect_error "bad-frame.y4m: malformed Y4M frame header at frame 1" convert bad-frame.y4m out/x.png
expect_error "cut.y4m: truncated Y4M frame 5" convert cut.y4m out/x.y4m
expect_error "bad.png: not a readable PNG" convert bad.png out/x.y4m
expect_error "missing.png: cannot open\|missing.png: not a readable PNG" convert missing.png out/x.y4m
expect_error "raw input needs --from" convert p.rgb out/x.png
expect_error "a Y4M file holds" convert p24.png out/x.y4m --to rgb24
expect_error "unknown option --colour" convert p24.png out/x.png --colour red
head -c 150 p.rgb >odd.rgb
expect_error "odd.rgb: --fields needs an even frame height" convert odd.rgb out/x.rgb \
  --from rgb24 --size 10x5 --fields split

if [ "$failures" -ne 0 ]; then
  echo "$failures check(s) failed"
  exit 1
fi
echo "tqcs end-to-end checks passed"
