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
source_dir=$2
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
"$tqcs" --help >help.txt
grep -q "yuv444packed" help.txt || fail "--help lists no formats"
"$tqcs" convert --help >help-convert.txt
grep -q -- "--fields split" help-convert.txt || fail "convert --help"
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

# ---- the front door: findings of a fresh clone ---------------------------------------------
payload() { tail -c +"$(($(head -1 "$1" | wc -c) + 7))" "$1"; } # a one-frame Y4M's samples
header() { head -1 "$1"; }

# RGB to planar 4:2:2 with UHD: the library's planar drivers write nothing for
# UHD; the tool goes through packed 4:2:2 and gives its samples, never zeros.
"$tqcs" convert p24.png uhd.y4m --to yuv422p --matrix uhd >/dev/null
"$tqcs" convert p24.png uhd.yuyv --to yuyv422 --matrix uhd --out-range limited >/dev/null
"$tqcs" convert uhd.yuyv uhd2.y4m --from yuyv422 "${raw[@]}" --range limited >/dev/null
same uhd.y4m uhd2.y4m "RGB to yuv422p with UHD and through yuyv422"
"$tqcs" convert p24.png uhd-alias.y4m --to yuv422p --matrix bt2020 >/dev/null
same uhd.y4m uhd-alias.y4m "--matrix bt2020 and uhd"
"$tqcs" convert p24.png hd.y4m --to yuv422p --matrix hd >/dev/null
cmp -s uhd.y4m hd.y4m && fail "UHD and HD give the same samples"

# Ranges apply to the samples: a limited Y4M written full is expanded and tagged
# so; compressed again it comes back within a level.
"$tqcs" convert p444.y4m full444.y4m --range full >/dev/null
header full444.y4m | grep -q "XCOLORRANGE=FULL" || fail "--range full tag: $(header full444.y4m)"
cmp -s <(payload p444.y4m) <(payload full444.y4m) && fail "--range full left the samples as they were"
"$tqcs" convert full444.y4m lim444.yuv --out-range limited >/dev/null
payload p444.y4m >p444.yuv
within p444.yuv lim444.yuv 1 "limited -> full -> limited" --from yuv444p "${raw[@]}"
"$tqcs" convert p444.y4m p444-full.yuv --in-range full --out-range full >/dev/null
same p444.yuv p444-full.yuv "--in-range overrides the tag"
"$tqcs" convert p.yuv420p lim.png --from yuv420p "${raw[@]}" --in-range limited >/dev/null
"$tqcs" convert p.yuv420p fullin.png --from yuv420p "${raw[@]}" >/dev/null
cmp -s lim.png fullin.png && fail "--in-range limited changed nothing"
"$tqcs" convert p.yuv420p x.y4m --from yuv420p "${raw[@]}" | grep -q "full range (assumed: raw files state none)" ||
  fail "the summary does not say that raw YUV was taken as full range"

# Y4M fidelity: siting and interlace tags, defaults from the input, odd sizes.
sed '1s/C420mpeg2/C420paldv/' five.y4m >paldv.y4m
"$tqcs" convert paldv.y4m paldv-full.y4m --out-range full >/dev/null
header paldv-full.y4m | grep -q " C420paldv " || fail "siting tag lost: $(header paldv-full.y4m)"
"$tqcs" convert demo/pattern.png made.y4m >/dev/null
header made.y4m | grep -q " C420mpeg2 " || fail "the library's 4:2:0 tagged $(header made.y4m)"
"$tqcs" convert p.yuv420p tff.y4m --from yuv420p "${raw[@]}" --interlace t >/dev/null
"$tqcs" convert tff.y4m tff.yuv | grep -q "yuv420p (chroma per field), full" ||
  fail "the summary of interlaced 4:2:0"
"$tqcs" convert p.yuv420p p.y4m --from yuv420p "${raw[@]}" | grep -q "yuv420p (chroma on the frame)" ||
  fail "the summary of progressive 4:2:0"
