#!/usr/bin/env python3
"""What Python costs over C, against kvn-sim on loopback (a benchmark, not a test).

1. A small get (kvn_get_pacs_setting, one number) N times: a C loop over the library,
   the export through kvnsdk2.lib as it stands, and Terminal.get("pacs"). Goal: Python
   within 1.5 x of C.
2. Users listed per second: Terminal.users.list() (every record, templates included),
   Terminal.users.ids(), and `kvnctl users list` (ids). Goal: at least half kvnctl's rate.

    python3 bench/python_overhead.py [--calls N] [--users N]

Needs the default build (library, kvn-sim, kvnctl), a C compiler for the C loop, and
the package (installed, or PYTHONPATH=build/default/python).
"""
import argparse
import ctypes
import os
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), ".."))
BUILD = os.path.join(ROOT, "build", "default")
os.environ.setdefault("KVNSDK2_LIBRARY", os.path.join(BUILD, "libkvnsdk2.so"))
os.environ.setdefault("KVN_SIM", os.path.join(BUILD, "tools", "sim", "kvn-sim"))
KVNCTL = os.environ.get("KVNCTL", os.path.join(BUILD, "tools", "kvnctl", "kvnctl"))

import kvnsdk2  # noqa: E402
from kvnsdk2 import lib  # noqa: E402
from kvnsdk2.testing import simulator  # noqa: E402

C_LOOP = r"""
#include <stdio.h>
#include <stdlib.h>
#include <time.h>
#include "kvnsdk2.h"
int main(int argc, char **argv) {
    kvn_device_conn c = {0};
    c.ip_address = "127.0.0.1";
    c.port = (uint16_t)atoi(argv[1]);
    c.link.conn_type = KVN_CONN_TCP;
    long n = atol(argv[2]);
    if (kvn_open_device_conn(&c) != 0) return 1;
    uint32_t v = 0;
    struct timespec a, b;
    clock_gettime(CLOCK_MONOTONIC, &a);
    for (long i = 0; i < n; ++i)
        if (kvn_get_pacs_setting(&c, &v) != 0) return 1;
    clock_gettime(CLOCK_MONOTONIC, &b);
    printf("%.3f\n", ((b.tv_sec - a.tv_sec) * 1e9 + (b.tv_nsec - a.tv_nsec)) / 1e3 / n);
    kvn_close_device_conn(&c);
    return 0;
}
"""


def c_loop(work, port, calls):
    exe = os.path.join(work, "small_get")
    if not os.path.exists(exe):
        src = os.path.join(work, "small_get.c")
        with open(src, "w") as f:
            f.write(C_LOOP)
        subprocess.run(["cc", "-O2", "-I", os.path.join(ROOT, "include"), src, "-o", exe, "-L", BUILD,
                        "-lkvnsdk2", f"-Wl,-rpath,{BUILD}"], check=True)
    return float(subprocess.run([exe, str(port), str(calls)], check=True, capture_output=True,
                                text=True).stdout)


def per_call_us(fn, calls):
    start = time.perf_counter()
    for _ in range(calls):
        fn()
    return (time.perf_counter() - start) * 1e6 / calls


def best(runs):
    return min(runs), statistics.median(runs)


def main():
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("--calls", type=int, default=5000)
    ap.add_argument("--users", type=int, default=1000)
    ap.add_argument("--rounds", type=int, default=5)
    a = ap.parse_args()
    with tempfile.TemporaryDirectory() as work, simulator() as sim, sim.terminal() as t:
        value = ctypes.c_uint32()
        ref = ctypes.byref(value)
        rows = {"C (kvn_get_pacs_setting)": [], "Python: kvnsdk2.lib export": [], "Python: Terminal.get('pacs')": [],
                "Python: Terminal.call(...)": []}
        for _ in range(a.rounds):
            rows["C (kvn_get_pacs_setting)"].append(c_loop(work, sim.port, a.calls))
            rows["Python: kvnsdk2.lib export"].append(
                per_call_us(lambda: lib.kvn_get_pacs_setting(t._conn, ref), a.calls))
            rows["Python: Terminal.get('pacs')"].append(per_call_us(lambda: t.get("pacs"), a.calls))
            rows["Python: Terminal.call(...)"].append(
                per_call_us(lambda: t.call("kvn_get_pacs_setting", ref), a.calls))
        c_best = min(rows["C (kvn_get_pacs_setting)"])
        print(f"Small get against kvn-sim, {a.calls} calls x {a.rounds} rounds (us per call, best / median):")
        for name, runs in rows.items():
            b, m = best(runs)
            print(f"  {name:<32} {b:8.1f} / {m:8.1f}   x{b / c_best:.2f} of C")

        for i in range(a.users):
            t.users.put({"user_id": f"user{i:05d}", "text_t03": f"User {i}"})
        rates = {"Terminal.users.list() (records)": [], "Terminal.users.ids()": [], "kvnctl users list (ids)": []}
        for _ in range(a.rounds):
            start = time.perf_counter()
            n = sum(1 for _ in t.users.list())
            rates["Terminal.users.list() (records)"].append(n / (time.perf_counter() - start))
            start = time.perf_counter()
            n = len(t.users.ids())
            rates["Terminal.users.ids()"].append(n / (time.perf_counter() - start))
            start = time.perf_counter()
            out = subprocess.run([KVNCTL, "--host", sim.address, "--json", "users", "list"], check=True,
                                 capture_output=True, text=True).stdout
            rates["kvnctl users list (ids)"].append(out.count('"user') / (time.perf_counter() - start))
        ctl = max(rates["kvnctl users list (ids)"])
        print(f"Users listed per second, {a.users} users x {a.rounds} rounds (best / median):")
        for name, runs in rates.items():
            print(f"  {name:<32} {max(runs):10.0f} / {statistics.median(runs):10.0f}   x{max(runs) / ctl:.2f} of kvnctl")
    print(f"(library {kvnsdk2.library_version()}, Python {sys.version.split()[0]})")


if __name__ == "__main__":
    main()
