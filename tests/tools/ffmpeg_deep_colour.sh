#!/usr/bin/env bash
# The installed tqcs against ffmpeg in deep colour: raw frames under ffmpeg's
# pixel-format names and 10-bit Y4M files, read and written by both programs.
#
# Exact (byte for byte, or sample for sample):
#   - v210 that ffmpeg writes, converted to yuv422p10le, is ffmpeg's own decoding
#     of the file; to yuv422p16le the same ten bits sit in bits 6-15; back to
#     v210, ffmpeg decodes the same samples (and the file is ffmpeg's, padding
#     of the rows to 48-pixel groups included).
#   - y210le (ffmpeg reads it only), p010le, yuv420p16le and 10-bit Y4M (C420p10,
#     C422p10): pure repacks of ffmpeg's 10-bit planar samples, both ways.
#   - rgb48le, bgr48le, rgba64le, bgra64le: repacks of RGB with ten significant
#     bits (the library's 16-bit RGB keeps bits 6-15), both ways, compared as
#     rgb48le.
#   - 10-bit to 8-bit is the truncation v >> 2 (the library's rule).
#   - interlaced 10-bit 4:2:0 (Y4M It) whose two fields have different colours:
#     to 4:2:2 and to rgba64le, each field of the result is the conversion of
#     that field alone, so no chroma of one field reaches the other.
# Within a bound (ten-bit levels), on a smooth picture whose R changes by at
# most 2.4 levels a pixel along the rows (4:2:2 halves chroma along them):
#   2: RGB48 to 10-bit 4:2:2 against ffmpeg's conversion: each side rounds Y,
#     U and V once in its own fixed point (Q14 here, 15 bits there) and filters
#     chroma with its own taps, which on this slope differ by under a level.
#   3: RGB48 to 10-bit 4:2:2 and back: a pixel's chroma is its pair's, up to
#     half of 1.2 levels of Cr away, times 1.57 back to R (HD), plus half a
#     level of Y and of Cr rounding (0.5 + 1.57 x 0.5): 2.3 before the last
#     rounding. The float model of tests/tools/conversions_test.cpp holds
#     every deep-colour pair of the tool to the same textbook arithmetic.
set -euo pipefail
# shellcheck source=tests/tools/ffmpeg_setup.sh
source "$(dirname "$0")/ffmpeg_setup.sh"
same() { cmp -s "$1" "$2" || fail "$3: $1 and $2 differ"; }
# A width of v210 groups (6 pixels) that is not one of ffmpeg's 48-pixel row groups.
w=360 h=200 size=360x200
raw() { # FORMAT IN OUT [TO]: ffmpeg's conversion of a raw frame
  ff -f rawvideo -pix_fmt "$1" -s "$size" -i "$2" -pix_fmt "${4:-$1}" -f rawvideo "$3"
}
to() { # IN FROM OUT TO [options]: tqcs on raw frames of $size
  local in=$1 from=$2 out=$3 format=$4
  shift 4
  "$tqcs" convert "$in" "$out" --from "$from" --to "$format" --size "$size" "$@" >/dev/null ||
    fail "tqcs $from to $format"
}
# Whether the 16-bit samples of A are those of B times FACTOR.
scaled() { # A B FACTOR WHAT
  paste <(od -An -v -tu2 -w2 "$1") <(od -An -v -tu2 -w2 "$2") |
    awk -v f="$3" '$1 != $2 * f { bad++ } END { exit bad > 0 }' || fail "$4"
}