"$tqcs" convert tff.y4m fields.y4m --fields split >/dev/null
for f in 1 2; do
  header "fields.f$f.y4m" | grep -q " Ip " || fail "field file $f: $(header "fields.f$f.y4m")"
done
"$tqcs" convert fields.y4m composed.y4m --fields compose >/dev/null
header composed.y4m | grep -q " It " || fail "composed frame: $(header composed.y4m)"
same tff.y4m composed.y4m "Y4M fields split and composed"
head -c $((128 * 72 * 2 * 2)) /dev/zero >ten.yuv
"$tqcs" convert ten.yuv ten.y4m --from yuv422p10le "${raw[@]}" >/dev/null
header ten.y4m | grep -q " C422p10 " || fail "raw yuv422p10le to Y4M: $(header ten.y4m)"
"$tqcs" convert ten.yuv ten8.y4m --from yuv422p10le "${raw[@]}" --to yuv422p >/dev/null
header ten8.y4m | grep -q " C422 " || fail "raw yuv422p10le to an 8-bit Y4M: $(header ten8.y4m)"
"$tqcs" convert p.uyvy422 uyvy.y4m --from uyvy422 "${raw[@]}" >/dev/null
header uyvy.y4m | grep -q " C422 " || fail "raw uyvy422 to Y4M: $(header uyvy.y4m)"
head -c $((15 * 8 * 3)) p.rgb >odd.rgb
"$tqcs" convert odd.rgb odd.y4m --from rgb24 --size 15x8 >/dev/null
test "$(payload odd.y4m | wc -c)" = $((15 * 8 + 2 * 8 * 4)) || fail "odd-width Y4M frame size"
"$tqcs" convert odd.y4m odd-copy.y4m --out-range limited >/dev/null
same odd.y4m odd-copy.y4m "odd-width Y4M copy"
"$tqcs" convert odd.rgb odd444.y4m --from rgb24 --size 15x8 --to yuv444p >/dev/null
"$tqcs" convert odd444.y4m odd-back.rgb --to rgb24 >/dev/null
within odd.rgb odd-back.rgb 5 "odd-width 4:4:4 round trip" --from rgb24 --size 15x8
head -c $((16 * 9 * 3)) p.rgb >oddh.rgb
expect_error "the library does not convert rgb24 to yuv420p" convert oddh.rgb out/x.y4m --from rgb24 --size 16x9
expect_error "the library does not convert yuv420p to" convert odd.y4m out/x.png

# Frames: several frames to .png go to numbered files; --start and --frames pick.
"$tqcs" convert five.y4m shot.png >/dev/null
for n in 1 2 3 4 5; do test -s "shot_000$n.png" || fail "no shot_000$n.png"; done
test -e shot.png && fail "shot.png written beside the numbered files"
"$tqcs" convert five.y4m second.png --start 1 --frames 1 >/dev/null
same shot_0002.png second.png "--start 1 --frames 1"
"$tqcs" convert five.y4m two.yuv --to yuv420p --start 3 --frames 9 >/dev/null
test "$(stat -c %s two.yuv)" = $((2 * 128 * 72 * 3 / 2)) || fail "--start 3 of five frames"
expect_error "five.y4m: --start 5 is past the last frame" convert five.y4m out/x.png --start 5
expect_error "bad --frames '0'" convert five.y4m out/x.png --frames 0

# The alpha of YUVA is a key: range scaling leaves it as it is.
"$tqcs" convert demo/pattern.png lim.yuva --to yuva --out-range limited >/dev/null
"$tqcs" compare p.yuva lim.yuva --from yuva "${raw[@]}" | grep -q '^ *3 *0 ' ||
  fail "--out-range limited changed the alpha of YUVA"
# compare: status 2 past --max
status=0
"$tqcs" compare p.yuva lim.yuva --from yuva "${raw[@]}" --max 1 >/dev/null || status=$?
test "$status" = 2 || fail "compare past --max exits with $status, not 2"
# bench: at least --reps timed runs, their median and spread
"$tqcs" bench --size 64x36 --from rgb24 --to yuv420p --reps 20 >bench.log
awk '$1 == "rgb24" && $2 == "yuv420p" { found = $5 >= 20 && $6 ~ /%$/ } END { exit !found }' bench.log ||
  fail "bench: $(cat bench.log)"
