#!/usr/bin/env python3
"""Writes docs/performance.md from the benchmark JSON of scripts/bench.sh."""
import json
import subprocess
import sys

REPACKS = {"YUV422_to_YUYV", "YUYV_to_YUV422", "RGB24_to_RGB32", "RGB32_to_RGB24",
           "RGB32_SwapRB", "RGB24_SwapRB"}
# The matrix conversions and their bound against the peer masked to SSSE3;
# every other row's bound is 1.
TO_RGB = {"YUV420_to_RGB32", "YUV420_to_RGB24", "YUV422_to_RGB32", "YUVA_to_RGB32",
          "YUYV_to_RGB32", "UYVY_to_RGB32"}
TO_YUV = {"RGB24_to_YUV420", "RGB32_to_YUV420", "RGB32_to_YUYV", "RGB32_to_Gray"}


def bound(conv):
    return 1.1 if conv in TO_RGB else 1.25 if conv in TO_YUV else 1.0


def geomean(values):
    values = [v for v in values if v]
    product = 1.0
    for v in values:
        product *= v
    return product ** (1 / len(values)) if values else None


def medians(path):
    with open(path) as f:
        text = f.read()
    if not text.strip():  # no benchmark matched
        return {}, {}
    data = json.loads(text)
    out = {}
    for b in data["benchmarks"]:
        if b.get("aggregate_name") != "median":
            continue
        name = b["run_name"].replace("/real_time", "")
        scale = {"ns": 1e-6, "us": 1e-3, "ms": 1.0, "s": 1e3}[b["time_unit"]]
        out[name] = b["real_time"] * scale
    return out, data["context"]


def gst_section(gst_path, missed):
    """The table of scripts/bench_gst.sh, when GStreamer was there to measure."""
    try:
        with open(gst_path) as f:
            table = f.read().strip()
    except (FileNotFoundError, TypeError):
        return
    if not table.startswith("|"):
        return
    print("\n## In a GStreamer pipeline\n")
    print("`scripts/bench_gst.sh`: the `tqcsconvert` element against the framework's "
          "`videoconvert`. Target: at least its frames per second at one thread (ratio ≥ 1).\n")
    print(table)
    for line in table.splitlines():
        cells = [c.strip() for c in line.strip("|").split("|")]
        if len(cells) > 4 and cells[4].replace(".", "", 1).isdigit() and float(cells[4]) < 1:
            missed.append(f"tqcsconvert {cells[0]} at {cells[1]}: {cells[4]} × videoconvert")


