#!/usr/bin/env python3
"""Turns the JSON results of scripts/bench.sh into Markdown tables.

Usage: bench_table.py RESULTS_DIR
RESULTS_DIR holds one <program>.json per benchmark program (Google Benchmark's
--benchmark_out). Every figure is the median of the repetitions; every ratio divides
two medians measured in the same run of the same program.
"""
import json
import os
import sys


def load(results):
    """{program: {benchmark name: median record}}"""
    out = {}
    for name in sorted(os.listdir(results)):
        if not name.endswith(".json"):
            continue
        with open(os.path.join(results, name)) as f:
            data = json.load(f)
        runs = {}
        for b in data.get("benchmarks", []):
            # Names without the timing suffix (/real_time, /process_time).
            b["run_name"] = b["run_name"].replace("/real_time", "").replace("/process_time", "")
            if b.get("error_occurred"):
                runs[b["run_name"]] = {"error": b.get("error_message", "failed")}
                continue
            if b.get("run_type") == "aggregate" and b.get("aggregate_name") != "median":
                continue
            # A single repetition has no aggregates: take the iteration itself.
            if b.get("run_type") == "iteration" and b["run_name"] in runs:
                continue
            runs[b["run_name"]] = b
        out[name[:-5]] = runs
    return out


def rate(runs, program, bench, key):
    b = runs.get(program, {}).get(bench)
    if not b or "error" in b or key not in b:
        return None
    return float(b[key])


def gbs(v):
    return "–" if v is None else f"{v / 1e9:.2f} GB/s"


def mbs(v):
    return "–" if v is None else f"{v / 1e6:.0f} MB/s"


def per_s(v):
    return "–" if v is None else f"{v:,.0f}/s"


def ratio(a, b):
    return None if a is None or b is None or b == 0 else a / b


def fmt_ratio(r):
    return "–" if r is None else f"{r:.2f}×"


def met(r, goal):
    if goal is None:
        return ""
    if r is None:
        return "not measured"
    return "yes" if r >= goal else "**no**"


def main():
    runs = load(sys.argv[1])
    rows = []  # (measure, result, against, ratio, goal)

    # CRC-32 per path.
    crc = runs.get("bench_crc32", {})
    order = ["portable", "pclmul", "vpclmul256", "vpclmul512", "armcrc", "dispatch", "zlib"]
    paths = []
    for name in crc:
        parts = name.split("/")
        if parts[0] == "BM_Crc32" and parts[1] not in paths:
            paths.append(parts[1])
    paths.sort(key=lambda p: order.index(p) if p in order else len(order))
    sizes = ["28", "1024", "65536", "524288"]
    crc_table = ["| CRC-32 | " + " | ".join(["28 B", "1 KiB", "64 KiB", "512 KiB"]) + " |",
                 "|---|" + "---:|" * len(sizes)]
    for p in paths + ["memcpy"]:
        bench = "BM_Memcpy/{}" if p == "memcpy" else "BM_Crc32/" + p + "/{}"
        label = p
        if p == "dispatch":
            b = crc.get("BM_Crc32/dispatch/65536", {})
            if b.get("label"):
                label = f"dispatch ({b['label']})"
        crc_table.append(f"| {label} | " +
                         " | ".join(gbs(rate(runs, "bench_crc32", bench.format(s), "bytes_per_second"))
                                    for s in sizes) + " |")
    mem = rate(runs, "bench_crc32", "BM_Memcpy/65536", "bytes_per_second")
    zl = rate(runs, "bench_crc32", "BM_Crc32/zlib/65536", "bytes_per_second")
    for p in paths:
        if p in ("zlib",):
            continue
        v = rate(runs, "bench_crc32", f"BM_Crc32/{p}/65536", "bytes_per_second")
        goal = 0.8 if p == "dispatch" else None
        rows.append((f"CRC-32 64 KiB, {p}", gbs(v), "memcpy 64 KiB", ratio(v, mem), goal))
        if p == "dispatch":
            rows.append((f"CRC-32 64 KiB, {p}", gbs(v), "zlib crc32", ratio(v, zl), None))

    # Exchanges through the library against the raw clients.
    ex = "bench_exchange"
    goals = {"Small": 0.95, "64KiB": 0.95, "500KB": 0.9}
    for case in ["Small", "64KiB/Down", "64KiB/Up", "500KB/Down", "500KB/Up"]:
        lib = rate(runs, ex, f"BM_Exchange/{case}/Library", "items_per_second")
        zc = rate(runs, ex, f"BM_Exchange/{case}/Zlib", "items_per_second")
        fl = rate(runs, ex, f"BM_Exchange/{case}/NoCrc", "items_per_second")
        what = f"Exchange {case.replace('/', ' ').replace('Down', 'answer').replace('Up', 'request')}"
        rows.append((what, per_s(lib), "raw client, zlib CRC", ratio(lib, zc), None))
        rows.append((what, per_s(lib), "raw client, no CRC (floor)", ratio(lib, fl), goals[case.split("/")[0]]))

    # The simulator against the raw responder.
    for case, goal in [("Small", None), ("Packet64K", 0.9)]:
        sim = rate(runs, "bench_sim", f"BM_{case}_Simulator", "items_per_second")
        raw = rate(runs, "bench_sim", f"BM_{case}_Raw", "items_per_second")
        rows.append((f"Simulator, {'small' if case == 'Small' else '64 KiB packets'}", per_s(sim),
                     "raw responder", ratio(sim, raw), goal))

    # File transfer against raw packet exchanges with the same simulator.
    for case in ["Upload5MB", "Download5MB"]:
        lib = rate(runs, "bench_files", f"BM_{case}_Library", "bytes_per_second")
        raw = rate(runs, "bench_files", f"BM_{case}_Raw", "bytes_per_second")
        rows.append((f"File {'upload' if 'Up' in case else 'download'} 5 MB", mbs(lib),
                     "raw 64 KiB packet exchanges", ratio(lib, raw), 0.9))

    # Codecs.
    logs = rate(runs, "bench_files", "BM_LogPageDecode", "bytes_per_second")
    rows.append(("Log page decode", mbs(logs), "", None, None))
    mem = rate(runs, "bench_user_record", "BM_Memcpy", "bytes_per_second")
    for bench, what in [("BM_EncodeStoreForm", "User record encode (10 templates)"),
                        ("BM_EncodeCardForm", "User record encode, card form"),
                        ("BM_Decode", "User record decode (10 templates)")]:
        v = rate(runs, "bench_user_record", bench, "bytes_per_second")
        rows.append((what, mbs(v), "memcpy of the record", ratio(v, mem), None))

    print("| Measure | Result | Against | Ratio | Goal | Met |")
    print("|---|---:|---|---:|---:|---|")
    for what, result, against, r, goal in rows:
        g = "" if goal is None else f"≥ {goal:.2f}×"
        print(f"| {what} | {result} | {against} | {fmt_ratio(r)} | {g} | {met(r, goal)} |")
    print()
    print("\n".join(crc_table))

    failed = [(n, b) for p in runs.values() for n, b in p.items() if "error" in b]
    if failed:
        print()
        for n, b in failed:
            print(f"- {n}: {b['error']}")


if __name__ == "__main__":
    main()
