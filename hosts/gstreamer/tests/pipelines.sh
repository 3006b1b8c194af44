#!/usr/bin/env bash
# Every 8-bit pair through tqcsconvert and through the framework's own
# converter, from the same test frames, into files: the pure repacks must be
# bit-identical, every other pair within 45 dB luma PSNR (both sides tagged
# with the same matrix and range: BT.709 video range for YUV, sRGB for RGB;
# no dithering). From YUV to RGB the framework's converter is run through
# 16-bit RGB: its 8-bit YUV-to-RGB path rounds its matrix to a few bits and
# puts video-range white (Y 235) at 253 and Y 32 at 16, where the range
# definitions (and its own 16-bit path) put them at 255 and 19; that alone
# held the pairs near 41 dB whatever this element wrote.
set -euo pipefail
compare=$1
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
formats=(BGRA RGBA BGR RGB YUY2 UYVY Y42B NV16 I420 NV12 v308)
width=320 height=240 failures=0
colorimetry() { case $1 in BGRA | RGBA | BGR | RGB) echo sRGB ;; *) echo bt709 ;; esac; }
family() { case $1 in BGRA | RGBA | BGR | RGB) echo rgb ;; YUY2 | UYVY | Y42B | NV16) echo yuv422 ;; I420 | NV12) echo yuv420 ;; *) echo "$1" ;; esac; }
run() { # element in out file
  gst-launch-1.0 -q videotestsrc num-buffers=2 \
    ! "video/x-raw,format=$2,width=$width,height=$height,colorimetry=$(colorimetry "$2")" \
    ! $1 ! "video/x-raw,format=$3,colorimetry=$(colorimetry "$3")" ! filesink location="$4"
}
for in in "${formats[@]}"; do
  for to in "${formats[@]}"; do
    [ "$in" = "$to" ] && continue
    run tqcsconvert "$in" "$to" "$out/ours.raw"
    theirs="videoconvert dither=none"
    [ "$(family "$in")" != rgb ] && [ "$(family "$to")" = rgb ] &&
      theirs="$theirs ! video/x-raw,format=ARGB64 ! $theirs"
    run "$theirs" "$in" "$to" "$out/theirs.raw"
    floor=45
    [ "$(family "$in")" = "$(family "$to")" ] && floor=exact
    if ! result=$("$compare" "$to" $width $height "$out/ours.raw" "$out/theirs.raw" $floor); then
      failures=$((failures + 1))
      result="$result (below $floor)"
    fi
    echo "$in -> $result"
  done
done
[ $failures -eq 0 ] || { echo "$failures pairs failed"; exit 1; }
