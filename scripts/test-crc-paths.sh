#!/usr/bin/env bash
# Runs the CRC, frame and link tests once per CRC path this machine supports, each
# time with KVN_CRC_IMPL forcing that path. The in-process simulator of the
# end-to-end tests computes its CRCs with the same component, so both ends of those
# exchanges use the forced path.
#
#   scripts/test-crc-paths.sh [BUILD_DIR]     (default build/default, built already)
set -euo pipefail
cd "$(dirname "$0")/.."
build=$(cd "${1:-build/default}" && pwd)
tests="$build/tests/kvnsdk2_tests"
[ -x "$tests" ] || { echo "no test program at $tests: build the default preset first" >&2; exit 1; }
# The end-to-end tests leave their local transfer files in the working directory.
cd "$build/tests"

# The paths this machine runs are the instances of the parameterised CRC tests.
paths=$(env -u KVN_CRC_IMPL "$tests" --gtest_list_tests --gtest_filter='Supported/Crc32Path.KnownVectors/*' |
  sed -n 's/^  KnownVectors\/\([A-Za-z0-9_]*\).*/\1/p')
[ -n "$paths" ] || { echo "no CRC path listed" >&2; exit 1; }

filter='*Crc32*:RequestFrame.*:ResponseFrame.*:TcpLink.*:SerialLink.*:SimSerial.*:LogsE2E.*:UsersE2E.*:Regression*'
failed=0
for p in $paths; do
  echo "== KVN_CRC_IMPL=$p"
  if ! KVN_CRC_IMPL=$p "$tests" --gtest_filter="$filter" --gtest_brief=1; then
    failed=$((failed + 1))
    echo "FAILED with KVN_CRC_IMPL=$p" >&2
  fi
done
count=$(echo "$paths" | wc -w)
echo "crc-paths: $((count - failed)) passed, $failed failed"
[ "$failed" -eq 0 ]
