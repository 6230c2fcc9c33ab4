#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each for a while (default 30 s).
#   scripts/fuzz.sh [seconds]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-30}
cmake -S . -B build/fuzz -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DKVN_BUILD_FUZZ=ON -DKVN_SANITIZE=ON -DKVN_BUILD_TESTS=OFF -DKVN_BUILD_TOOLS=OFF -DKVN_BUILD_EXAMPLES=OFF >/dev/null
cmake --build build/fuzz -j2 --target fuzz_response fuzz_tlv
mkdir -p build/fuzz/corpus/response build/fuzz/corpus/tlv
cd build/fuzz/fuzz
./fuzz_response -max_total_time="$seconds" -max_len=4096 -rss_limit_mb=4096 -print_final_stats=1 ../corpus/response
./fuzz_tlv -max_total_time="$seconds" -print_final_stats=1 ../corpus/tlv
