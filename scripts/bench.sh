#!/usr/bin/env bash
# Builds the release preset with the peer library installed, runs the frame
# and per-slot benchmarks (medians of repetitions, one thread) and writes
# docs/performance.md from their results and docs/performance_notes.md.
# TQCS_BENCH_BASELINE=path/to/an/earlier/tqcs_frames_bench adds a table of the
# same frames through that build.
set -euo pipefail
cd "$(dirname "$0")/.."
if [ ! -f /usr/include/libyuv.h ]; then
  echo "installing the peer library (Debian libyuv-dev)"
  apt-get update -qq && apt-get install -y -qq --no-install-recommends libyuv-dev >/dev/null
fi
cmake --preset release >/dev/null
cmake --build --preset release --target tqcs_frames_bench tqcs_kernels_bench
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
common=(--benchmark_repetitions="${TQCS_BENCH_REPETITIONS:-5}" --benchmark_report_aggregates_only=true
        --benchmark_format=json --benchmark_min_time="${TQCS_BENCH_MIN_TIME:-0.1}")
taskset_cmd=()
command -v taskset >/dev/null && taskset_cmd=(taskset -c 0)
"${taskset_cmd[@]}" ./build/release/bench/tqcs_frames_bench "${common[@]}" >"$out/frames.json"
TCB_CPU_LEVEL=0 "${taskset_cmd[@]}" ./build/release/bench/tqcs_frames_bench "${common[@]}" \
  --benchmark_filter='/tqcs$|/tqcs/' >"$out/frames_portable.json"
"${taskset_cmd[@]}" ./build/release/bench/tqcs_kernels_bench "${common[@]}" >"$out/kernels.json"
# An earlier build's frame benchmark, if given, runs the library's rows in the
# same session, for a before-and-after table.
baseline=()
if [ -n "${TQCS_BENCH_BASELINE:-}" ]; then
  "${taskset_cmd[@]}" "$TQCS_BENCH_BASELINE" "${common[@]}" --benchmark_filter='/tqcs$|/tqcs/' \
    >"$out/frames_baseline.json"
  baseline=("$out/frames_baseline.json")
fi
# The tqcsconvert element against videoconvert (no table without GStreamer: one line says so).
scripts/bench_gst.sh >"$out/gst.md"
python3 scripts/perf_report.py "$out/frames.json" "$out/frames_portable.json" "$out/kernels.json" \
  docs/performance_notes.md "$out/gst.md" "${baseline[@]}" >docs/performance.md
scripts/bench_deep.sh --into docs/performance.md  # the deep-colour frames and 4:2:0 quality
echo "wrote docs/performance.md"
