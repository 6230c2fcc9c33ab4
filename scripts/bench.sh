#!/usr/bin/env bash
# Builds the benchmarks in release and runs every one with all its threads (client,
# responder, simulator) pinned to one CPU, then prints the Markdown tables of
# ratios and writes them to docs/performance.md with the machine, its CPU flags and
# the date.
#
# Every ratio divides two medians from the same run of the same program, taken from
# repetitions interleaved at random. The exchange, simulator and file benchmarks
# count the CPU time of the whole process (client and server threads together, on
# their one CPU) rather than wall time, so work of other processes on that CPU does
# not count against either side. Still: run it on a quiet machine and compare runs.
#
#   scripts/bench.sh            # 5 repetitions each, CPU 0
#   REPS=9 CPU=1 scripts/bench.sh
#   BENCHES="bench_crc32 bench_exchange" scripts/bench.sh   # some programs only
set -euo pipefail
cd "$(dirname "$0")/.."

REPS=${REPS:-5}
CPU=${CPU:-0}
MIN_TIME=${MIN_TIME:-0.2}
BENCHES=${BENCHES:-"bench_crc32 bench_exchange bench_sim bench_files bench_user_record"}
OUT=${OUT:-docs/performance.md}

cmake --preset bench >/dev/null
# shellcheck disable=SC2086
cmake --build --preset bench --target $BENCHES >&2

results=build/bench/results
rm -rf "$results"
mkdir -p "$results"
# bench_files writes its local files in the working directory.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for b in $BENCHES; do
  echo "== $b" >&2
  (cd "$work" && taskset -c "$CPU" "$OLDPWD/build/bench/bench/$b" \
      --benchmark_repetitions="$REPS" --benchmark_enable_random_interleaving=true \
      --benchmark_report_aggregates_only=true --benchmark_min_time="$MIN_TIME" \
      --benchmark_out="$OLDPWD/$results/$b.json" --benchmark_out_format=json >&2)
done

tables=$(python3 scripts/bench_table.py "$results")
echo "$tables"

cpu_model=$(grep -m1 'model name' /proc/cpuinfo | cut -d: -f2- | sed 's/^ *//')
flags=$(grep -m1 '^flags' /proc/cpuinfo | cut -d: -f2- | tr ' ' '\n' |
  grep -E '^(sse4_1|sse4_2|pclmulqdq|avx|avx2|avx512f|avx512vl|avx512bw|vpclmulqdq|crc32|pmull)$' | paste -sd' ' -)
features=$(grep -m1 -E '^Features' /proc/cpuinfo | cut -d: -f2- | sed 's/^ *//' || true)
{
  echo "# Performance"
  echo
  echo "Written by \`scripts/bench.sh\`: every benchmark program pinned to one CPU"
  echo "(\`taskset -c $CPU\`, so each client shares it with its responder or simulator),"
  echo "$REPS repetitions interleaved at random, medians; the exchange, simulator and file"
  echo "rates count the process's CPU time (client and server threads together) rather than"
  echo "wall time, so time the CPU gives to other work does not count (what that work does to"
  echo "the caches still does: compare runs). Each ratio divides two medians"
  echo "from the same run of the same program. Exchanges: the library's"
  echo "\`kvn_send_command\` + \`kvn_receive_response\` against a raw socket client that"
  echo "computes its CRCs with zlib, and against the same client with no CRC at all (the"
  echo "floor); all three talk to one canned-frame responder (\`bench/bench_exchange.cpp\`)."
  echo
  echo "- Date: $(date -u '+%Y-%m-%d %H:%M UTC')"
  echo "- Machine: $(uname -m), ${cpu_model:-unknown CPU}, $(nproc) CPUs, $(uname -sr)"
  echo "- CPU flags that matter here: ${flags:-${features:-none found}}"
  echo "- Compiler: $(c++ --version | head -1)"
  echo
  echo "$tables"
  echo
  echo "Reading the exchange rows: with a CRC that costs c per exchange and a floor that"
  echo "costs f, the library's ratio to the floor is at best f / (f + c). At 64 KiB, c is the"
  echo "64 KiB column of the CRC table; at 500 KB, about eight times that."
} >"$OUT"
echo "wrote $OUT" >&2
