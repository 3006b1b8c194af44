#!/usr/bin/env bash
# Deep-colour frames (V210, 16-bit planar 4:2:0/4:2:2, RGB48/RGB64) through the
# descriptor form at the machine's level and at level 0, beside libyuv's
# 10-bit conversions and FFmpeg's v210 decoder/encoder and libswscale, and
# memcpy, in one run pinned to one core, one thread, medians of repetitions;
# then the round-trip PSNR of RGB to 8-bit 4:2:0 and back on photographs
# against the same peers. The peers come from Debian's packages (installed
# here when missing); the photographs are the sample pictures of Debian's
# python3-skimage package, unpacked into a temporary folder (not installed).
# Writes a markdown section to stdout, or with `--into FILE` puts it into FILE
# (replacing an earlier one). TQCS_BENCH_REPETITIONS (default 7) and
# TQCS_BENCH_MIN_TIME (seconds, default 0.3) tune the timing.
set -euo pipefail
cd "$(dirname "$0")/.."
into=""
if [ "${1:-}" = "--into" ]; then into=$2; fi
need=()
[ -f /usr/include/libyuv.h ] || need+=(libyuv-dev)
pkg-config --exists libavcodec libswscale libavutil 2>/dev/null ||
  need+=(libavcodec-dev libswscale-dev libavutil-dev)
