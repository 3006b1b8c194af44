#!/usr/bin/env bash
# Frames per second of `videotestsrc ! CONVERTER ! fakesink sync=false` with
# tqcsconvert and with the framework's own videoconvert, both at one thread
# (their default) and both at n-threads set to the cores, for the conversions
# a playout or capture chain runs most; writes a markdown table to stdout. The fps are of the whole pipeline
# (the test source draws every frame too) after start-up, medians of a few
# runs of a fixed number of buffers. TQCS_GST_BENCH_RUNS (default 3) and
# TQCS_GST_BENCH_SECONDS (default 2, the frames of each run are sized to it)
# tune it.
set -euo pipefail
cd "$(dirname "$0")/.."
if ! command -v gst-launch-1.0 >/dev/null || ! pkg-config --exists gstreamer-video-1.0; then
  echo "GStreamer is not installed: no tqcsconvert benchmark" >&2
  exit 0
fi
cmake --preset release >/dev/null
cmake --build --preset release --target gsttqcs >/dev/null
export GST_PLUGIN_PATH=$PWD/build/release/hosts/gstreamer/plugins
export GST_REGISTRY=${TMPDIR:-/tmp}/tqcs-bench-registry.bin
runs=${TQCS_GST_BENCH_RUNS:-3}
threads=$(nproc)

# Seconds for `buffers` frames through the converter.
seconds() { # in out width height buffers converter...
  local in=$1 out=$2 w=$3 h=$4 n=$5
  shift 5
  local start end
  start=$(date +%s%N)
  gst-launch-1.0 -q videotestsrc num-buffers="$n" ! "video/x-raw,format=$in,width=$w,height=$h" \
    ! "$@" ! "video/x-raw,format=$out" ! fakesink sync=false >/dev/null
  end=$(date +%s%N)
  echo "$(((end - start) / 1000))"
}
median() { sort -n | awk '{t[NR] = $1} END {print t[int((NR + 1) / 2)]}'; }
# Median frames per second of each converter over the runs, start-up left out
# (the time of one buffer is taken from the time of n). The converters take
# turns within each run, so that a machine whose load changes slows them
# alike.
fps_row() { # in out width height buffers, then one converter a line on stdin
  local n=$5 converters=() c r
  mapfile -t converters
  local -A times firsts
  for r in $(seq "$runs"); do
    for c in "${!converters[@]}"; do
      # shellcheck disable=SC2086 # a converter is an element and its properties
      times[$c]+="$(seconds "$1" "$2" "$3" "$4" "$n" ${converters[$c]}) "
      # shellcheck disable=SC2086
      firsts[$c]+="$(seconds "$1" "$2" "$3" "$4" 1 ${converters[$c]}) "
    done
  done
  for c in "${!converters[@]}"; do
    local t1 tn
    t1=$(tr ' ' '\n' <<<"${firsts[$c]}" | grep . | median)
    tn=$(tr ' ' '\n' <<<"${times[$c]}" | grep . | median)
    awk -v n="$n" -v a="$t1" -v b="$tn" 'BEGIN { printf "%.1f\n", (n - 1) / ((b - a) / 1e6) }'
  done
}

echo "| conversion | size | videoconvert, 1 thread | tqcsconvert, 1 thread | ratio |" \
  "videoconvert, n-threads=$threads | tqcsconvert, n-threads=$threads | ratio |"
echo "|---|---|---:|---:|---:|---:|---:|---:|"
for pair in I420:BGRA UYVY:I420 BGRA:I420 YUY2:BGRA; do
  in=${pair%:*} out=${pair#*:}
  for size in 1920x1080 3840x2160; do
    w=${size%x*} h=${size#*x}
    # A fixed number of buffers, about TQCS_GST_BENCH_SECONDS at 60 fps at 1080p.
    n=$((${TQCS_GST_BENCH_SECONDS:-2} * 60 * 1920 * 1080 / (w * h)))
    mapfile -t row < <(printf '%s\n' "videoconvert n-threads=1" tqcsconvert \
      "videoconvert n-threads=$threads" "tqcsconvert n-threads=$threads" |
      fps_row "$in" "$out" "$w" "$h" "$n")
    theirs1=${row[0]} ours1=${row[1]} theirs=${row[2]} ours=${row[3]}
    ratio1=$(awk -v a="$ours1" -v b="$theirs1" 'BEGIN { printf "%.2f", a / b }')
    ratio=$(awk -v a="$ours" -v b="$theirs" 'BEGIN { printf "%.2f", a / b }')
    echo "| $in to $out | $size | $theirs1 | $ours1 | $ratio1 | $theirs | $ours | $ratio |"
  done
done
echo
echo "Frames per second of the whole pipeline (the test source draws each frame too) after" \
  "start-up (the time of one buffer taken off), medians" \
  "of $runs runs, the four converters taking turns, of a fixed number of buffers ($((${TQCS_GST_BENCH_SECONDS:-2} * 60)) at 1080p," \
  "a quarter of that at 2160p); $threads cores; ratios: tqcsconvert over videoconvert."
