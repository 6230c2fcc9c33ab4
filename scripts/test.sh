#!/usr/bin/env bash
# Builds and runs the whole test suite: release build, then the sanitizer build.
set -euo pipefail
cd "$(dirname "$0")/.."

# A fresh machine: the build's packages first (sudo when not root).
packages="build-essential cmake pkg-config googletest libgtest-dev libbenchmark-dev zlib1g-dev
  libcli11-dev nlohmann-json3-dev libsqlite3-dev"
missing=$(for p in $packages; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || echo "$p"
done)
if [ -n "$missing" ] && command -v apt-get >/dev/null; then
  SUDO=""; if [ "$(id -u)" != 0 ]; then SUDO="sudo"; fi
  $SUDO apt-get update -qq
  # shellcheck disable=SC2086
  $SUDO env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq $missing >/dev/null
fi
for preset in default asan; do
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset"
done
