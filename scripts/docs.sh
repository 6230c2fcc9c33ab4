#!/usr/bin/env bash
# Builds the API reference from include/kvnsdk2.h (HTML in build/default/docs/html) and
# fails on any Doxygen warning: an export, record, field or constant without a comment,
# a parameter left out or misnamed. CI runs the same check.
set -euo pipefail
cd "$(dirname "$0")/.."
if ! command -v doxygen >/dev/null; then
  echo "doxygen is not installed (Debian: apt-get install doxygen)" >&2
  exit 1
fi
cmake --preset default >/dev/null
cmake --build --preset default --target docs