def main(frames_path, portable_path, kernels_path, notes_path, gst_path=None,
         baseline_path=None):
    frames, context = medians(frames_path)
    portable, _ = medians(portable_path)
    kernels, _ = medians(kernels_path)
    commit = subprocess.run(["git", "rev-parse", "--short", "HEAD"], capture_output=True,
                            text=True).stdout.strip()
    cpu = "unknown"
    with open("/proc/cpuinfo") as f:
        for line in f:
            if line.startswith("model name"):
                cpu = line.split(":", 1)[1].strip()
                break
    print("# Performance\n")
    print("Written by `scripts/bench.sh`; do not edit by hand (notes come from "
          "`docs/performance_notes.md`).\n")
    print(f"- commit `{commit}`, {context.get('date', '')}")
    print(f"- processor: {cpu}, {context.get('num_cpus')} cores, one thread, pinned to core 0")
    print("- Google Benchmark medians of repetitions; times in ms per frame; ratios are of "
          "medians from the same run")
    print("- `tqcs`: this library at the level start-up chose (the machine's); `portable`: "
          "forced to level 0")
    print("- `libyuv`: the peer's closest conversion at its default dispatch, and with its "
          "processor features masked to SSE2 and to SSSE3")
    print("- `memcpy`: a copy of half the bytes the conversion reads and writes (a copy of k "
          "bytes moves 2k)\n")
    print("## Frames\n")
    print("Targets against `libyuv` masked to SSSE3: YUV to RGB matrix conversions at most "
          "1.1 times its time, RGB to YUV ones (grey included) at most 1.25, every other row at "
          "most 1; the geometric mean of all rows at most 1, and at most 1.3 times `libyuv` at "
          "its default dispatch; repacks and swaps at 0.9 of `memcpy` or better "
          "(memcpy/tqcs ≥ 0.9).\n")
    print("| conversion | size | tqcs | portable | libyuv | libyuv SSE2 | libyuv SSSE3 | memcpy "
          "| tqcs / libyuv SSSE3 | tqcs / libyuv | memcpy / tqcs |")
    print("|---|---|---|---|---|---|---|---|---|---|---|")
    order = []
    for k in frames:
        key = k.split("/")[1] + "/" + k.split("/")[2]
        if key not in order:
            order.append(key)
    within, total, missed, r3s, rds = 0, 0, [], [], []
    for key in order:
        conv, size = key.split("/")
        def get(side, table=frames):
            return table.get(f"frame/{conv}/{size}/{side}")
        ours, peer = get("tqcs"), get("libyuv")
        p2, p3, mc = get("libyuv_sse2"), get("libyuv_ssse3"), get("memcpy")
        port = get("tqcs", portable)
        fmt = lambda v: f"{v:.3f}" if v is not None else "–"
        r3 = ours / p3 if ours and p3 else None
        rd = ours / peer if ours and peer else None
        rm = mc / ours if ours and mc else None
        if rd is not None:
            total += 1
            within += rd <= 1.1
        r3s.append(r3)
        rds.append(rd)
        if r3 is not None and r3 > bound(conv):
            missed.append(f"{conv} {size}: {r3:.2f} × libyuv SSSE3 (target {bound(conv)})")
        if conv in REPACKS and rm is not None and rm < 0.9:
            missed.append(f"{conv} {size}: memcpy/tqcs {rm:.2f} (target 0.9)")
        ratio = lambda v: f"{v:.2f}" if v is not None else "–"
        print(f"| {conv} | {size} | {fmt(ours)} | {fmt(port)} | {fmt(peer)} | {fmt(p2)} | "
              f"{fmt(p3)} | {fmt(mc)} | {ratio(r3)} | {ratio(rd)} | "
              f"{ratio(rm) if conv in REPACKS else '–'} |")
    g3, gd = geomean(r3s), geomean(rds)
    if g3 is not None and gd is not None:
        print(f"\nGeometric mean over the {len(order)} rows: {g3:.2f} × libyuv SSSE3 (target 1), "
              f"{gd:.2f} × libyuv default (target 1.3). Within 1.1 × libyuv default: {within} of "
              f"{total} rows.\n")
        if g3 > 1:
            missed.append(f"geometric mean: {g3:.2f} × libyuv SSSE3 (target 1)")
        if gd > 1.3:
            missed.append(f"geometric mean: {gd:.2f} × libyuv default (target 1.3)")
    print("## Kernel slots, one row\n")
    print("1920 pixels a row; each SIMD routine was checked to give the portable routine's "
          "bytes before it was timed. Target: 4 × the portable twin.\n")
    print("| slot | tier | ns | portable ns | speed-up |")
    print("|---|---|---|---|---|")
    slow = []
    for name, t in kernels.items():
        _, slot, tier = name.split("/")
        if tier == "portable":
            continue
        base = kernels.get(f"slot/{slot}/portable")
        up = base / t if base else None
        if up is not None and up < 4:
            slow.append(f"{slot} ({tier}): {up:.1f} ×")
        print(f"| {slot} | {tier} | {t * 1e6:.0f} | {base * 1e6:.0f} | "
              f"{up:.1f} |" if base else f"| {slot} | {tier} | {t * 1e6:.0f} | – | – |")
    if baseline_path:
        baseline(frames, baseline_path)
    gst_section(gst_path, missed)
    print("\n## Missed targets in this run\n")
    for m in missed + [f"slot {s}" for s in slow] or ["none"]:
        print(f"- {m}")
    print()
    try:
        with open(notes_path) as f:
            print(f.read())
    except FileNotFoundError:
        pass


def baseline(frames, path):
    """The same frames through an earlier build, run in the same session."""
    before, context = medians(path)
    if not before:
        return
    print("\n## Against an earlier build\n")
    print(f"The frame rows of an earlier build (`{context.get('executable', '?')}`) run right "
          "after this build's, on the same machine; each build's time is also given as a ratio "
          "to the peer masked to SSSE3 from this run.\n")
    print("| conversion | size | before | after | after / before | before / libyuv SSSE3 "
          "| after / libyuv SSSE3 |")
    print("|---|---|---|---|---|---|---|")
    for name, old in before.items():
        _, conv, size, side = name.split("/")
        if side != "tqcs":
            continue
        new, peer = frames.get(name), frames.get(f"frame/{conv}/{size}/libyuv_ssse3")
        if new is None:
            continue
        ratio = lambda v: f"{v:.2f}" if v is not None else "–"
        print(f"| {conv} | {size} | {old:.3f} | {new:.3f} | {new / old:.2f} | "
              f"{ratio(old / peer if peer else None)} | {ratio(new / peer if peer else None)} |")


if __name__ == "__main__":
    main(*sys.argv[1:7])