# raw frames of odd width hold the library's layout: chroma rows of width / 2
"$tqcs" convert odd.rgb odd.yuv422p --from rgb24 --size 15x8 --to yuv422p >/dev/null
test "$(stat -c %s odd.yuv422p)" = $((15 * 8 + 2 * 7 * 8)) || fail "raw yuv422p of width 15"

# ---- every example of the README and of each --help, as printed --------------------------------
examples=$scratch/examples
mkdir "$examples"
(
  cd "$examples"
  "$tqcs" demo --out pattern --size 640x360 >/dev/null
  "$tqcs" convert pattern/pattern.png photo.png --to rgb24 >/dev/null
  cp photo.png in.png && cp pattern/pattern.png a.png
  "$tqcs" convert a.png a.yuva --to yuva --range full >/dev/null
  "$tqcs" convert a.yuva b.png --from yuva --size 640x360 --to rgba >/dev/null
  "$tqcs" convert photo.png one.y4m >/dev/null
  { cat one.y4m; printf 'FRAME\n'; payload one.y4m; printf 'FRAME\n'; payload one.y4m; } >clip.y4m
  cp clip.y4m in.y4m
  head -c $((1920 * 1080 * 2)) /dev/zero >clip.yuv && cp clip.yuv cam.yuv
  head -c $((720 * 576 * 3 / 2)) /dev/zero >frame.yuv && cp frame.yuv a.yuv && cp frame.yuv b.yuv
  head -c $((2 * 3840 * 2160 * 3)) /dev/zero >in10.yuv
  head -c $((5120 * 1080)) /dev/zero >cap.v210
  head -c $((1920 * 1080 * 6)) /dev/zero >grade.rgb48
  head -c $((1920 * 1080 * 3)) /dev/zero >film.yuv
  "$tqcs" convert cap.v210 clip10.y4m --from v210 --size 1920x1080 >/dev/null
)
run_examples() { # WHERE: runs each example line read from stdin in the examples folder
  while IFS= read -r line; do
    line=${line%%#*}
    [ -n "${line// /}" ] || continue
    (cd "$examples" && PATH="$(dirname "$tqcs"):$PATH" eval "$line" >/dev/null 2>"$scratch/example.err") ||
      fail "example of $1 fails: $line: $(cat "$scratch/example.err")"
  done
}
awk '/^## The command-line tool: tqcs/ { found = 1 } found && /^```sh$/ { inside = 1; next }
     inside && /^```$/ { exit } inside' "$source_dir/README.md" >readme-examples
test "$(grep -c '^tqcs ' readme-examples)" -ge 10 || fail "the README's tqcs examples were not found"
run_examples README <readme-examples
# the README's round trip from an RGBA photo (the demo's pictures have alpha): colour compared
(cd "$examples" && "$tqcs" convert pattern/pattern.png rgba444.y4m --to yuv444p >/dev/null &&
  "$tqcs" convert rgba444.y4m rgba-back.png >/dev/null &&
  "$tqcs" compare pattern/pattern.png rgba-back.png --max 5 | grep -q 'alpha not compared') ||
  fail "compare of an RGBA picture with its RGB round trip"
for command in "" convert demo bench info compare; do
  # shellcheck disable=SC2086
  "$tqcs" $command --help | sed -n '/^examples:/,$p' | grep -E '^  ' |
    run_examples "tqcs $command --help"
done
for n in 1 2; do test -s "$examples/out_000$n.png" || fail "the README's 10-bit example: no out_000$n.png"; done
header "$examples/film.y4m" | grep -q " It .*C420p10" ||
  fail "the README's interlaced 10-bit example: $(header "$examples/film.y4m")"
for n in 1 2 3; do test -s "$examples/frame_000$n.png" || fail "convert --help: no frame_000$n.png"; done

if [ "$failures" -ne 0 ]; then
  echo "$failures check(s) failed"
  exit 1
fi
echo "tqcs end-to-end checks passed"
