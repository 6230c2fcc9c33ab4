#!/usr/bin/env bash
# The CRC on arm64: cross-builds src/link/crc32.cpp with its test (tests/test_crc32.cpp
# and GoogleTest from Debian's source package) for aarch64 with no CRC extension in
# the global flags, and runs the test under qemu-user, once with the path chosen at
# run time (the CRC32 instructions) and once forced to the portable tables.
#
#   scripts/test-arm64-crc.sh
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-packages.sh cross

out=build/arm64-crc
mkdir -p "$out"
cxx="aarch64-linux-gnu-g++ -std=c++20 -O2 -march=armv8-a -Wall -Wextra -Wshadow -Wconversion -Wno-sign-conversion"
gtest=/usr/src/googletest/googletest
# GoogleTest once; it does not change between runs.
if [ ! -f "$out/gtest-all.o" ]; then
  aarch64-linux-gnu-g++ -std=c++20 -O1 -I"$gtest/include" -I"$gtest" -c "$gtest/src/gtest-all.cc" -o "$out/gtest-all.o"
  aarch64-linux-gnu-g++ -std=c++20 -O1 -I"$gtest/include" -c "$gtest/src/gtest_main.cc" -o "$out/gtest_main.o"
fi
$cxx -Werror -Isrc -c src/link/crc32.cpp -o "$out/crc32.o"
$cxx -Isrc -I"$gtest/include" -c tests/test_crc32.cpp -o "$out/test_crc32.o"
aarch64-linux-gnu-g++ -o "$out/crc32_tests" "$out/test_crc32.o" "$out/crc32.o" "$out/gtest-all.o" "$out/gtest_main.o" -pthread

run() { qemu-aarch64 -L /usr/aarch64-linux-gnu "$out/crc32_tests" --gtest_brief=1 "$@"; }
echo "== arm64, path chosen at run time"
run --gtest_filter='*Crc32*'
# The CRC32 instructions must be what was chosen, or the test above checked the tables twice.
run --gtest_list_tests --gtest_filter='Supported/Crc32Path.KnownVectors/*' | grep -q 'KnownVectors/armcrc' ||
  { echo "the arm64 CRC32 instructions are not offered under qemu" >&2; exit 1; }
echo "== arm64, KVN_CRC_IMPL=armcrc and KVN_CRC_IMPL=portable"
KVN_CRC_IMPL=armcrc run --gtest_filter='Crc32Dispatch.*'
KVN_CRC_IMPL=portable run --gtest_filter='Crc32Dispatch.*'
