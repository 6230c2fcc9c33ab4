#!/usr/bin/env bash
# Builds and runs the whole test suite: release build, then the sanitizer build.
set -euo pipefail
cd "$(dirname "$0")/.."

# A fresh machine: the build's packages first (scripts/packages.txt; sudo when not root).
scripts/install-packages.sh build
for preset in default asan; do
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset"
done
