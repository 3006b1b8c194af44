#!/usr/bin/env bash
# Frames per second of `videotestsrc ! CONVERTER ! fakesink sync=false` with
# tqcsconvert and with the framework's own videoconvert, at one thread and at
# their thread settings, for the conversions a playout or capture chain runs
# most; writes a markdown table to stdout. The fps are of the whole pipeline
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
# Median frames per second over the runs, start-up left out: the time of
# one buffer is taken from the time of n.
fps() { # in out width height buffers converter...
  local n=$5 times=() firsts=()
  for _ in $(seq "$runs"); do
    times+=("$(seconds "$@")")
    firsts+=("$(seconds "$1" "$2" "$3" "$4" 1 "${@:6}")")
  done
  local t1 tn
  t1=$(printf '%s\n' "${firsts[@]}" | sort -n | awk '{t[NR] = $1} END {print t[int((NR + 1) / 2)]}')
  tn=$(printf '%s\n' "${times[@]}" | sort -n | awk '{t[NR] = $1} END {print t[int((NR + 1) / 2)]}')
  awk -v n="$n" -v a="$t1" -v b="$tn" 'BEGIN { printf "%.1f", (n - 1) / ((b - a) / 1e6) }'
}

echo "| conversion | size | videoconvert, 1 thread | tqcsconvert, 1 thread | ratio |" \
  "videoconvert, default threads | tqcsconvert, n-threads=$threads |"
echo "|---|---|---:|---:|---:|---:|---:|"
for pair in I420:BGRA UYVY:I420 BGRA:I420 YUY2:BGRA; do
  in=${pair%:*} out=${pair#*:}
  for size in 1920x1080 3840x2160; do
    w=${size%x*} h=${size#*x}
    # A fixed number of buffers, about TQCS_GST_BENCH_SECONDS at 60 fps at 1080p.
    n=$((${TQCS_GST_BENCH_SECONDS:-2} * 60 * 1920 * 1080 / (w * h)))
    theirs1=$(fps "$in" "$out" "$w" "$h" "$n" videoconvert n-threads=1)
    ours1=$(fps "$in" "$out" "$w" "$h" "$n" tqcsconvert)
    theirs=$(fps "$in" "$out" "$w" "$h" "$n" videoconvert)
    ours=$(fps "$in" "$out" "$w" "$h" "$n" tqcsconvert n-threads="$threads")
    ratio=$(awk -v a="$ours1" -v b="$theirs1" 'BEGIN { printf "%.2f", a / b }')
    echo "| $in to $out | $size | $theirs1 | $ours1 | $ratio | $theirs | $ours |"
  done
done
echo
echo "Frames per second of the whole pipeline (the test source draws each frame too) after" \
  "start-up (the time of one buffer taken off), medians" \
  "of $runs runs of a fixed number of buffers ($((${TQCS_GST_BENCH_SECONDS:-2} * 60)) at 1080p," \
  "a quarter of that at 2160p); $threads cores; ratio: tqcsconvert over videoconvert at one thread."
