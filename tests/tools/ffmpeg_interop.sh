#!/usr/bin/env bash
# The installed tqcs against ffmpeg: ffmpeg reads the Y4M files tqcs writes and
# tqcs reads the ones ffmpeg writes (an interlaced one too); levels, matrix and
# range must agree.
#
# The picture is a smooth sine pattern in red and green, so the two programs' different
# chroma filters meet only small slopes. ffmpeg runs with accurate rounding and
# full chroma interpolation, and both sides use BT.601 (ffmpeg's default for an
# untagged stream), limited range (the XCOLORRANGE tag).
# Bounds (largest difference of an 8-bit RGB sample):
#   3 for 4:4:4: each side rounds Y, U and V once in its own fixed point (Q14
#     here, 15-bit there); half a step on Y and on Cb, the latter times 1.77 to
#     B, plus the 255/219 range step: 0.6 + 1.77 x 0.6 = 1.7, and the final
#     rounding of each side.
#   5 for 4:2:0: in addition each side interpolates the quarter-size chroma
#     with its own filter and siting; on this picture (a chroma slope of at
#     most 2.5 levels a pixel) they differ by up to about one chroma step,
#     which adds one or two levels to the 4:4:4 bound.
set -euo pipefail
# shellcheck source=tests/tools/ffmpeg_setup.sh
source "$(dirname "$0")/ffmpeg_setup.sh"
within() { # A B BOUND WHAT
  "$tqcs" compare "$1" "$2" --max "$3" >compare.log || {
    cat compare.log
    fail "$4: difference above $3"
  }
}

ff -f lavfi -i color=s=320x180 -frames:v 1 \
  -vf "format=rgb24,geq=r='128+100*sin(X/40)':g='128+100*cos(Y/30)':b='128'" src.png

# tqcs writes, ffmpeg reads.
for chroma in yuv444p yuv420p; do
  "$tqcs" convert src.png "t-$chroma.y4m" --to "$chroma" --matrix sd
  ff -i "t-$chroma.y4m" "${sws[@]}" -pix_fmt rgb24 "t-$chroma-ff.png"
  bound=5
  [ "$chroma" = yuv444p ] && bound=3
  within src.png "t-$chroma-ff.png" "$bound" "ffmpeg reading tqcs's $chroma"
done
# Three frames: ffmpeg sees them all.
cat t-yuv420p.y4m >three.y4m
tail -c +"$(($(head -1 t-yuv420p.y4m | wc -c) + 1))" t-yuv420p.y4m >frame.bin
cat frame.bin frame.bin >>three.y4m
test "$(ff -i three.y4m -f framecrc - | grep -c '^0,')" = 3 || fail "ffmpeg counts the frames"

# ffmpeg writes, tqcs reads: progressive 4:2:0 and 4:2:2, and interlaced 4:2:0.
ff -i src.png "${sws[@]}" -pix_fmt yuv420p f420.y4m
ff -i src.png "${sws[@]}" -pix_fmt yuv422p f422.y4m
ff -i src.png "${sws[@]}" -pix_fmt yuv420p -field_order tt fi.y4m
head -1 fi.y4m | grep -q " It " || fail "ffmpeg wrote no interlaced header: $(head -1 fi.y4m)"
for name in f420 f422 fi; do
  "$tqcs" convert "$name.y4m" "$name-t.png" --matrix sd
  ff -i "$name.y4m" "${sws[@]}" -pix_fmt rgb24 "$name-ff.png"
  within "$name-ff.png" "$name-t.png" 5 "tqcs reading ffmpeg's $name.y4m"
done

# 10-bit raw frames in ffmpeg's layout. Bound 6: the library keeps the top 8
# of the 10 bits (truncating, up to 0.75 of a level) before the 4:2:x bound.
for fmt in yuv420p10le yuv422p10le; do
  ff -i src.png "${sws[@]}" -pix_fmt "$fmt" -f rawvideo "$fmt.raw"
  "$tqcs" convert "$fmt.raw" "$fmt-t.png" --from "$fmt" --size 320x180 --range limited --matrix sd
  ff -f rawvideo -pix_fmt "$fmt" -s 320x180 -i "$fmt.raw" "${sws[@]}" -pix_fmt rgb24 "$fmt-ff.png"
  within "$fmt-ff.png" "$fmt-t.png" 6 "tqcs reading ffmpeg's $fmt"
done

# The interlace field and the range survive tqcs, and ffmpeg sees them.
"$tqcs" convert fi.y4m fi-t.y4m
head -1 fi-t.y4m | grep -q " It .*XCOLORRANGE=LIMITED" || fail "header: $(head -1 fi-t.y4m)"
probe=$(ffprobe -v error -show_entries stream=field_order,color_range -of csv=p=0 fi-t.y4m)
[ "$probe" = "tv,tt" ] || [ "$probe" = "tt,tv" ] || fail "ffprobe sees '$probe'"
ff -i fi-t.y4m "${sws[@]}" -pix_fmt rgb24 fi-t-ff.png
within fi-ff.png fi-t-ff.png 0 "a Y4M copy through tqcs"

# A full-range Y4M from tqcs keeps its levels through ffmpeg.
"$tqcs" convert src.png full.y4m --to yuv444p --range full --matrix sd
head -1 full.y4m | grep -q "XCOLORRANGE=FULL" || fail "header: $(head -1 full.y4m)"
ff -i full.y4m "${sws[@]}" -pix_fmt rgb24 full-ff.png
within src.png full-ff.png 3 "ffmpeg reading a full-range Y4M"

# Odd widths: tqcs writes the extra chroma column ffmpeg's layout has, and the
# 4:2:0 the library makes (chroma of the even pixel, centred between rows) is
# tagged as such; ffmpeg reads the picture back within the 4:2:0 bound and an
# edge column's worth more.
ff -i src.png -vf crop=319:180:0:0 odd.png
"$tqcs" convert odd.png odd.y4m --matrix sd >/dev/null
probe=$(ffprobe -v error -show_entries stream=width,chroma_location -of csv=p=0 odd.y4m)
[ "$probe" = "319,left" ] || fail "ffprobe sees '$probe' in tqcs's odd-width Y4M"
ff -i odd.y4m "${sws[@]}" -pix_fmt rgb24 odd-ff.png
within odd.png odd-ff.png 6 "ffmpeg reading tqcs's odd-width Y4M"

finish "ffmpeg interop checks"