# ---- 4:2:2: v210, y210le, yuv422p16le -----------------------------------------
ff -f lavfi -i "testsrc2=s=$size" -frames:v 1 -pix_fmt yuv422p10le -f rawvideo ref422.raw
ff -f rawvideo -pix_fmt yuv422p10le -s "$size" -i ref422.raw -c:v v210 -f rawvideo pic.v210
ff -f v210 -s "$size" -i pic.v210 -pix_fmt yuv422p10le -f rawvideo ff422.raw
to pic.v210 v210 t422.raw yuv422p10le
same t422.raw ff422.raw "v210 to yuv422p10le against ffmpeg's decoding"
to pic.v210 v210 t16.raw yuv422p16le
scaled t16.raw ff422.raw 64 "v210 to yuv422p16le: ffmpeg's samples in bits 6-15"
to t422.raw yuv422p10le back.v210 v210
ff -f v210 -s "$size" -i back.v210 -pix_fmt yuv422p10le -f rawvideo back422.raw
same back422.raw ff422.raw "yuv422p10le to v210, decoded by ffmpeg"
same back.v210 pic.v210 "tqcs's v210 against ffmpeg's"
to t16.raw yuv422p16le t.y210 y210le
raw y210le t.y210 y210-ff.raw yuv422p10le
same y210-ff.raw ff422.raw "yuv422p16le to y210le, decoded by ffmpeg"
to t.y210 y210le y210.v210 v210
same y210.v210 pic.v210 "y210le to v210"
to ff422.raw yuv422p10le t8.raw yuv422p
od -An -v -tu1 -w1 t8.raw >t8.txt
od -An -v -tu2 -w2 ff422.raw | paste - t8.txt | awk '$2 != int($1 / 4) { bad++ } END { exit bad > 0 }' ||
  fail "yuv422p10le to yuv422p is v >> 2"

# ---- 4:2:0: p010le, yuv420p16le, 10-bit Y4M ----------------------------------------
ff -f lavfi -i "testsrc2=s=$size" -frames:v 1 -pix_fmt yuv420p10le -f rawvideo ref420.raw
raw yuv420p10le ref420.raw ff.p010 p010le
to ff.p010 p010le p010-t.raw yuv420p10le
same p010-t.raw ref420.raw "ffmpeg's p010le to yuv420p10le"
to ref420.raw yuv420p10le t.p010 p010le
same t.p010 ff.p010 "yuv420p10le to p010le against ffmpeg's"
to ref420.raw yuv420p10le t420-16.raw yuv420p16le
scaled t420-16.raw ref420.raw 64 "yuv420p10le to yuv420p16le: bits 6-15"
to t420-16.raw yuv420p16le t420-back.raw yuv420p10le
same t420-back.raw ref420.raw "yuv420p16le to yuv420p10le"
ff -f rawvideo -pix_fmt yuv420p10le -s "$size" -i ref420.raw -strict -1 ff420.y4m
"$tqcs" convert ff420.y4m y4m-t.raw --to yuv420p10le >/dev/null
same y4m-t.raw ref420.raw "ffmpeg's C420p10 Y4M read by tqcs"
"$tqcs" convert ref420.raw t420.y4m --from yuv420p10le --size "$size" >/dev/null
head -1 t420.y4m | grep -q " C420p10 " || fail "tqcs's 10-bit Y4M header: $(head -1 t420.y4m)"
ff -i t420.y4m -pix_fmt yuv420p10le -f rawvideo t420-ff.raw
same t420-ff.raw ref420.raw "tqcs's C420p10 Y4M read by ffmpeg"
"$tqcs" convert pic.v210 t422.y4m --from v210 --size "$size" >/dev/null
ff -i t422.y4m -pix_fmt yuv422p10le -f rawvideo t422-ff.raw
same t422-ff.raw ff422.raw "v210 to a C422p10 Y4M read by ffmpeg"

# ---- RGB with ten significant bits --------------------------------------------------
keep10="bitand(val,65472)"
ff -f lavfi -i "testsrc2=s=$size" -frames:v 1 \
  -vf "format=rgb48le,lutrgb=r='$keep10':g='$keep10':b='$keep10'" -f rawvideo -pix_fmt rgb48le m.rgb48
