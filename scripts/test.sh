#!/usr/bin/env bash
# Builds and runs the whole test suite: release build, then the sanitizer build.
set -euo pipefail
cd "$(dirname "$0")/.."
for preset in default asan; do
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset"
done
