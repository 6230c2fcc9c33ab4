#!/usr/bin/env bash
# The CRC on every path this machine has, and on arm64: the link tests once per
# forced CRC path (needs build/default, as scripts/test.sh leaves it), then the CRC
# tests cross-built for arm64 and run under qemu-user.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/test-crc-paths.sh build/default
scripts/test-arm64-crc.sh