for format in rgba64le bgra64le bgr48le; do
  to m.rgb48 rgb48le "t.$format" "$format"
  raw "$format" "t.$format" "$format-ff.rgb48" rgb48le
  same "$format-ff.rgb48" m.rgb48 "rgb48le to $format, read by ffmpeg"
  to "t.$format" "$format" "$format-back.rgb48" rgb48le
  same "$format-back.rgb48" m.rgb48 "rgb48le to $format and back"
done
raw rgb48le m.rgb48 ff.rgba64 rgba64le
to ff.rgba64 rgba64le ff-t.rgb48 rgb48le
same ff-t.rgb48 m.rgb48 "ffmpeg's rgba64le to rgb48le"

# ---- RGB48 to 10-bit 4:2:2 and back, against ffmpeg's matrix -----------------------------
ff -f lavfi -i "color=s=$size" -frames:v 1 \
  -vf "format=rgb48le,geq=r='32768+12000*sin(X/80)':g='32768+20000*cos(Y/30)':b='32768'" \
  -f rawvideo -pix_fmt rgb48le smooth.rgb48
ff -f rawvideo -pix_fmt rgb48le -s "$size" -i smooth.rgb48 "${sws[@]}" \
  -vf "scale=out_color_matrix=bt709:out_range=full" -pix_fmt yuv422p10le -f rawvideo smooth-ff.raw
to smooth.rgb48 rgb48le smooth-t.raw yuv422p10le --matrix hd
"$tqcs" compare smooth-t.raw smooth-ff.raw --from yuv422p10le --size "$size" --max 2 >compare.log ||
  fail "rgb48le to yuv422p10le against ffmpeg: $(cat compare.log)"
to smooth-t.raw yuv422p10le smooth-back.rgb48 rgb48le --matrix hd
"$tqcs" compare smooth-back.rgb48 smooth.rgb48 --from rgb48le --size "$size" --max 3 >compare.log ||
  fail "rgb48le through yuv422p10le and back: $(cat compare.log)"

# ---- interlaced 10-bit 4:2:0, two fields of two colours ----------------------------------
fsize=${w}x$((h / 2))
ff -f lavfi -i "color=c=0xd02020:s=$fsize" -frames:v 1 -pix_fmt yuv420p10le -f rawvideo clip.f1.raw
ff -f lavfi -i "color=c=0x2040e0:s=$fsize" -frames:v 1 -pix_fmt yuv420p10le -f rawvideo clip.f2.raw
"$tqcs" convert clip.raw clip.y4m --fields compose --from yuv420p10le --size "$size" --range full \
  >/dev/null
head -1 clip.y4m | grep -q " It .*C420p10" || fail "composed clip header: $(head -1 clip.y4m)"
"$tqcs" convert clip.y4m i422.raw --to yuv422p10le >/dev/null
"$tqcs" convert clip.y4m i.rgba64 --to rgba64le >/dev/null
for format in yuv422p10le rgba64le; do
  in=i422.raw
  [ "$format" = rgba64le ] && in=i.rgba64
  "$tqcs" convert "$in" "fld-$format.raw" --from "$format" --size "$size" --interlace t \
    --fields split >/dev/null
  for n in 1 2; do
    "$tqcs" convert "clip.f$n.raw" "own$n-$format.raw" --from yuv420p10le --size "$fsize" \
      --to "$format" >/dev/null
    same "fld-$format.f$n.raw" "own$n-$format.raw" "field $n of the interlaced clip to $format"
  done
  cmp -s own1-$format.raw own2-$format.raw && fail "the two fields' colours are alike in $format"
done
# RGB made from YUV keeps ten bits: the low 6 bits of R, G and B are zero.
od -An -v -tu2 -w8 i.rgba64 | awk '$1 % 64 + $2 % 64 + $3 % 64 != 0 { bad++ } END { exit bad > 0 }' ||
  fail "rgba64le from YUV has bits below bit 6"

finish "ffmpeg deep-colour checks"