command -v ffmpeg >/dev/null || need+=(ffmpeg)
if [ ${#need[@]} -gt 0 ]; then
  echo "installing the peers (${need[*]})" >&2
  apt-get update -qq && apt-get install -y -qq --no-install-recommends "${need[@]}" >/dev/null
fi
cmake --preset release >/dev/null
cmake --build --preset release --target tqcs_deep_bench tqcs_deep_quality >&2
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
# Pinned to the last core unless TQCS_BENCH_CORE names one: scripts/bench.sh
# pins its own rows to core 0, where other benchmarks tend to run too.
core=${TQCS_BENCH_CORE:-$(($(nproc) - 1))}
pin=()
command -v taskset >/dev/null && pin=(taskset -c "$core")
common=(--benchmark_repetitions="${TQCS_BENCH_REPETITIONS:-7}" --benchmark_report_aggregates_only=true
        --benchmark_format=json --benchmark_min_time="${TQCS_BENCH_MIN_TIME:-0.3}")
"${pin[@]}" ./build/release/bench/tqcs_deep_bench "${common[@]}" >"$out/deep.json"
TCB_CPU_LEVEL=0 "${pin[@]}" ./build/release/bench/tqcs_deep_bench "${common[@]}" \
  --benchmark_filter='/tqcs/' >"$out/portable.json"

# The photographs: crops from the top left to a width of whole 16-pixel groups
# (libswscale's fast rows leave a ragged tail unconverted) and an even height,
# as raw R G B bytes.
pictures=()
if (cd "$out" && apt-get download python3-skimage >/dev/null 2>&1); then
  dpkg -x "$out"/python3-skimage_*.deb "$out/pkg"
  data=$(find "$out/pkg" -type d -path '*skimage/data' | head -n 1)
  for name in astronaut.png chelsea.png coffee.png motorcycle_left.png rocket.jpg; do
    size=$(ffprobe -v error -select_streams v:0 -show_entries stream=width,height -of csv=p=0 \
      "$data/$name")
    w=$((${size%,*} / 16 * 16)) h=$((${size#*,} / 2 * 2))
    ffmpeg -v error -i "$data/$name" -vf "crop=$w:$h:0:0" -pix_fmt rgb24 -f rawvideo \
      "$out/${name%.*}.rgb"
    pictures+=("${name%.*}=$out/${name%.*}.rgb=${w}x$h")
  done
fi
if [ ${#pictures[@]} -gt 0 ]; then
  ./build/release/bench/tqcs_deep_quality "${pictures[@]}" >"$out/quality.md"
else
  echo "The sample photographs (python3-skimage) could not be had: no quality table." \
    >"$out/quality.md"
fi

python3 - "$out/deep.json" "$out/portable.json" "$out/quality.md" "$into" "$core" <<'EOF'
import json, sys

sys.path.insert(0, "scripts")
from perf_report import medians  # noqa: E402  (medians of the JSON, in ms)

frames, context = medians(sys.argv[1])
portable, _ = medians(sys.argv[2])
with open(sys.argv[1]) as f:
    runs = [b for b in json.load(f)["benchmarks"] if b.get("aggregate_name") == "median"]
repack = {b["run_name"].rsplit("/", 2)[0]: b.get("repack", 0) >= 0.5 for b in runs}
# How much of the real time the benchmark thread had the core (the rest went
# to other work on the same core), the median over the rows.
share = sorted(b["cpu_time"] / b["real_time"] for b in runs)[len(runs) // 2] if runs else 0
with open(sys.argv[3]) as f:
    quality = f.read().strip()
lines = ["<!-- deep colour: begin -->", "## Deep-colour frames", "",
         "`scripts/bench_deep.sh`: `TCS_ColorConvFrameEx` at the level start-up chose (`tqcs`) "
         "and forced to level 0 (`portable`), beside the best peer conversion of the same work "
         "and memcpy of half the bytes read and written, in one run pinned to core "
         f"{sys.argv[5]}, one thread; "
         f"Google Benchmark medians on {context.get('num_cpus')} cores, ms per frame. "
         "Peers: `libyuv` (its 10-bit planar source, values in the low bits, BT.709 full "
         "range), `swscale` (libswscale, bilinear, BT.709 full range), `ffmpeg` (libavcodec's "
         "v210 decoder or encoder at one thread, with libswscale where a second step is "
         "needed), `ffmpeg_libyuv` (the v210 decoder, then libyuv). 4:2:0 sources are code 16 "
         "(frame-sited), RGB48 is code 1022, RGB64 code 1016, RGB32 code 0. Targets: "
         "tqcs / best peer ≤ 1 on every row; memcpy / tqcs ≥ 0.85 on the pure repacks (*).", "",
         "| conversion | size | tqcs | portable | peers | best peer | memcpy "
         "| tqcs / best peer | memcpy / tqcs |", "|---|---|---:|---:|---|---:|---:|---:|---:|"]
missed = []
rows = []
for name in frames:
    row = name.rsplit("/", 1)[0]
    if row not in rows:
        rows.append(row)
for row in rows:
    _, conv, size = row.split("/")
    ours, mc = frames.get(row + "/tqcs"), frames.get(row + "/memcpy")
    port = portable.get(row + "/tqcs")
    peers = {k.rsplit("/", 1)[1]: v for k, v in frames.items()
             if k.startswith(row + "/") and not k.endswith(("/tqcs", "/memcpy"))}
    best = min(peers.items(), key=lambda kv: kv[1]) if peers else None
    fmt = lambda v: f"{v:.3f}" if v is not None else "–"
    rp = ours / best[1] if ours and best else None
    rm = mc / ours if ours and mc else None
    star = " *" if repack.get(row) else ""
    listed = ", ".join(f"{k} {v:.3f}" for k, v in peers.items()) or "–"
    lines.append(f"| {conv}{star} | {size} | {fmt(ours)} | {fmt(port)} | {listed} | "
                 f"{fmt(best[1]) if best else '–'} | {fmt(mc)} | "
                 f"{f'{rp:.2f}' if rp else '–'} | {f'{rm:.2f}' if rm else '–'} |")
    if rp is not None and rp > 1:
        missed.append(f"{conv} {size}: {rp:.2f} × {best[0]}")
    if repack.get(row) and rm is not None and rm < 0.85:
        missed.append(f"{conv} {size}: memcpy / tqcs {rm:.2f} (target 0.85)")
lines += ["", "Missed in this run: " + ("; ".join(missed) if missed else "none") + ".", "",
          f"The benchmark thread had its core for {share:.0%} of the real time (median over the "
          "rows); the rest went to other work on the same core, peers and library alike.", "",
          "### 4:2:0 round trips on photographs", "",
          "`tqcs_deep_quality` on the sample photographs of Debian's python3-skimage (crops "
          "from the top left to widths of whole 16-pixel groups and even heights): RGB24 to 8-bit 4:2:0 and back, full range everywhere. "
          "`tqcs 11`/`tqcs 9`: `TCS_ColorConvFrameEx` through code 11 (frame-sited) or 9 "
          "(field-sited). `swscale`: `sws_scale` rgb24 ↔ yuv420p, SWS_BILINEAR, "
          "`sws_setColorspaceDetails` with the matrix's table and full range on both sides; "
          "`swscale accurate`: plus SWS_ACCURATE_RND, SWS_FULL_CHR_H_INP down and "
          "SWS_FULL_CHR_H_INT back. `libyuv J`: RAWToJ420 and J420ToRAW (BT.601 full range); "
          "`libyuv J bilinear`: the same way down, back through I420ToRGB24MatrixFilter with "
          "the J constants and kFilterBilinear.", "", quality, "<!-- deep colour: end -->"]
section = "\n".join(lines) + "\n"
target = sys.argv[4]
if not target:
    sys.stdout.write(section)
    sys.exit(0)
with open(target) as f:
    text = f.read()
begin, end = "<!-- deep colour: begin -->", "<!-- deep colour: end -->\n"
if begin in text and end in text:
    text = text[:text.index(begin)] + section + text[text.index(end) + len(end):]
else:
    text = text.rstrip("\n") + "\n\n" + section
with open(target, "w") as f:
    f.write(text)
print(f"wrote the deep-colour section of {target}", file=sys.stderr)
EOF
